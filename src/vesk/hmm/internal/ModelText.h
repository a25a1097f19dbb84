#ifndef VESK_HMM_INTERNAL_MODELTEXT_H
#define VESK_HMM_INTERNAL_MODELTEXT_H

#include <vesk/base/internal/InputFile.h>
#include <vesk/hmm/HMM.h>
#include <vesk/math/internal/Table.h>

#include <cstdint>
#include <ostream>
#include <vector>

namespace Vesk::ML::internal {

/// A vector as a table of one row.
inline Vesk::Math::internal::Table<const double> rowOf(const std::vector<double>& values) {
    return {values.data(), 1, static_cast<int>(values.size()), 0};
}

/// Writes a table's values row by row on one line, separated by single blanks.
void writeLine(std::ostream& out, Vesk::Math::internal::Table<const double> values);

/// Writes the lines that the model files share: pi, a and b. std::out_of_range where the model's
/// tables are too small, before anything is written.
void writeParameters(std::ostream& out, const HMM& model);

/// Writes the line with column 0 of the model's `vocab`.
void writeVocabulary(std::ostream& out, const HMM& model);

/// Reads rows x cols values into the start of `matrix`, row by row; stops where reading fails.
/// The matrix must have as many rows and at least as many columns.
void readTable(InputFile& in, Vesk::Math::MatrixT<double>& matrix, std::uint64_t rows,
               std::uint64_t cols);

}  // namespace Vesk::ML::internal

#endif
