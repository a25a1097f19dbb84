#include "EvaluationText.h"

#include "TableText.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace Vesk::Tool {

namespace {

using Json = nlohmann::ordered_json;
using Method = Kit::Verdict Kit::Outcome::*;

Json shareJson(const Kit::Share& share) {
    const Kit::Interval interval = share.interval();
    return {{"count", share.count},
            {"total", share.total},
            {"share", share.value()},
            {"low", interval.low},
            {"high", interval.high}};
}

Json ratesJson(const std::vector<Kit::Outcome>& outcomes, Method method) {
    const Kit::Rates rates = ratesOf(outcomes, method);
    Json json;
    for (const RateRow& row : rateRows) {
        if ((rates.*row.share).total > 0) json[row.key] = shareJson(rates.*row.share);
    }
    return json;
}

Json confusionJson(const std::vector<Kit::Outcome>& outcomes, Method method) {
    const Kit::Confusion confusion = confusionOf(outcomes, method);
    Json gestures = Json::array();
    for (std::size_t k = 0; k < confusion.gestures.size(); ++k) {
        gestures.push_back({{"gesture", confusion.gestures[k]},
                            {"recall", shareJson(confusion.recall(k))},
                            {"precision", shareJson(confusion.precision(k))}});
    }
    // The last number of each row counts rejections.
    return {{"gestures", gestures}, {"confusion", confusion.counts}};
}

Json methodJson(const std::vector<Kit::Outcome>& outcomes, Method method) {
    Json json = ratesJson(outcomes, method);
    json.update(confusionJson(outcomes, method));
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
    json["models"] = methodJson(result.outcomes, &Kit::Outcome::models);
    json["templates"] = methodJson(result.outcomes, &Kit::Outcome::templates);
    json["folds"] = Json::array();
    for (const Kit::Fold& fold : result.folds) {
        json["folds"].push_back(
            {{"name", fold.name}, {"training", fold.training.size()}, {"test", fold.test.size()}});
    }
    json["fewExamples"] = Json::array();
    for (const FewExamples& few : result.curve) {
        json["fewExamples"].push_back(
            {{"examples", few.examples},
             {"models", ratesJson(few.outcomes, &Kit::Outcome::models)},
             {"templates", ratesJson(few.outcomes, &Kit::Outcome::templates)}});
    }
    json["traces"] = Json::array();
    for (const Kit::Outcome& outcome : result.outcomes) {
        json["traces"].push_back(outcomeJson(result, outcome));
    }
    // A path need not be UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Vesk::Tool
