#include "EvaluationTables.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace Vesk::Tool {

namespace {

double percent(double share) { return 100.0 * share; }

/// "99.44 % (98.8 to 99.7)"; "-" of no trials.
std::string withInterval(const Kit::Share& share, std::size_t draws) {
    if (share.total == 0) return "-";
    const Kit::Interval interval = share.interval(draws);
    return fmt::format("{:.2f} % ({:.1f} to {:.1f})", percent(share.value()), percent(interval.low),
                       percent(interval.high));
}

std::string plainShare(const Kit::Share& share) {
    return share.total == 0 ? "-" : fmt::format("{:.2f} %", percent(share.value()));
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
        text += fmt::format("{} {}", confusion.gestures[k], count);
    }
    return text;
}

}  // namespace

std::string subjectOf(const EvaluationResult& result) {
    std::set<std::string> gestures;
    std::set<std::string> users;
    for (const Kit::Trace& trace : result.traces) {
        gestures.insert(trace.gesture);
        users.insert(trace.user);
    }
    users.erase("");
    return fmt::format("{} of {}{}: {}", counted(result.traces.size(), "trace"),
                       counted(gestures.size(), "gesture"),
                       users.empty() ? "" : " by " + counted(users.size(), "user"), result.split);
}

Kit::Table ratesTable(const EvaluationResult& result) {
    const Kit::Rates models = ratesOf(result.outcomes, &Kit::Outcome::models);
    const Kit::Rates templates = ratesOf(result.outcomes, &Kit::Outcome::templates);
    Kit::Table table{"Shares of the traces",
                     {{""}, {"hidden Markov models"}, {"template matcher (95 % intervals)"}},
                     {}};
    for (const RateRow& row : rateRows) {
        if ((models.*row.share).total == 0) continue;
        table.rows.push_back({row.name, withInterval(models.*row.share, result.draws),
                              withInterval(templates.*row.share, result.draws)});
    }
    return table;
}

Kit::Table gesturesTable(const EvaluationResult& result) {
    const Kit::Confusion confusion = confusionOf(result.outcomes, &Kit::Outcome::models);
    Kit::Table table{"Gesture by gesture",
                     {{"gesture"},
                      {"traces", true},
                      {"recall", true},
                      {"precision", true},
                      {"rejected", true},
                      {"taken for"}},
                     {}};
    for (std::size_t k = 0; k < confusion.gestures.size(); ++k) {
        const Kit::Share recall = confusion.recall(k);
        table.rows.push_back({confusion.gestures[k], std::to_string(recall.total),
                              plainShare(recall), plainShare(confusion.precision(k)),
                              std::to_string(confusion.counts[k].back()), takenFor(confusion, k)});
    }
    return table;
}

Kit::Table foldsTable(const EvaluationResult& result) {
    Kit::Table table{"Fold by fold",
                     {{"fold"},
                      {"traces", true},
                      {"arg-max", true},
                      {"correct", true},
                      {"wrong", true},
                      {"rejected", true}},
                     {}};
    const std::size_t folds = result.folds.size() / result.draws;
    for (std::size_t f = 0; f < folds; ++f) {
        std::vector<Kit::Outcome> own;
        for (const Kit::Outcome& outcome : result.outcomes) {
            if (outcome.fold % folds == f) own.push_back(outcome);
        }
        const Kit::Rates rates = ratesOf(own, &Kit::Outcome::models);
        table.rows.push_back({result.folds[f].name, std::to_string(own.size()),
                              plainShare(rates.argMax), plainShare(rates.correct),
                              plainShare(rates.wrong), plainShare(rates.rejected)});
    }
    return table;
}

Kit::Table curveTable(const EvaluationResult& result) {
    Kit::Table table{"With few training examples a gesture",
                     {{"examples", true},
                      {"arg-max", true},
                      {"correct", true},
                      {"wrong", true},
                      {"rejected", true},
                      {"template matcher's arg-max", true}},
                     {}};
    for (const FewExamples& few : result.curve) {
        const Kit::Rates models = ratesOf(few.outcomes, &Kit::Outcome::models);
        const Kit::Rates templates = ratesOf(few.outcomes, &Kit::Outcome::templates);
        table.rows.push_back({std::to_string(few.examples), plainShare(models.argMax),
                              plainShare(models.correct), plainShare(models.wrong),
                              plainShare(models.rejected), plainShare(templates.argMax)});
    }
    return table;
}

Kit::Table tradeOffTable(const std::vector<Kit::TradeOffPoint>& points) {
    Kit::Table table{"What another acceptance ratio would do",
                     {{"rejected at most", true},
                      {"rejected", true},
                      {"unknown accepted", true},
                      {"acceptance ratio", true}},
                     {}};
    const Kit::TradeOffPoint* last = nullptr;
    for (const double limit : {0.01, 0.02, 0.03, 0.05, 0.10, 0.20}) {
        const Kit::TradeOffPoint* strictest = nullptr;
        for (const Kit::TradeOffPoint& point : points) {
            if (point.rejected.value() <= limit) strictest = &point;
        }
        if (strictest == nullptr || strictest == last) continue;
        last = strictest;
        table.rows.push_back(
            {fmt::format("{:.0f} %", percent(limit)), plainShare(strictest->rejected),
             plainShare(strictest->unknownAccepted), fmt::format("{:.3g}", strictest->ratio)});
    }
    return table;
}

}  // namespace Vesk::Tool
