#include "ModelSummary.h"

#include <veskkit/recognition/TurnedCopies.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <numeric>

namespace Vesk::Tool {

namespace {

using Json = nlohmann::ordered_json;

/// Of the values other than 0; 0 to 0 where there are none.
Range rangeOfOthers(const std::vector<double>& values) {
    Range range{0.0, 0.0};
    for (const double value : values) {
        if (value == 0.0) continue;
        const bool first = range.smallest == 0.0 && range.largest == 0.0;
        range.smallest = first ? value : std::min(range.smallest, value);
        range.largest = first ? value : std::max(range.largest, value);
    }
    return range;
}

Range rangeOf(const std::vector<double>& values) {
    const auto [smallest, largest] = std::minmax_element(values.begin(), values.end());
    return {*smallest, *largest};
}

Json rangeJson(const Range& range) {
    return {{"smallest", range.smallest}, {"largest", range.largest}};
}

double priorOf(const Vesk::ML::LeftRightHMM& model) {
    return std::accumulate(model.pi.begin(), model.pi.end(), 0.0);
}

}  // namespace

double largestPrior(const Kit::RecognitionModel& model) {
    double largest = 0.0;
    for (const auto& it : model.gestures()) largest = std::max(largest, priorOf(*it));
    return largest > 0.0 ? largest : 1.0;
}

ModelSummary summaryOf(const Kit::RecognitionModel& model) {
    ModelSummary summary{};
    const double usual = largestPrior(model);
    const std::vector<std::size_t> originals = Kit::originalsOf(model);
    for (const std::string& name : model.gestureNames()) {
        GestureSummary gesture{name, {}};
        for (std::size_t m = 0; m < originals.size(); ++m) {
            const Vesk::ML::LeftRightHMM& it = *model.gestures()[m];
            if (originals[m] != m || it.name != name) continue;
            const auto all = std::count(originals.begin(), originals.end(), m);
            gesture.models.push_back({it.numStates, it.delta, priorOf(it) / usual,
                                      rangeOfOthers(it.a.data), rangeOf(it.b.data),
                                      static_cast<std::size_t>(all) - 1});
        }
        summary.gestures.push_back(gesture);
    }
    // The weight is never 0: a transition probability of exactly 1 makes it 1.
    summary.acceptanceRatio =
        model.get().modelTransitionProb / model.get().gestureTransitionProb / usual;
    return summary;
}

std::string summaryJson(const Kit::RecognitionModel& model) {
    const Vesk::ML::RecognitionModelHMM& it = model.get();
    const ModelSummary summary = summaryOf(model);
    Json json{{"name", it.name},
              {"codebook", it.codebook},
              {"proximityThreshold", it.proxFilterThreshold},
              {"rotationAllowed", it.rotationAllowed},
              {"thresholdStates", it.numStates},
              {"transitionProbability", it.modelTransitionProb},
              {"acceptanceRatio", summary.acceptanceRatio}};
    json["gestures"] = Json::array();
    for (const GestureSummary& gesture : summary.gestures) {
        Json models = Json::array();
        for (const SubModelSummary& own : gesture.models) {
            models.push_back({{"states", own.states},
                              {"delta", own.delta},
                              {"prior", own.prior},
                              {"transitions", rangeJson(own.transitions)},
                              {"emissions", rangeJson(own.emissions)},
                              {"turnedCopies", own.turnedCopies}});
        }
        json["gestures"].push_back({{"gesture", gesture.name}, {"models", models}});
    }
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Vesk::Tool
