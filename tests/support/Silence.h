#ifndef VESK_TESTS_SUPPORT_SILENCE_H
#define VESK_TESTS_SUPPORT_SILENCE_H

#include <iostream>
#include <streambuf>

namespace Vesk::Test {

/// Swallows standard output while it lives, without allocating.
class Silence : public std::streambuf {
public:
    Silence() : previous(std::cout.rdbuf(this)) {}
    ~Silence() override { std::cout.rdbuf(previous); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }

private:
    std::streambuf* previous;
};

}  // namespace Vesk::Test

#endif
