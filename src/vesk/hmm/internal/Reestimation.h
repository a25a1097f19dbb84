#ifndef VESK_HMM_INTERNAL_REESTIMATION_H
#define VESK_HMM_INTERNAL_REESTIMATION_H

#include <vesk/hmm/internal/Parameters.h>

#include <vector>

namespace Vesk::ML::internal {

/// gamma(., t), one value a state (Rabiner 1989, eq. 27), from plain or scaled tables.
void posteriors(const MatrixT<double>& alpha, const MatrixT<double>& beta, int t,
                std::vector<double>& gamma);

/// Collects posteriors over sequences and turns them into new transitions and emissions: the
/// M-step that all trainers share. alpha and beta may be plain or scaled, since the posteriors
/// normalise themselves.
class Reestimation {
public:
    Reestimation(int numStates, int vocabSize);

    /// Forgets what was added.
    void clear();

    /// Adds xi(i, j, t) and gamma(i, t) of one sequence, in the order of time.
    void add(const Parameters& parameters, const int* o, int T, const MatrixT<double>& alpha,
             const MatrixT<double>& beta);

    /// a(i, j) = sum of xi(i, j, t) / sum of gamma(i, t), t up to T-2 (Rabiner 1989, eq. 40b);
    /// b(i, k) = gamma(i, t) summed over the times that show k / summed over those that do not.
    /// Gives the matrices the shapes N x N and N x M.
    void estimate(MatrixT<double>& a, MatrixT<double>& b) const;

private:
    void addTransitions(const Parameters& parameters, const int* o, int t,
                        const MatrixT<double>& alpha, const MatrixT<double>& beta);
    void addEmissions(int symbol);

    int N;
    int M;
    std::vector<double> gamma;        ///< N: at the time being added
    std::vector<double> terms;        ///< N x N: xi's products at the time being added
    std::vector<double> transitions;  ///< N x N: sums of xi
    std::vector<double> departures;   ///< N: sums of gamma over t up to T-2
    std::vector<double> matched;      ///< N x M: sums of gamma where the symbol was seen
    std::vector<double> unmatched;    ///< N x M: sums of gamma where another was
};

}  // namespace Vesk::ML::internal

#endif
