#include "EvaluationText.h"

#include "Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace Vesk::Tool {

namespace {

using Json = nlohmann::ordered_json;
using Method = Kit::Verdict Kit::Outcome::*;

double percent(double share) { return 100.0 * share; }

/// "99.44 % (98.8 to 99.7)"; "-" of no trials.
std::string withInterval(const Kit::Share& share) {
    if (share.total == 0) return "-";
    const Kit::Interval interval = share.interval();
    return fmt::format("{:.2f} % ({:.1f} to {:.1f})", percent(share.value()), percent(interval.low),
                       percent(interval.high));
}

std::string plainShare(const Kit::Share& share) {
    return share.total == 0 ? "-" : fmt::format("{:.2f} %", percent(share.value()));
}

struct RateRow {
    const char* name;
    const char* key;
    Kit::Share Kit::Rates::*share;
};

constexpr RateRow rateRows[] = {
    {"arg-max", "argMax", &Kit::Rates::argMax},
    {"correct", "correct", &Kit::Rates::correct},
    {"wrong", "wrong", &Kit::Rates::wrong},
    {"rejected", "rejected", &Kit::Rates::rejected},
    {"unknown accepted", "unknownAccepted", &Kit::Rates::unknownAccepted},
};

std::string headline(const EvaluationResult& result) {
    std::set<std::string> gestures;
    std::set<std::string> users;
    for (const Kit::Trace& trace : result.traces) {
        gestures.insert(trace.gesture);
        users.insert(trace.user);
    }
    users.erase("");
    return fmt::format("{} of {}{}: {}\n{} tested\n", counted(result.traces.size(), "trace"),
                       counted(gestures.size(), "gesture"),
                       users.empty() ? "" : " by " + counted(users.size(), "user"),
                       printable(result.split), counted(result.outcomes.size(), "trace"));
}

std::string ratesText(const EvaluationResult& result) {
    const Kit::Rates models = ratesOf(result.outcomes, &Kit::Outcome::models);
    const Kit::Rates templates = ratesOf(result.outcomes, &Kit::Outcome::templates);
    std::string text = fmt::format("{:<18}{:<26}{}\n", "", "hidden Markov models",
                                   "template matcher (95 % intervals)");
    for (const RateRow& row : rateRows) {
        if ((models.*row.share).total == 0) continue;
        text += fmt::format("{:<18}{:<26}{}\n", row.name, withInterval(models.*row.share),
                            withInterval(templates.*row.share));
    }
    return text;
}

/// "caret 3, v 1", the most frequent first.
std::string takenFor(const Kit::Confusion& confusion, std::size_t gesture) {
    std::vector<std::pair<std::size_t, std::size_t>> others;  // count, place
    for (std::size_t k = 0; k < confusion.gestures.size(); ++k) {
        const std::size_t count = confusion.counts[gesture][k];
        if (k != gesture && count > 0) others.emplace_back(count, k);
    }
    std::stable_sort(others.begin(), others.end(),
                     [](const auto& x, const auto& y) { return x.first > y.first; });
    std::string text;
    for (const auto& [count, k] : others) {
        if (!text.empty()) text += ", ";
        text += fmt::format("{} {}", printable(confusion.gestures[k]), count);
    }
    return text;
}

std::string gesturesText(const EvaluationResult& result) {
    const Kit::Confusion confusion = confusionOf(result.outcomes, &Kit::Outcome::models);
    std::size_t width = 8;
    for (const std::string& gesture : confusion.gestures) width = std::max(width, gesture.size());
    std::string text = fmt::format("{:<{}} {:>8} {:>10} {:>10} {:>9}  {}\n", "gesture", width,
                                   "traces", "recall", "precision", "rejected", "taken for");
    for (std::size_t k = 0; k < confusion.gestures.size(); ++k) {
        const Kit::Share recall = confusion.recall(k);
        std::string line =
            fmt::format("{:<{}} {:>8} {:>10} {:>10} {:>9}  {}", printable(confusion.gestures[k]),
                        width, recall.total, plainShare(recall), plainShare(confusion.precision(k)),
                        confusion.counts[k].back(), takenFor(confusion, k));
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

std::string foldsText(const EvaluationResult& result) {
    std::size_t width = 8;
    for (const Kit::Fold& fold : result.folds) width = std::max(width, fold.name.size());
    std::string text = fmt::format("{:<{}} {:>8} {:>10} {:>10} {:>10} {:>10}\n", "fold", width,
                                   "traces", "arg-max", "correct", "wrong", "rejected");
    for (std::size_t f = 0; f < result.folds.size(); ++f) {
        std::vector<Kit::Outcome> own;
        for (const Kit::Outcome& outcome : result.outcomes) {
            if (outcome.fold == f) own.push_back(outcome);
        }
        const Kit::Rates rates = ratesOf(own, &Kit::Outcome::models);
        text += fmt::format("{:<{}} {:>8} {:>10} {:>10} {:>10} {:>10}\n",
                            printable(result.folds[f].name), width, own.size(),
                            plainShare(rates.argMax), plainShare(rates.correct),
                            plainShare(rates.wrong), plainShare(rates.rejected));
    }
    return text;
}

std::string curveText(const std::vector<FewExamples>& curve) {
    std::string text = fmt::format("{:>8} {:>10} {:>10} {:>10} {:>10}  {}\n", "examples", "arg-max",
                                   "correct", "wrong", "rejected", "template matcher's arg-max");
    for (const FewExamples& few : curve) {
        const Kit::Rates models = ratesOf(few.outcomes, &Kit::Outcome::models);
        const Kit::Rates templates = ratesOf(few.outcomes, &Kit::Outcome::templates);
        text += fmt::format("{:>8} {:>10} {:>10} {:>10} {:>10}  {}\n", few.examples,
                            plainShare(models.argMax), plainShare(models.correct),
                            plainShare(models.wrong), plainShare(models.rejected),
                            plainShare(templates.argMax));
    }
    return text;
}

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
    std::string text = headline(result) + "\n" + ratesText(result) + "\n" + gesturesText(result);
    if (result.folds.size() > 1) text += "\n" + foldsText(result);
    if (!result.curve.empty()) text += "\n" + curveText(result.curve);
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
