#include <veskkit/evaluation/TradeOff.h>

#include <veskkit/training/internal/AcceptanceRatios.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <string>

namespace Vesk::Kit {

using internal::largestRatio;
using internal::leastRatio;

TradeOffPoint tradeOffAt(const std::vector<Outcome>& outcomes, double ratio) {
    const double logRatio = std::log(ratio);
    TradeOffPoint point{ratio, {}, {}, {}, {}};
    for (const Outcome& outcome : outcomes) {
        const std::string answer = answerAt(outcome.answers, logRatio);
        point.correct.add(answer == outcome.expected);
        point.wrong.add(!answer.empty() && answer != outcome.expected);
        point.rejected.add(answer.empty());
        if (!outcome.models.asUnknown) continue;
        point.unknownAccepted.add(!answerAt(outcome.answersAsUnknown, logRatio).empty());
    }
    return point;
}

std::vector<TradeOffPoint> tradeOffOf(const std::vector<Outcome>& outcomes) {
    constexpr int stepsADecade = 4;
    std::vector<TradeOffPoint> points;
    for (int step = -6 * stepsADecade; step <= 12 * stepsADecade; ++step) {
        points.push_back(
            tradeOffAt(outcomes, std::pow(10.0, static_cast<double>(step) / stepsADecade)));
    }
    return points;
}

double ratioFor(const std::vector<Outcome>& outcomes, double unknownAccepted) {
    // An unknown trace is accepted below the highest ratio of its answers.
    std::vector<double> highest;
    std::size_t total = 0;
    for (const Outcome& outcome : outcomes) {
        if (!outcome.models.asUnknown) continue;
        ++total;
        if (!outcome.answersAsUnknown.empty()) {
            highest.push_back(outcome.answersAsUnknown.front().logRatio);
        }
    }
    const auto spared = static_cast<std::size_t>(unknownAccepted * static_cast<double>(total));
    if (spared >= highest.size()) return leastRatio;
    const auto bound = highest.begin() + static_cast<std::ptrdiff_t>(spared);
    std::nth_element(highest.begin(), bound, highest.end(), std::greater<>());
    // The bound's own trace stays out however its logarithm is rounded.
    const double ratio = std::exp(*bound) * (1.0 + 1e-9);
    return std::clamp(ratio, leastRatio, largestRatio);
}

}  // namespace Vesk::Kit
