#ifndef VESK_HMM_INTERNAL_REESTIMATION_H
#define VESK_HMM_INTERNAL_REESTIMATION_H

#include <vesk/hmm/internal/Columns.h>
#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Passes.h>

#include <vector>

namespace Vesk::ML::internal {

/// gamma(., 0), N values (Rabiner 1989, eq. 27), from plain or scaled tables.
std::vector<double> firstPosteriors(const Columns& alpha, const Columns& beta, int N);

/// Collects posteriors over sequences and turns them into new transitions and emissions: the
/// M-step that all trainers share. alpha and beta may be plain or scaled, since the posteriors
/// normalise themselves.
class Reestimation {
public:
    /// For sequences that the model's passes are made over.
    Reestimation(Passes& passes, int vocabSize);

    /// Adds xi(i, j, t) and gamma(i, t) of one sequence, in the order of time.
    void add(const int* o, int T, const Columns& alpha, const Columns& beta);

    /// a(i, j) = sum of xi(i, j, t) / sum of gamma(i, t), t up to T-2 (Rabiner 1989, eq. 40b);
    /// b(i, k) = gamma(i, t) summed over the times that show k / summed over those that do not.
    /// Gives the matrices the shapes N x N and N x M.
    void estimate(MatrixT<double>& a, MatrixT<double>& b) const;

private:
    /// Times that are added together: columns of each, and for the first `steps` of them those of
    /// the time after.
    struct Tile {
        int times;
        int steps;
        const double* alpha[Vesk::Kernels::tileTimes];
        const double* beta[Vesk::Kernels::tileTimes];
        const double* nextEmissions[Vesk::Kernels::tileTimes];
        const double* nextBeta[Vesk::Kernels::tileTimes];
    };

    void addPosteriors(const int* o, const Tile& tile);
    void addTransitions(const Tile& tile);

    Passes& passes;
    const Vesk::Kernels::Set& kernels;
    int N;
    int P;
    int M;
    double* transitions;  ///< sums of xi: N x P, or a band's diagonals by P
    double* departures;   ///< P: sums of gamma over t up to T-2
    double* matched;      ///< M x P: sums of gamma where the symbol was seen
    double* unmatched;    ///< M x P: sums of gamma where another was
    // Of the tile that is being added:
    double* alphaTile;
    double* betaTile;
    double* emissionTile;
    double* gamma;  ///< a column of P for each time
};

}  // namespace Vesk::ML::internal

#endif
