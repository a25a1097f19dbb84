#include <vesk/hmm/internal/Reestimation.h>

#include <algorithm>
#include <cstddef>

namespace Vesk::ML::internal {

using Vesk::Kernels::tileTimes;

namespace {

std::size_t size(int count) { return static_cast<std::size_t>(count); }

}  // namespace

std::vector<double> firstPosteriors(const Columns& alpha, const Columns& beta, int N) {
    std::vector<double> gamma(size(N));
    double sum = 0.0;
    for (int i = 0; i < N; ++i) sum += gamma[size(i)] = alpha[0][i] * beta[0][i];
    for (double& value : gamma) value = divide(value, sum);
    return gamma;
}

Reestimation::Reestimation(Passes& model, int vocabSize)
    : passes(model),
      kernels(Vesk::Kernels::kernels()),
      N(passes.N),
      P(passes.P),
      M(vocabSize),
      transitions(passes.scratch.zeros(
          size(passes.transitions.isBand() ? passes.transitions.bandWidth() : N), P)),
      departures(passes.scratch.zeros(1, P)),
      matched(passes.scratch.zeros(size(M), P)),
      unmatched(passes.scratch.zeros(size(M), P)),
      alphaTile(passes.scratch.zeros(tileTimes, P)),
      betaTile(passes.scratch.zeros(tileTimes, P)),
      emissionTile(passes.scratch.zeros(tileTimes, P)),
      gamma(passes.scratch.zeros(tileTimes, P)) {}

void Reestimation::add(const int* o, int T, const Columns& alpha, const Columns& beta) {
    for (int t = 0; t < T; t += tileTimes) {
        Tile tile;
        tile.times = std::min(tileTimes, T - t);
        tile.steps = std::min(tileTimes, T - 1 - t);
        for (int u = 0; u < tile.times; ++u) {
            tile.alpha[u] = alpha[t + u];
            tile.beta[u] = beta[t + u];
        }
        for (int u = 0; u < tile.steps; ++u) {
            tile.nextEmissions[u] = passes.emissions[o[t + u + 1]];
            tile.nextBeta[u] = beta[t + u + 1];
        }
        kernels.transpose(tile.alpha, tile.times, alphaTile, P);
        addPosteriors(o + t, tile);
        if (tile.steps > 0) addTransitions(tile);
    }
}

void Reestimation::addPosteriors(const int* o, const Tile& tile) {
    double sums[tileTimes];
    kernels.transpose(tile.beta, tile.times, betaTile, P);
    kernels.posteriorSums(alphaTile, betaTile, N, sums);
    kernels.posteriors(tile.alpha, tile.beta, sums, tile.times, gamma, P);
    kernels.addToOwn(gamma, o, tile.times, matched, M, P);
    kernels.addToOthers(gamma, o, tile.times, unmatched, M, P);
    kernels.addColumns(gamma, tile.steps, departures, P);
}

void Reestimation::addTransitions(const Tile& tile) {
    kernels.transpose(tile.nextEmissions, tile.steps, emissionTile, P);
    kernels.transpose(tile.nextBeta, tile.steps, betaTile, P);
    Transitions& model = passes.transitions;
    const bool banded = model.isBand();
    const int lo = banded ? model.diagonals().lo : 1 - N;
    const int hi = banded ? model.diagonals().hi : N - 1;
    double sums[tileTimes];
    kernels.jointSums(alphaTile, emissionTile, betaTile, model.a.data, model.a.stride, N, lo, hi,
                      sums);
    if (banded) {
        kernels.addJointBand(tile.alpha, tile.nextEmissions, tile.nextBeta, sums, tile.steps,
                             model.diagonals(), transitions, P);
    } else {
        const Transitions::Rows rows = model.rows();
        kernels.addJoint(tile.alpha, tile.nextEmissions, tile.nextBeta, sums, tile.steps, rows.data,
                         rows.stride, transitions, N, P);
    }
}

void Reestimation::estimate(MatrixT<double>& a, MatrixT<double>& b) const {
    a.resize(N, N);
    b.resize(N, M);
    const Transitions& model = passes.transitions;
    const int lo = model.isBand() ? model.diagonals().lo : 0;
    const double* sum = transitions;
    for (int i = 0; i < N; ++i) {
        const double leaving = departures[i];
        if (model.isBand()) {
            for (int j = 0; j < N; ++j) {
                const int q = j - i - lo;
                const bool inside = q >= 0 && q < model.bandWidth();
                a(i, j) = inside ? divide(sum[std::ptrdiff_t{P} * q + i], leaving) : 0.0;
            }
        } else {
            for (int j = 0; j < N; ++j) {
                a(i, j) = divide(sum[std::ptrdiff_t{P} * i + j], leaving);
            }
        }
        for (int k = 0; k < M; ++k) {
            const std::ptrdiff_t at = std::ptrdiff_t{P} * k + i;
            b(i, k) = divide(matched[at], unmatched[at]);
        }
    }
}

}  // namespace Vesk::ML::internal
