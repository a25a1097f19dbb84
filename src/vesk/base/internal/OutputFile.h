#ifndef VESK_BASE_INTERNAL_OUTPUTFILE_H
#define VESK_BASE_INTERNAL_OUTPUTFILE_H

#include <ios>
#include <locale>
#include <sstream>
#include <string>
#include <utility>

namespace Vesk::ML::internal {

/// Sets the classic locale on a stream while it lives.
class ClassicLocale {
public:
    explicit ClassicLocale(std::ios& target)
        : stream(target), previous(target.imbue(std::locale::classic())) {}
    ~ClassicLocale() { stream.imbue(previous); }
    ClassicLocale(const ClassicLocale&) = delete;
    ClassicLocale& operator=(const ClassicLocale&) = delete;

private:
    std::ios& stream;
    std::locale previous;
};

/// The text that `write(out)` puts into a string stream of the classic locale with default
/// formatting. An allocation that fails on the way is std::bad_alloc, never a shorter text.
template <typename Write>
std::string composeText(Write write) {
    std::stringstream out;
    out.imbue(std::locale::classic());
    out.exceptions(std::ios_base::badbit);
    write(out);
    return std::move(out).str();
}

/// Creates or truncates the file and writes the text in one piece. Returns whether the file could
/// be opened (a null path cannot): how the writing went stays unsaid.
bool writeFile(const char* path, const std::string& text);

/// The same: true only when every byte was written and the file closed.
bool saveFile(const std::string& path, const std::string& text);

/// The text up to its first NUL character.
std::string upToNul(std::string text);

}  // namespace Vesk::ML::internal

#endif
