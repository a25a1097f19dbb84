#include <veskkit/evaluation/TradeOff.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Vesk::Kit {

namespace {

/// How many of the margins, ascending, a factor leaves above the threshold.
std::size_t clearedBy(const std::vector<double>& margins, double factor) {
    return static_cast<std::size_t>(margins.end() -
                                    std::upper_bound(margins.begin(), margins.end(), factor));
}

/// Ascending; 0, one that accepts all that any threshold would, and the margins, where traces
/// change sides.
std::vector<double> factorsOf(const std::vector<double>& known,
                              const std::vector<double>& unknown) {
    std::vector<double> factors{0.0};
    for (const std::vector<double>* margins : {&known, &unknown}) {
        std::copy_if(margins->begin(), margins->end(), std::back_inserter(factors),
                     [](double margin) { return std::isfinite(margin); });
    }
    std::sort(factors.begin(), factors.end());
    factors.erase(std::unique(factors.begin(), factors.end()), factors.end());
    factors.insert(factors.begin(), factors.front() - 1.0);
    return factors;
}

}  // namespace

std::vector<TradeOffPoint> tradeOffOf(const std::vector<Outcome>& outcomes, std::size_t most) {
    std::vector<double> known;
    std::vector<double> unknown;
    for (const Outcome& outcome : outcomes) {
        known.push_back(reachable(outcome.rejection, outcome.margin));
        if (outcome.marginAsUnknown) unknown.push_back(*outcome.marginAsUnknown);
    }
    if (unknown.empty()) return {};
    std::sort(known.begin(), known.end());
    std::sort(unknown.begin(), unknown.end());
    const std::vector<double> factors = factorsOf(known, unknown);
    const std::size_t every = factors.size() / std::max<std::size_t>(most, 1) + 1;
    std::vector<TradeOffPoint> points;
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const double factor = factors[i];
        const bool last = i + 1 == factors.size();
        if (i % every != 0 && factor != 0.0 && !last) continue;
        points.push_back({factor,
                          {known.size() - clearedBy(known, factor), known.size()},
                          {clearedBy(unknown, factor), unknown.size()}});
    }
    return points;
}

}  // namespace Vesk::Kit
