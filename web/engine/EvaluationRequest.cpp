#include "Requests.h"

#include <veskkit/Error.h>
#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/evaluation/TradeOff.h>
#include <veskkit/report/ConfusionPlot.h>

#include <limits>
#include <optional>

namespace Vesk::Studio {

namespace {

Kit::Fold without(std::size_t example, std::size_t count) {
    Kit::Fold fold{"without one example", {}, {example}};
    for (std::size_t i = 0; i < count; ++i) {
        if (i != example) fold.training.push_back(i);
    }
    return fold;
}

/// A trace that any ratio takes has no finite bound.
std::vector<Kit::Answer> answersOf(const Json& json) {
    std::vector<Kit::Answer> answers;
    for (const Json& entry : json) {
        const Json& bound = entry.at("logRatio");
        answers.push_back(
            {bound.is_null() ? std::numeric_limits<double>::infinity() : bound.get<double>(),
             entry.at("gesture").get<std::string>()});
    }
    return answers;
}

/// What `testExample` answered.
Kit::Outcome outcomeOf(const Json& json) {
    Kit::Outcome outcome{};
    outcome.expected = json.at("expected").get<std::string>();
    outcome.models.gesture = json.at("answer").get<std::string>();
    outcome.answers = answersOf(json.at("answers"));
    outcome.answersAsUnknown = answersOf(json.at("answersAsUnknown"));
    if (!json.at("asUnknown").is_null())
        outcome.models.asUnknown = json.at("asUnknown").get<std::string>();
    return outcome;
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

/// "traces": those of the tests that follow.
Answer holdTraces(const Call& call) {
    call.engine.held = tracesOf(call.arguments.at("traces"));
    return {};
}

/// "example", the place of a held trace: what a model that was trained on all others makes of it,
/// and one that does not know its gesture.
Answer testExample(const Call& call) {
    const std::vector<Kit::Trace>& traces = call.engine.held;
    const auto example = call.arguments.at("example").get<std::size_t>();
    if (example >= traces.size())
        throw Kit::InputError("found no such example, expected a held one");
    Kit::EvaluationOptions options;
    options.training.threads = 1;
    options.templates = false;
    const Kit::Outcome outcome =
        Kit::evaluate(traces, {without(example, traces.size())}, options).front();
    const std::optional<std::string>& asUnknown = outcome.models.asUnknown;
    return {{{"expected", outcome.expected},
             {"answer", outcome.models.gesture},
             {"rejection", Kit::toString(outcome.rejection)},
             {"answers", answersJson(outcome.answers)},
             {"asUnknown", asUnknown ? Json(*asUnknown) : Json()},
             {"answersAsUnknown", answersJson(outcome.answersAsUnknown)}}};
}

/// "tests", the replies of `testExample`: "rates", "confusion" (an SVG), "tradeOff".
Answer summarizeTests(const Call& call) {
    std::vector<Kit::Outcome> outcomes;
    for (const Json& test : call.arguments.at("tests")) outcomes.push_back(outcomeOf(test));
    const Kit::Rates rates = Kit::ratesOf(outcomes, &Kit::Outcome::models);
    const Kit::Confusion confusion = Kit::confusionOf(outcomes, &Kit::Outcome::models);
    return {{{"correct", shareJson(rates.correct)},
             {"wrong", shareJson(rates.wrong)},
             {"rejected", shareJson(rates.rejected)},
             {"unknownAccepted", shareJson(rates.unknownAccepted)},
             {"confusion", Kit::confusionPlot("Examples and their answers", confusion)},
             {"tradeOff", tradeOffJson(outcomes)}}};
}

}  // namespace Vesk::Studio
