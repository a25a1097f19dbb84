#include <veskkit/recognition/StatePath.h>

#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/TurnedCopies.h>

#include <vesk/quantizer/ProximityFilter.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Vesk::Kit {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The positions of the path between which the quantiser takes directions.
Points quantizedPoints(const GestureRecognizer& recognizer, const Trace& trace) {
    Points points = Resampler(recognizer.preparation()).path(trace.points);
    points.erase(std::unique(points.begin(), points.end()), points.end());
    Points kept;
    Vesk::ML::ProximityFilter<double>::run(
        points, kept, static_cast<double>(recognizer.model().get().proxFilterThreshold));
    return kept;
}

/// ln P(symbols | model) / T; minus infinity where it is 0 or no number.
double meanLogLikelihood(const Vesk::ML::LeftRightHMM& model, const std::vector<int>& symbols) {
    const double mean = model.logLikelihood(symbols) / static_cast<double>(symbols.size());
    return std::isnan(mean) ? -infinity : mean;
}

}  // namespace

std::optional<StatePath> statePathOf(const GestureRecognizer& recognizer, std::size_t gesture,
                                     const Trace& trace) {
    const Vesk::ML::LeftRightHMM& model = *recognizer.model().gestures().at(gesture);
    const std::vector<int> symbols = recognizer.symbols(trace);
    if (symbols.size() < 2) return {};
    StatePath path{quantizedPoints(recognizer, trace), {}, meanLogLikelihood(model, symbols)};
    if (path.meanLogLikelihood == -infinity) return {};
    const int T = static_cast<int>(symbols.size());
    const Vesk::Math::MatrixT<double> best =
        Vesk::ML::HMM(static_cast<const Vesk::ML::HMM&>(model)).viterbi(symbols, T);
    const int steps = static_cast<int>(path.points.size()) - 1;
    for (int t = 0; t < steps; ++t) path.states.push_back(static_cast<int>(best(1, t)));
    return path;
}

std::vector<std::optional<Example>> bestExamples(const GestureRecognizer& recognizer,
                                                 const std::vector<Trace>& traces) {
    const auto& models = recognizer.model().gestures();
    const std::vector<std::size_t> originals = originalsOf(recognizer.model());
    std::vector<std::pair<double, std::size_t>> best(models.size(), {-infinity, traces.size()});
    for (std::size_t i = 0; i < traces.size(); ++i) {
        const std::string name = storedName(traces[i].gesture);
        const std::vector<int> symbols = recognizer.symbols(traces[i]);
        if (symbols.size() < 2) continue;
        double likelihood = -infinity;
        std::size_t model = models.size();
        for (std::size_t m = 0; m < models.size(); ++m) {
            if (originals[m] != m || models[m]->name != name) continue;
            const double own = meanLogLikelihood(*models[m], symbols);
            if (own > likelihood) {
                likelihood = own;
                model = m;
            }
        }
        if (model < models.size() && likelihood > best[model].first) best[model] = {likelihood, i};
    }
    std::vector<std::optional<Example>> examples(models.size());
    for (std::size_t m = 0; m < models.size(); ++m) {
        const std::size_t trace = best[m].second;
        if (trace == traces.size()) continue;
        std::optional<StatePath> path = statePathOf(recognizer, m, traces[trace]);
        if (path) examples[m] = Example{trace, std::move(*path)};
    }
    return examples;
}

}  // namespace Vesk::Kit
