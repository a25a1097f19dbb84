#ifndef VESK_HMM_INTERNAL_TRANSITIONS_H
#define VESK_HMM_INTERNAL_TRANSITIONS_H

#include <vesk/hmm/internal/Scratch.h>
#include <vesk/kernels/internal/Kernels.h>
#include <vesk/math/internal/Table.h>

namespace Vesk::ML::internal {

/// The diagonals d = j - i of a that hold all its values but zeros: lo <= d <= hi.
struct Diagonals {
    int lo;
    int hi;
};
Diagonals diagonalsOf(Vesk::Math::internal::Table<const double> a);

/// A model's transitions, laid out for the kernels once for many steps.
///
/// Three forms are told apart, since the model's fields are anybody's: dense; a band around the
/// diagonal, as of a left-right model; and rows of one value off the diagonal, as of a combined
/// model.
///
/// Terms outside of the band are products with zero: they change no sum unless their other factors
/// are infinite or NaN. Such a factor leaves its mark on all columns that follow: the term on the
/// diagonal, which every band has, hands it on in the same place, since no product, sum or quotient
/// with it as numerator makes a finite number of it. So the last column of a pass tells whether
/// terms that could have mattered were left out; then the pass has to be taken again after
/// `takeAllTerms`. The terms that re-estimation leaves out have the same factors: where both passes
/// were exact, so is it.
class Transitions {
public:
    /// Borrows a, N x N.
    Transitions(Scratch& scratch, Vesk::Math::internal::Table<const double> a);

    int margin() const { return reach; }

    /// to[j] = (sum over i of from[i] * a(i, j)) * e[j], in the order of i.
    void forward(const double* from, const double* e, double* to) {
        if (form == Form::Band) {
            kernels.forwardBand(from, band, e, to, P);
        } else {
            forwardAllTerms(from, e, to);
        }
    }

    /// to[i] = sum over j of (next[j] * a(i, j)) * e[j], in the order of j.
    void backward(const double* next, const double* e, double* to) {
        if (form == Form::Band) {
            kernels.backwardBand(next, band, e, to, P);
        } else {
            backwardAllTerms(next, e, to);
        }
    }

    /// `forward` for one step after the other, where `isShort`.
    void forwardShort(const Vesk::Kernels::ShortPass& pass, int steps) {
        kernels.forwardShort(band, pass, steps);
    }

    /// Tells the last column of a pass.
    void noteLast(const double* column);

    /// Whether no pass left out a term that could have mattered.
    bool exact() const { return allFinite; }

    /// Terms are no more left out: dense from now on.
    void takeAllTerms();

    bool isBand() const { return form == Form::Band; }
    /// A band of a small left-right model, which whole columns in registers can follow.
    bool isShort() const { return isBand() && fitsShort(band.lo, band.hi); }
    const Vesk::Kernels::Band& diagonals() const { return band; }

    int bandWidth() const { return band.hi - band.lo + 1; }

    /// Rows of a as the dense kernels want them.
    struct Rows {
        const double* data;
        std::ptrdiff_t stride;
    };
    Rows rows();

    const Vesk::Math::internal::Table<const double> a;

private:
    enum class Form { Dense, Band, Even };

    void forwardAllTerms(const double* from, const double* e, double* to);
    void backwardAllTerms(const double* next, const double* e, double* to);
    bool fitsShort(int lo, int hi) const {
        return P == Vesk::Kernels::lanes && lo == 0 && hi <= Vesk::Kernels::shortReach;
    }
    void layOutBand(Diagonals used);
    void layOutColumns();

    Scratch& scratch;
    const Vesk::Kernels::Set& kernels;
    int N;
    int P;
    Form form = Form::Dense;
    int reach = 0;
    Vesk::Kernels::Band band{};
    Rows denseRows{nullptr, 0};
    double* columns = nullptr;   ///< a by columns, for the way back
    double* products = nullptr;  ///< of the even form: factors and products, 4 columns
    bool allFinite = true;       ///< all last columns of a band
};

}  // namespace Vesk::ML::internal

#endif
