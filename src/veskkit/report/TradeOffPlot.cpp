#include <veskkit/report/TradeOffPlot.h>

#include <veskkit/evaluation/TradeOff.h>
#include <veskkit/report/LinePlot.h>

#include <algorithm>
#include <utility>

namespace Vesk::Kit {

namespace {

constexpr double largestRejection = 0.3;  // that the line is drawn for

double percent(const Share& share) { return 100.0 * share.value(); }

/// Where a method is with the ratio or distance that it has.
std::pair<double, double> measured(const std::vector<Outcome>& outcomes, Verdict Outcome::*method) {
    const Rates rates = ratesOf(outcomes, method);
    return {percent(rates.rejected), percent(rates.unknownAccepted)};
}

}  // namespace

std::string tradeOffPlot(const std::string& title, const std::vector<Outcome>& outcomes) {
    const std::vector<TradeOffPoint> points = tradeOffOf(outcomes);
    if (points.front().unknownAccepted.total == 0) return {};
    Series models{"hidden Markov models, at any acceptance ratio", {}};
    for (const TradeOffPoint& point : points) {
        if (point.rejected.value() > largestRejection) continue;
        models.points.emplace_back(percent(point.rejected), percent(point.unknownAccepted));
    }
    std::vector<Series> series{models, {"as measured", {measured(outcomes, &Outcome::models)}}};
    const bool matched = std::any_of(outcomes.begin(), outcomes.end(), [](const Outcome& it) {
        return !it.templates.likeliest.empty();
    });
    if (matched) {
        series.push_back({"template matcher", {measured(outcomes, &Outcome::templates)}});
    }
    return linePlot(title, {"known gestures rejected, %", 0.0, 10.0},
                    {"unknown gestures accepted, %", 0.0, 10.0}, series);
}

}  // namespace Vesk::Kit
