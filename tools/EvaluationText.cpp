#include "EvaluationText.h"

#include "TableText.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace Vesk::Tool {

namespace {

using Json = nlohmann::ordered_json;
using Method = Kit::Verdict Kit::Outcome::*;

Json shareJson(const Kit::Share& share, std::size_t draws) {
    const Kit::Interval interval = share.interval(draws);
    return {{"count", share.count},
            {"total", share.total},
            {"share", share.value()},
            {"low", interval.low},
            {"high", interval.high}};
}

Json ratesJson(const std::vector<Kit::Outcome>& outcomes, Method method, std::size_t draws) {
    const Kit::Rates rates = ratesOf(outcomes, method);
    Json json;
    for (const RateRow& row : rateRows) {
        if ((rates.*row.share).total > 0) json[row.key] = shareJson(rates.*row.share, draws);
    }
    return json;
}

Json confusionJson(const std::vector<Kit::Outcome>& outcomes, Method method, std::size_t draws) {
    const Kit::Confusion confusion = confusionOf(outcomes, method);
    Json gestures = Json::array();
    for (std::size_t k = 0; k < confusion.gestures.size(); ++k) {
        gestures.push_back({{"gesture", confusion.gestures[k]},
                            {"recall", shareJson(confusion.recall(k), draws)},
                            {"precision", shareJson(confusion.precision(k), draws)}});
    }
    // The last number of each row counts rejections.
    return {{"gestures", gestures}, {"confusion", confusion.counts}};
}

Json methodJson(const EvaluationResult& result, Method method) {
    Json json = ratesJson(result.outcomes, method, result.draws);
    json.update(confusionJson(result.outcomes, method, result.draws));
    return json;
}

Json verdictJson(const Kit::Verdict& verdict) {
    Json json{{"gesture", verdict.gesture}, {"likeliest", verdict.likeliest}};
    if (verdict.asUnknown) json["asUnknown"] = *verdict.asUnknown;
    return json;
}

Json outcomeJson(const EvaluationResult& result, const Kit::Outcome& outcome) {
    const Kit::Trace& trace = result.traces[outcome.trace];
    Json json{{"source", trace.source},
              {"line", trace.line},
              {"user", trace.user},
              {"expected", outcome.expected},
              {"fold", outcome.fold},
              {"models", verdictJson(outcome.models)},
              {"templates", verdictJson(outcome.templates)}};
    json["rejection"] = Kit::toString(outcome.rejection);
    // JSON has no infinity: no margin is null.
    json["margin"] = std::isfinite(outcome.margin) ? Json(outcome.margin) : Json(nullptr);
    return json;
}

}  // namespace

std::string evaluationText(const EvaluationResult& result) {
    std::string text = printable(subjectOf(result)) + '\n' +
                       counted(result.outcomes.size(), "trace") + " tested\n";
    text += "\n" + tableText(ratesTable(result)) + "\n" + tableText(gesturesTable(result));
    if (result.folds.size() > 1) text += "\n" + tableText(foldsTable(result));
    if (!result.curve.empty()) text += "\n" + tableText(curveTable(result));
    return text;
}

std::string evaluationJson(const EvaluationResult& result) {
    Json json;
    json["split"] = result.split;
    json["models"] = methodJson(result, &Kit::Outcome::models);
    json["templates"] = methodJson(result, &Kit::Outcome::templates);
    json["folds"] = Json::array();
    for (const Kit::Fold& fold : result.folds) {
        json["folds"].push_back(
            {{"name", fold.name}, {"training", fold.training.size()}, {"test", fold.test.size()}});
    }
    json["fewExamples"] = Json::array();
    for (const FewExamples& few : result.curve) {
        json["fewExamples"].push_back(
            {{"examples", few.examples},
             {"models", ratesJson(few.outcomes, &Kit::Outcome::models, few.draws)},
             {"templates", ratesJson(few.outcomes, &Kit::Outcome::templates, few.draws)}});
    }
    json["traces"] = Json::array();
    for (const Kit::Outcome& outcome : result.outcomes) {
        json["traces"].push_back(outcomeJson(result, outcome));
    }
    // A path need not be UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Vesk::Tool
