#include <vesk/leftright/internal/ScaledPasses.h>

#include <algorithm>
#include <cmath>

namespace Vesk::ML::internal {
namespace {

/// A forward pass that divides each column by its sum, the scale factor, and then hands it on.
template <typename At, typename Next>
auto scaledForwardPass(Passes& passes, const int* o, int T, double* scale, At alpha, Next next) {
    const auto normalise = [&passes, &kernels = Vesk::Kernels::kernels(), scale, next](
                               int t, double* column) {
        scale[t] = kernels.normalise(column, passes.N, passes.P);
        next(t, column);
    };
    return ForwardPass(passes, o, T, alpha, normalise);
}

/// A backward pass that divides each column but the last one, which begins divided.
template <typename At, typename Next>
auto scaledBackwardPass(Passes& passes, const int* o, int T, const double* scale, At beta,
                        Next next) {
    const auto normalise = [&passes, &kernels = Vesk::Kernels::kernels(), T, scale, next](
                               int t, double* column) {
        if (t < T - 1) kernels.divide(column, scale[t], passes.P);
        next(t, column);
    };
    return BackwardPass(passes, o, T, divide(1.0, scale[T - 1]), beta, normalise);
}

/// makePass(k) is the pass over track k.
template <typename MakePass>
void completeAll(const std::vector<Track>& tracks, MakePass makePass) {
    std::vector<decltype(makePass(0))> together;
    together.reserve(tracks.size());
    for (std::size_t k = 0; k < tracks.size(); ++k) together.push_back(makePass(k));
    completeTogether(together);
}

/// Forward passes over the tracks together into `columns`, which are tables or else have room for
/// two columns each.
void scaledForwardTogether(Passes& passes, const std::vector<Track>& tracks,
                           const std::vector<Columns>& columns, bool tables) {
    if (passes.transitions.isShort()) {
        completeAll(tracks, [&](std::size_t k) {
            return ShortForwardPass(passes, tracks[k].o, tracks[k].T, columns[k][0],
                                    tables ? columns[k].pitch() : 0, tracks[k].scale);
        });
        return;
    }
    completeAll(tracks, [&](std::size_t k) {
        const auto at = [column = columns[k], tables](int t) { return column[tables ? t : t & 1]; };
        return scaledForwardPass(passes, tracks[k].o, tracks[k].T, tracks[k].scale, at, asItIs);
    });
}

}  // namespace

MatrixT<double> scaledForward(const Parameters& parameters, const int* o, int T, double* scale) {
    return tableOf(parameters, o, T, [=](Passes& passes, auto alpha, auto next) {
        return scaledForwardPass(passes, o, T, scale, alpha, next);
    });
}

MatrixT<double> scaledBackward(const Parameters& parameters, const int* o, int T,
                               const double* scale) {
    return tableOf(parameters, o, T, [=](Passes& passes, auto beta, auto next) {
        return scaledBackwardPass(passes, o, T, scale, beta, next);
    });
}

double scaledLikelihood(const Parameters& parameters, const int* o, int T, double* scale) {
    if (T < 1) return 0.0;
    Scratch scratch;
    const Symbols symbols(scratch, o, T);
    Passes passes(scratch, parameters, symbols);
    const Columns columns = passes.columns(2);
    double sum = 0.0;
    passes.exactly([&] {
        if (!passes.transitions.isShort()) {
            complete(scaledForwardPass(passes, o, T, scale, alternating(columns), asItIs));
            sum = logLikelihoodOf(scale, T);
            return;
        }
        ShortForwardPass pass(passes, o, T, columns[0], 0, scale);
        sum = 0.0;
        int begun = 1;
        for (int t = 0; t < T;) {
            // A logarithm waits for its factor. Those of the steps before the latest are there.
            const int there = begun;
            if (!pass.done()) begun += pass.step();
            for (; t < there; ++t) sum += std::log(scale[t]);
        }
    });
    return sum;
}

void scaledForward(Passes& passes, const std::vector<Track>& tracks,
                   const std::vector<Columns>& alpha) {
    scaledForwardTogether(passes, tracks, alpha, true);
}

void scaledBackward(Passes& passes, const std::vector<Track>& tracks,
                    const std::vector<Columns>& beta) {
    completeAll(tracks, [&](std::size_t k) {
        return scaledBackwardPass(passes, tracks[k].o, tracks[k].T, tracks[k].scale, all(beta[k]),
                                  asItIs);
    });
}

void scaleFactors(Passes& passes, const std::vector<Track>& tracks,
                  const std::vector<Columns>& two) {
    scaledForwardTogether(passes, tracks, two, false);
}

double logLikelihoodOf(const double* scale, int T) {
    double sum = 0.0;
    for (int t = 0; t < T; ++t) sum += std::log(scale[t]);
    return sum;
}

}  // namespace Vesk::ML::internal
