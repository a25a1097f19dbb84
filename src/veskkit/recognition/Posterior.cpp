#include <veskkit/recognition/Posterior.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Vesk::Kit {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

double logProbabilityOf(const Result& result, const std::string& gesture) {
    for (const Score& score : result.scores) {
        if (score.gesture == gesture) return score.logProbability;
    }
    return -infinity;
}

}  // namespace

Posterior posteriorOf(const Result& result, const std::vector<std::string>& gestures) {
    Posterior posterior{std::vector<double>(gestures.size(), 0.0), 1.0,
                        std::vector<double>(gestures.size(), -infinity)};
    if (result.scores.empty() || !(result.scores.front().logProbability > -infinity)) {
        return posterior;
    }
    // The margin is that of the winner, or of the likeliest gesture where there is none.
    const double decisive = result.recognized() ? logProbabilityOf(result, result.gesture)
                                                : result.scores.front().logProbability;
    double largest = 0.0;
    for (std::size_t g = 0; g < gestures.size(); ++g) {
        const double margin = logProbabilityOf(result, gestures[g]) - decisive + result.margin;
        posterior.margins[g] = margin;
        largest = std::max(largest, margin);
    }
    // A threshold that underflowed to 0, or a gesture: one side has it all.
    if (!std::isfinite(result.margin)) {
        if (result.margin < 0.0) return posterior;
        for (std::size_t g = 0; g < gestures.size(); ++g) {
            posterior.gestures[g] = std::exp(logProbabilityOf(result, gestures[g]) - decisive);
        }
        posterior.threshold = 0.0;
    } else {
        for (std::size_t g = 0; g < gestures.size(); ++g) {
            posterior.gestures[g] = std::exp(posterior.margins[g] - largest);
        }
        posterior.threshold = std::exp(-largest);
    }
    double sum = posterior.threshold;
    for (const double value : posterior.gestures) sum += value;
    for (double& value : posterior.gestures) value /= sum;
    posterior.threshold /= sum;
    return posterior;
}

}  // namespace Vesk::Kit
