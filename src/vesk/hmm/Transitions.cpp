#include <vesk/hmm/internal/Transitions.h>

#include <vesk/hmm/internal/Columns.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace Vesk::ML::internal {
namespace {

/// Fewer states than these are not worth a test for even rows.
constexpr int leastEvenStates = 32;

/// Whether no vector of any row lies in two cache lines.
bool aligned(const Vesk::Math::internal::Table<const double>& a) {
    constexpr std::size_t line = Vesk::Kernels::lanes * sizeof(double);
    return reinterpret_cast<std::uintptr_t>(a.data) % line == 0 &&
           a.stride % Vesk::Kernels::lanes == 0;
}

}  // namespace

Diagonals diagonalsOf(Vesk::Math::internal::Table<const double> a) {
    Diagonals used{a.rows, -a.rows};
    Vesk::Kernels::kernels().diagonals(a.data, a.stride, a.rows, &used.lo, &used.hi);
    if (used.lo > used.hi) return {0, 0};
    return used;
}

Transitions::Transitions(Scratch& tables, Vesk::Math::internal::Table<const double> transitions)
    : a(transitions),
      scratch(tables),
      kernels(Vesk::Kernels::kernels()),
      N(transitions.rows),
      P(padded(transitions.rows)) {
    if (N >= leastEvenStates && kernels.rowsAreEven(a.data, a.stride, N)) {
        form = Form::Even;
        products = scratch.zeros(4, P);
        double* self = products;
        double* other = self + P;
        for (int i = 0; i < N; ++i) {
            self[i] = a(i, i);
            other[i] = a(i, i == 0 ? 1 : 0);
        }
        return;
    }
    const Diagonals used = diagonalsOf(a);
    if (2 * (used.hi - used.lo) < N - 1 || fitsShort(used.lo, used.hi)) layOutBand(used);
}

void Transitions::layOutBand(Diagonals used) {
    form = Form::Band;
    used = {std::min(used.lo, 0), std::max(used.hi, 0)};
    reach = std::max(std::abs(used.lo), std::abs(used.hi));
    const int width = used.hi - used.lo + 1;
    double* departing = scratch.zeros(2 * static_cast<std::size_t>(width), P);
    double* arriving = departing + std::ptrdiff_t{P} * width;
    for (int d = used.lo; d <= used.hi; ++d) {
        double* from = departing + std::ptrdiff_t{P} * (d - used.lo);
        double* to = arriving + std::ptrdiff_t{P} * (used.hi - d);
        const int end = std::min(N, N - d);
        for (int i = std::max(0, -d); i < end; ++i) from[i] = to[i + d] = a(i, i + d);
    }
    band = {used.lo, used.hi, departing, arriving};
}

Transitions::Rows Transitions::rows() {
    if (denseRows.data != nullptr) return denseRows;
    if (N == P && aligned(a)) {
        denseRows = {a.data, a.stride};
        return denseRows;
    }
    double* packed = scratch.zeros(static_cast<std::size_t>(N), P);
    for (int i = 0; i < N; ++i) std::copy_n(a.row(i), N, packed + std::ptrdiff_t{P} * i);
    denseRows = {packed, P};
    return denseRows;
}

void Transitions::layOutColumns() {
    columns = scratch.zeros(static_cast<std::size_t>(N), P);
    kernels.transposeTable(a.data, a.stride, N, N, columns, P);
}

void Transitions::forwardAllTerms(const double* from, const double* e, double* to) {
    if (form == Form::Dense) {
        const Rows laidOut = rows();
        kernels.forward(from, laidOut.data, laidOut.stride, e, to, N, P);
        return;
    }
    double* self = products;
    double* other = self + P;
    kernels.multiply(from, self, self + 2 * P, P);
    kernels.multiply(from, other, self + 3 * P, P);
    kernels.forwardEven(self + 3 * P, self + 2 * P, e, to, N, P);
}

void Transitions::backwardAllTerms(const double* next, const double* e, double* to) {
    if (columns == nullptr) layOutColumns();
    kernels.backward(next, columns, P, e, to, N, P);
}

void Transitions::noteLast(const double* column) {
    if (form != Form::Band) return;
    for (int i = 0; i < N; ++i) allFinite = allFinite && std::isfinite(column[i]);
}

void Transitions::takeAllTerms() {
    if (form == Form::Band) form = Form::Dense;
    allFinite = true;
}

}  // namespace Vesk::ML::internal
