#include <veskkit/training/internal/Emissions.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Vesk::Kit::internal {

using Vesk::Math::MatrixT;

MatrixT<double> evenCutEmissions(const std::vector<std::vector<int>>& sequences, int N, int M) {
    MatrixT<double> counts(N, M);
    for (const std::vector<int>& sequence : sequences) {
        const std::size_t T = sequence.size();
        for (std::size_t t = 0; t < T; ++t) {
            const std::size_t state = t * static_cast<std::size_t>(N) / T;
            counts(static_cast<int>(state), sequence[t]) += 1.0;
        }
    }
    for (int i = 0; i < N; ++i) {
        double total = 0.0;
        for (int k = 0; k < M; ++k) total += counts(i, k);
        for (int k = 0; k < M && total > 0.0; ++k) counts(i, k) /= total;
    }
    return counts;
}

void floorEmissions(MatrixT<double>& b, double floor) {
    for (int i = 0; i < b.rows; ++i) {
        double sum = 0.0;
        for (int k = 0; k < b.cols; ++k) {
            b(i, k) = std::max(b(i, k), floor);
            sum += b(i, k);
        }
        for (int k = 0; k < b.cols; ++k) b(i, k) /= sum;
    }
}

void oddsToProbabilities(MatrixT<double>& b) {
    for (double& value : b.data) value = std::isinf(value) ? 1.0 : value / (1.0 + value);
}

MatrixT<double> circularGaussian(const std::vector<double>& codebook, double sigma) {
    const int M = static_cast<int>(codebook.size());
    MatrixT<double> weights(M, M);
    for (int l = 0; l < M; ++l) {
        for (int k = 0; k < M; ++k) {
            double angle = std::abs(codebook[static_cast<std::size_t>(k)] -
                                    codebook[static_cast<std::size_t>(l)]);
            angle = std::min(angle, 360.0 - angle) / sigma;
            weights(l, k) = std::exp(-0.5 * angle * angle);
        }
    }
    return weights;
}

void smoothEmissions(MatrixT<double>& b, const std::vector<double>& codebook, double sigma) {
    if (sigma <= 0.0) return;
    const int M = b.cols;
    MatrixT<double> weights = circularGaussian(codebook, sigma);  // row l: how symbol l spreads
    for (int l = 0; l < M; ++l) {
        double sum = 0.0;
        for (int k = 0; k < M; ++k) sum += weights(l, k);
        for (int k = 0; k < M; ++k) weights(l, k) /= sum;
    }
    std::vector<double> smooth(static_cast<std::size_t>(M));
    for (int i = 0; i < b.rows; ++i) {
        std::fill(smooth.begin(), smooth.end(), 0.0);
        for (int l = 0; l < M; ++l) {
            for (int k = 0; k < M; ++k) {
                smooth[static_cast<std::size_t>(k)] += b(i, l) * weights(l, k);
            }
        }
        for (int k = 0; k < M; ++k) b(i, k) = smooth[static_cast<std::size_t>(k)];
    }
}

}  // namespace Vesk::Kit::internal
