#include <vesk/hmm/internal/ModelText.h>

#include <vesk/hmm/internal/Parameters.h>

#include <cassert>
#include <charconv>
#include <iterator>
#include <string>

namespace Vesk::ML::internal {

namespace {

/// Whether the stream writes numbers in the way that it does unless told otherwise, and the
/// standard library can do so by itself.
bool formatsPlainly([[maybe_unused]] const std::ostream& out) {
#ifdef __cpp_lib_to_chars
    constexpr auto changes = std::ios_base::floatfield | std::ios_base::showpoint |
                             std::ios_base::showpos | std::ios_base::uppercase;
    return (out.flags() & changes) == 0 && out.precision() == 6 && out.width() == 0;
#else
    return false;
#endif
}

/// As `out << value` does with plain formatting in the classic locale, without the stream's
/// detours.
void append([[maybe_unused]] std::string& text, [[maybe_unused]] double value) {
#ifdef __cpp_lib_to_chars
    char digits[32];
    char* const end =
        std::to_chars(digits, std::end(digits), value, std::chars_format::general, 6).ptr;
    text.append(std::begin(digits), end);
#endif
}

}  // namespace

void writeLine(std::ostream& out, Table<const double> values) {
    const bool plainly = formatsPlainly(out);
    const char* separator = "";
    std::string row;
    for (int r = 0; r < values.rows; ++r) {
        row.clear();
        for (int c = 0; c < values.cols; ++c) {
            if (plainly) {
                append(row += separator, values(r, c));
            } else {
                out << separator << values(r, c);
            }
            separator = " ";
        }
        out.write(row.data(), static_cast<std::streamsize>(row.size()));
    }
    out << '\n';
}

void writeParameters(std::ostream& out, const HMM& model) {
    const Parameters p = parametersOf(model);
    writeLine(out, {p.pi, 1, p.N, 0});
    writeLine(out, p.a);
    writeLine(out, p.b);
}

void writeVocabulary(std::ostream& out, const HMM& model) {
    writeLine(out, Vesk::Math::internal::table(model.vocab, model.vocabSize, 1));
}

void readTable(InputFile& in, MatrixT<double>& matrix, std::uint64_t rows, std::uint64_t cols) {
    if (cols == 0) return;
    assert(rows <= static_cast<std::uint64_t>(matrix.rows));
    assert(cols <= static_cast<std::uint64_t>(matrix.cols));
    const auto stride = static_cast<std::size_t>(matrix.cols);
    for (std::size_t r = 0; r < rows; ++r) {
        for (std::size_t c = 0; c < cols; ++c) {
            if (!in.read(matrix.data[stride * r + c])) return;
        }
    }
}

}  // namespace Vesk::ML::internal
