#include <vesk/base/internal/InputFile.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <locale>
#include <new>
#include <optional>
#include <system_error>

namespace Vesk::ML::internal {
namespace {

constexpr std::uint64_t leastTableLimit = std::uint64_t{1} << 20;
constexpr std::uint64_t leastTotalLimit = std::uint64_t{1} << 24;
constexpr std::uint64_t unsizedByteLimit = std::uint64_t{1} << 28;
constexpr std::uint64_t largestPosition = std::numeric_limits<std::int32_t>::max();

std::optional<std::uint64_t> regularFileSize(const char* path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) || error) return std::nullopt;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) return std::nullopt;
    return size;
}

}  // namespace

InputFile::Buffer::int_type InputFile::Buffer::underflow() {
    if (bytesLeft == 0) return traits_type::eof();
    int_type next = traits_type::eof();
    try {
        next = std::filebuf::underflow();
    } catch (const std::ios_base::failure&) {
        unreadable = true;
    }
    const auto available = static_cast<std::uint64_t>(egptr() - gptr());
    bytesLeft -= std::min(bytesLeft, available);
    return next;
}

bool InputFile::Buffer::takeNumber([[maybe_unused]] double& value) {
#ifdef __cpp_lib_to_chars
    const auto isSpace = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const char* at = gptr();
    const char* const end = egptr();
    while (at != end && isSpace(*at)) ++at;
    // Unlike the stream, from_chars reads "inf" and "nan".
    const char* const digits = at != end && *at == '-' ? at + 1 : at;
    if (digits == end || !isDigit(*digits)) return false;
    double number = 0.0;
    const auto [behind, error] = std::from_chars(at, end, number);
    if (error != std::errc() || behind == end || !isSpace(*behind)) return false;
    gbump(static_cast<int>(behind - gptr()));
    value = number;
    return true;
#else
    return false;
#endif
}

InputFile::InputFile(const char* path)
    : in(&buffer), tableLimit(leastTableLimit), valuesLeft(leastTotalLimit) {
    in.imbue(std::locale::classic());
    // An allocation that fails inside an extraction is not to pass for bad input.
    in.exceptions(std::ios_base::badbit);
    if (path == nullptr || buffer.open(path, std::ios_base::in) == nullptr) return;
    buffer.bytesLeft = unsizedByteLimit;
    if (const auto size = regularFileSize(path)) {
        // A file in /proc is regular and of size 0, whatever it gives.
        if (*size > 0) buffer.bytesLeft = std::numeric_limits<std::uint64_t>::max();
        tableLimit = std::max(tableLimit, *size);
        valuesLeft = std::max(valuesLeft, 4 * *size);
    }
}

void InputFile::readValues(double* values, std::uint64_t count) {
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!read(values[i])) return;
    }
}

bool InputFile::readWord(std::string& word) {
    in.width(static_cast<std::streamsize>(tableLimit) + 1);
    const bool found = read(word);
    in.width(0);
    if (found && word.size() > tableLimit) throw std::bad_alloc();
    return found;
}

bool InputFile::readLine(std::string& line) {
    std::getline(in, line);
    return !buffer.unreadable;
}

void InputFile::claimTable(std::uint64_t rows, std::uint64_t cols, std::uint64_t copies) {
    if (rows == 0 || cols == 0) return;
    const std::uint64_t limit = std::min(tableLimit, largestPosition);
    if (rows > limit / cols) throw std::bad_alloc();
    const std::uint64_t values = rows * cols;
    if (copies > valuesLeft / values) throw std::bad_alloc();
    valuesLeft -= values * copies;
}

void InputFile::requireLength(std::uint64_t length) const {
    if (length > std::min(tableLimit, largestPosition)) throw std::bad_alloc();
}

}  // namespace Vesk::ML::internal
