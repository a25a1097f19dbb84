#include "Requests.h"

#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/evaluation/TradeOff.h>
#include <veskkit/report/ConfusionPlot.h>

#include <algorithm>
#include <map>

namespace Vesk::Studio {

namespace {

/// As many folds as the rarest gesture has examples: each fold leaves one of it out.
std::size_t foldsFor(const std::vector<Kit::Trace>& traces, std::size_t most) {
    std::map<std::string, std::size_t> counts;
    for (const Kit::Trace& trace : traces) ++counts[trace.gesture];
    std::size_t fewest = most;
    for (const auto& [gesture, count] : counts) fewest = std::min(fewest, count);
    return fewest;
}

Json shareJson(const Kit::Share& share) { return {{"count", share.count}, {"total", share.total}}; }

Json tradeOffJson(const std::vector<Kit::Outcome>& outcomes) {
    Json points = Json::array();
    for (const Kit::TradeOffPoint& point : Kit::tradeOffOf(outcomes)) {
        points.push_back({{"ratio", point.ratio},
                          {"correct", shareJson(point.correct)},
                          {"wrong", shareJson(point.wrong)},
                          {"rejected", shareJson(point.rejected)},
                          {"unknownAccepted", shareJson(point.unknownAccepted)}});
    }
    return points;
}

}  // namespace

/// "traces" and "most" folds: every example is recognised by models that were trained without it.
/// "rates", "confusion" (an SVG), "mistakes" (places of traces and their answers), "tradeOff".
Answer evaluate(const Call& call) {
    const std::vector<Kit::Trace> traces = tracesOf(call.arguments.at("traces"));
    Kit::EvaluationOptions options;
    options.training.threads = 1;
    options.templates = false;
    options.unknownGestures = call.arguments.value("unknown", true);
    const auto folds =
        Kit::stratifiedFolds(traces, foldsFor(traces, call.arguments.value("most", 10)), 1);
    const auto outcomes =
        Kit::evaluate(traces, folds, options, [&](const Kit::EvaluationProgress& it) {
            call.tell((static_cast<double>(it.fold) + it.share) / static_cast<double>(it.folds));
        });
    Json mistakes = Json::array();
    for (const Kit::Outcome& outcome : outcomes) {
        if (outcome.models.gesture == outcome.expected) continue;
        mistakes.push_back({{"trace", outcome.trace},
                            {"answer", outcome.models.gesture},
                            {"rejection", Kit::toString(outcome.rejection)}});
    }
    const Kit::Rates rates = Kit::ratesOf(outcomes, &Kit::Outcome::models);
    const Kit::Confusion confusion = Kit::confusionOf(outcomes, &Kit::Outcome::models);
    return {{{"folds", folds.size()},
             {"correct", shareJson(rates.correct)},
             {"wrong", shareJson(rates.wrong)},
             {"rejected", shareJson(rates.rejected)},
             {"unknownAccepted", shareJson(rates.unknownAccepted)},
             {"confusion", Kit::confusionPlot("Examples and their answers", confusion)},
             {"mistakes", mistakes},
             {"tradeOff", tradeOffJson(outcomes)}}};
}

}  // namespace Vesk::Studio
