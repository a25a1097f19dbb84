#include "TuningText.h"

#include "Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace Vesk::Tool {

namespace {

using Json = nlohmann::ordered_json;

std::string percent(const Kit::Share& share) {
    return share.total == 0 ? "-" : fmt::format("{:.2f} %", 100.0 * share.value());
}

std::string header(const char* first, std::size_t width) {
    return fmt::format("{:<{}} {:>10} {:>10} {:>10} {:>17}", first, width, "correct", "wrong",
                       "rejected", "unknown accepted");
}

std::string row(const std::string& first, std::size_t width, const Kit::TradeOffPoint& point) {
    return fmt::format("{:<{}} {:>10} {:>10} {:>10} {:>17}", first, width, percent(point.correct),
                       percent(point.wrong), percent(point.rejected),
                       percent(point.unknownAccepted));
}

const Kit::Trial& bestOf(const TuningFindings& findings) {
    return findings.result.trials[findings.result.best];
}

/// What `vesk train` has to be told for the best setting.
std::string optionsText(const Kit::TrainingOptions& best) {
    std::string text =
        fmt::format("--symbols {} --states {} --delta {}", best.symbols, best.states, best.delta);
    if (best.subModels) text += fmt::format(" --sub-models {}", *best.subModels);
    if (best.smoothing) text += fmt::format(" --smoothing {:g}", *best.smoothing);
    return text + fmt::format(" --ratio {:.6g}", best.acceptanceRatio.value_or(1.0));
}

std::string trialsText(const Kit::TuningResult& result) {
    std::size_t width = 16;
    for (const Kit::Trial& trial : result.trials) width = std::max(width, trial.change.size());
    std::string text = header("tried", width) + fmt::format(" {:>10}\n", "ratio");
    for (const Kit::Trial& trial : result.trials) {
        const bool first = &trial == &result.trials.front();
        text += row(trial.change, width, trial.result) +
                fmt::format(" {:>10.4g}{}\n", trial.result.ratio,
                            trial.adopted && !first ? "  adopted" : "");
    }
    return text;
}

/// The decades of the curve up to where more than half is rejected, and the ratio chosen.
std::string curveText(const TuningFindings& findings) {
    constexpr std::size_t width = 16;
    constexpr double leastShown = 0.9;
    constexpr double mostRejected = 0.5;
    std::map<double, std::string> rows;
    for (const Kit::TradeOffPoint& point : Kit::tradeOffOf(findings.result.outcomes)) {
        const double decade = std::log10(point.ratio);
        if (point.ratio < leastShown || std::abs(decade - std::round(decade)) > 0.1) continue;
        if (point.rejected.value() > mostRejected) break;
        rows[point.ratio] = row(fmt::format("{:.4g}", point.ratio), width, point) + "\n";
    }
    const Kit::TradeOffPoint& chosen = bestOf(findings).result;
    rows[chosen.ratio] = row(fmt::format("{:.4g}", chosen.ratio), width, chosen) + "  chosen\n";
    std::string text = header("ratio", width) + "\n";
    for (const auto& [ratio, line] : rows) text += line;
    return text;
}

Json shareJson(const Kit::Share& share) {
    return {{"count", share.count}, {"total", share.total}, {"share", share.value()}};
}

Json pointJson(const Kit::TradeOffPoint& point) {
    return {{"ratio", point.ratio},
            {"correct", shareJson(point.correct)},
            {"wrong", shareJson(point.wrong)},
            {"rejected", shareJson(point.rejected)},
            {"unknownAccepted", shareJson(point.unknownAccepted)}};
}

Json settingsJson(const Kit::TrainingOptions& settings) {
    Json json{
        {"symbols", settings.symbols}, {"states", settings.states}, {"delta", settings.delta}};
    // What is not set is chosen gesture by gesture.
    json["subModels"] = settings.subModels ? Json(*settings.subModels) : Json(nullptr);
    json["smoothing"] = settings.smoothing ? Json(*settings.smoothing) : Json(nullptr);
    return json;
}

}  // namespace

std::string tuningText(const TuningFindings& findings) {
    std::set<std::string> gestures;
    for (const Kit::Trace& trace : findings.traces) gestures.insert(trace.gesture);
    return fmt::format("{} of {}: {}\nno more than {:.4g} % of unknown gestures to be accepted\n",
                       counted(findings.traces.size(), "trace"),
                       counted(gestures.size(), "gesture"), printable(findings.split),
                       100.0 * findings.falseAccept) +
           "\n" + trialsText(findings.result) + "\n" + curveText(findings) +
           "\nbest: " + optionsText(findings.result.training) + "\n";
}

std::string tuningJson(const TuningFindings& findings) {
    Json json;
    json["split"] = findings.split;
    json["falseAccept"] = findings.falseAccept;
    json["best"] = settingsJson(findings.result.training);
    json["best"]["ratio"] = findings.result.training.acceptanceRatio.value_or(1.0);
    json["trials"] = Json::array();
    for (const Kit::Trial& trial : findings.result.trials) {
        json["trials"].push_back({{"change", trial.change},
                                  {"settings", settingsJson(trial.training)},
                                  {"result", pointJson(trial.result)},
                                  {"adopted", trial.adopted}});
    }
    json["tradeOff"] = Json::array();
    for (const Kit::TradeOffPoint& point : Kit::tradeOffOf(findings.result.outcomes)) {
        json["tradeOff"].push_back(pointJson(point));
    }
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string tuningWarning(const TuningFindings& findings) {
    const Kit::TradeOffPoint& chosen = bestOf(findings).result;
    if (chosen.unknownAccepted.value() <= findings.falseAccept) return {};
    std::map<std::pair<std::string, std::string>, std::size_t> counts;
    for (const Kit::Outcome& outcome : findings.result.outcomes) {
        const std::string answer = answerAt(outcome.answersAsUnknown, std::log(chosen.ratio));
        if (!answer.empty()) ++counts[{outcome.expected, answer}];
    }
    const auto worst =
        std::max_element(counts.begin(), counts.end(),
                         [](const auto& x, const auto& y) { return x.second < y.second; });
    return fmt::format(
        "warning: {:.2f} % of unknown gestures are accepted even at the largest ratio, expected no "
        "more than {:.4g} %: most often {} as {}, of which the set may need only one",
        100.0 * chosen.unknownAccepted.value(), 100.0 * findings.falseAccept, worst->first.first,
        worst->first.second);
}

}  // namespace Vesk::Tool
