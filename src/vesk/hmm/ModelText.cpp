#include <vesk/hmm/internal/ModelText.h>

#include <vesk/base/internal/SixDigits.h>
#include <vesk/hmm/internal/Parameters.h>

#include <cassert>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

namespace Vesk::ML::internal {

namespace {

/// Whether the stream writes numbers in the way that it does unless told otherwise.
bool formatsPlainly(const std::ostream& out) {
    constexpr auto changes = std::ios_base::floatfield | std::ios_base::showpoint |
                             std::ios_base::showpos | std::ios_base::uppercase;
    return (out.flags() & changes) == 0 && out.precision() == 6 && out.width() == 0;
}

/// Numbers as a stream writes them, without its detours. Rows of a combined model are one value but
/// for a few.
class NumberText {
public:
    /// Up to the next call; empty for a number that is the stream's business.
    std::string_view of(double value) {
        if (value != last || std::signbit(value) != std::signbit(last)) {
            last = value;
            const char* const end = putSixDigits(text, value);
            length = end == nullptr ? 0 : static_cast<std::size_t>(end - text);
        }
        return {text, length};
    }

private:
    double last = 0.0;
    char text[longestSixDigits] = {'0'};
    std::size_t length = 1;
};

}  // namespace

void writeLine(std::ostream& out, Table<const double> values) {
    const bool plainly = formatsPlainly(out);
    const char* separator = "";
    NumberText text;
    std::string row;
    for (int r = 0; r < values.rows; ++r) {
        row.clear();
        for (int c = 0; c < values.cols; ++c) {
            if (!plainly) {
                out << separator << values(r, c);
            } else if (const std::string_view word = text.of(values(r, c)); !word.empty()) {
                (row += separator) += word;
            } else {
                out << row << separator << values(r, c);
                row.clear();
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
