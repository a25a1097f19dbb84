#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/InputFile.h>
#include <veskkit/io/internal/LineReader.h>

#include <ios>
#include <streambuf>
#include <utility>

namespace Vesk::Kit::internal {

LineReader::LineReader(const std::string& path) : file(openInput(path)), in(file), name(path) {}

LineReader::LineReader(std::istream& stream, std::string source)
    : in(stream), name(std::move(source)) {}

bool LineReader::next() {
    using traits = std::istream::traits_type;
    text.clear();
    bool any = false;
    bool tooLong = false;
    try {
        std::streambuf& buffer = *in.rdbuf();
        for (auto c = buffer.sbumpc(); !traits::eq_int_type(c, traits::eof());
             c = buffer.sbumpc()) {
            if (!any) ++count;
            any = true;
            if (traits::to_char_type(c) == '\n') break;
            tooLong = tooLong || text.size() == longestLine;
            if (!tooLong) text.push_back(traits::to_char_type(c));
        }
    } catch (const std::ios_base::failure&) {
        throw InputError(oneLine(name) + ": cannot be read");
    }
    if (tooLong) {
        throw InputError(joined(place(), ": found a line of more than ", longestLine,
                                " bytes, expected a shorter one"));
    }
    if (!text.empty() && text.back() == '\r') text.pop_back();
    constexpr const char* byteOrderMark = "\xEF\xBB\xBF";
    if (count == 1 && text.compare(0, 3, byteOrderMark) == 0) text.erase(0, 3);
    return any;
}

std::string LineReader::place() const { return joined(oneLine(name), ':', count); }

bool isBlank(const std::string& line) {
    return line.find_first_not_of(" \t\r\v\f") == std::string::npos;
}

}  // namespace Vesk::Kit::internal
