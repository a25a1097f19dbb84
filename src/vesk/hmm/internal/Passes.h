#ifndef VESK_HMM_INTERNAL_PASSES_H
#define VESK_HMM_INTERNAL_PASSES_H

#include <vesk/hmm/internal/Parameters.h>

#include <vector>

namespace Vesk::ML::internal {

/// The forward recurrence, one column of alpha at a time (Rabiner 1989, eqs. 19, 20).
class ForwardColumn {
public:
    explicit ForwardColumn(const Parameters& parameters);

    std::vector<double> alpha;  ///< N: the present column; scaling changes it in place

    void start(int symbol);
    void advance(int symbol);

private:
    Parameters p;
    std::vector<double> sums;
};

/// The backward recurrence (Rabiner 1989, eq. 25): one column of beta from the next.
class BackwardColumn {
public:
    /// All of the column is `last`.
    BackwardColumn(const Parameters& parameters, double last);

    std::vector<double> beta;  ///< N: the present column; scaling changes it in place

    /// Steps back over `symbol`, the one observed at the present column's time.
    void retreat(int symbol);

private:
    Parameters p;
    std::vector<double> emission;
    std::vector<double> sums;
};

/// alpha and beta, N x T; N x 0 for T < 1.
MatrixT<double> forward(const Parameters& parameters, const int* o, int T);
MatrixT<double> backward(const Parameters& parameters, const int* o, int T);

/// alpha's last column, T >= 1.
std::vector<double> lastForwardColumn(const Parameters& parameters, const int* o, int T);

/// P(o), 0.0 for T < 1.
double forwardLikelihood(const Parameters& parameters, const int* o, int T);

/// The same from beta, which rounds differently.
double backwardLikelihood(const Parameters& parameters, const int* o, int T);

/// The sum of the values in order.
double orderedSum(const std::vector<double>& values);

void storeColumn(MatrixT<double>& table, int t, const std::vector<double>& column);

}  // namespace Vesk::ML::internal

#endif
