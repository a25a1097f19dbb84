#include <vesk/hmm/internal/ModelText.h>

#include <vesk/hmm/internal/Parameters.h>

#include <cassert>

namespace Vesk::ML::internal {

void writeLine(std::ostream& out, Table<const double> values) {
    const char* separator = "";
    for (int r = 0; r < values.rows; ++r) {
        for (int c = 0; c < values.cols; ++c) {
            out << separator << values(r, c);
            separator = " ";
        }
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
