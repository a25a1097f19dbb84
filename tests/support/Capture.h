#ifndef VESK_TESTS_SUPPORT_CAPTURE_H
#define VESK_TESTS_SUPPORT_CAPTURE_H

#include <iostream>
#include <sstream>
#include <streambuf>
#include <string>

namespace Vesk::Test {

/// Catches what goes to std::cout while it lives, starting from the stream's default formatting
/// and restoring the formatting afterwards. Counts flushes.
class Capture {
public:
    Capture() : formatting(nullptr), previous(std::cout.rdbuf(&buffer)) {
        formatting.copyfmt(std::cout);
        std::cout.copyfmt(std::ios(nullptr));
    }
    ~Capture() {
        std::cout.rdbuf(previous);
        std::cout.copyfmt(formatting);
    }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    std::string text() const { return buffer.str(); }
    int flushes() const { return buffer.flushes; }

private:
    class Buffer : public std::stringbuf {
    public:
        int flushes = 0;
        int sync() override {
            ++flushes;
            return 0;
        }
    };

    Buffer buffer;
    std::ios formatting;
    std::streambuf* previous;
};

}  // namespace Vesk::Test

#endif
