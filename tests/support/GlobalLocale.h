#ifndef VESK_TESTS_SUPPORT_GLOBALLOCALE_H
#define VESK_TESTS_SUPPORT_GLOBALLOCALE_H

#include <locale>

namespace Vesk::Test {

/// The process has another global locale while this lives.
class GlobalLocale {
public:
    explicit GlobalLocale(const std::locale& locale) : previous(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(previous); }
    GlobalLocale(const GlobalLocale&) = delete;
    GlobalLocale& operator=(const GlobalLocale&) = delete;

private:
    std::locale previous;
};

}  // namespace Vesk::Test

#endif
