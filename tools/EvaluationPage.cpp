#include "EvaluationPage.h"

#include "ModelPage.h"
#include "Text.h"

#include <veskkit/report/ConfusionPlot.h>
#include <veskkit/report/LinePlot.h>
#include <veskkit/report/TradeOffPlot.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace Vesk::Tool {

namespace {

constexpr std::size_t mostMistakes = 12;

double percent(const Kit::Share& share) { return 100.0 * share.value(); }

void addRates(Kit::Page& page, const EvaluationResult& result) {
    page.section("Rates");
    page.paragraph(subjectOf(result) + ". " + counted(result.outcomes.size(), "trace") +
                   " tested.");
    page.table(ratesTable(result));
    if (result.folds.size() > 1) page.table(foldsTable(result));
}

void addGestures(Kit::Page& page, const EvaluationResult& result) {
    page.section("Gestures");
    page.table(gesturesTable(result));
    const Kit::Confusion confusion = confusionOf(result.outcomes, &Kit::Outcome::models);
    page.figure({confusionPlot("Confusion matrix: how often each gesture got each answer; the "
                               "table before has the numbers",
                               confusion),
                 "Rows: what was drawn. Columns: the answer. The deeper the colour, the larger "
                 "the share of the row."});
}

void addExamples(Kit::Page& page, const EvaluationResult& result,
                 const Kit::GestureRecognizer& recognizer, const Kit::StrokeStyle& style) {
    page.section("Strokes");
    page.paragraph(
        "Of each way of drawing a gesture the trace that its model explains best, prepared as for "
        "recognition and coloured by the states that it passes through. The models were trained "
        "on all traces. A ring marks the beginning.");
    std::vector<Kit::Figure> figures;
    const auto& models = recognizer.model().gestures();
    const auto examples = bestExamples(recognizer, result.traces);
    for (std::size_t m = 0; m < examples.size(); ++m) {
        if (!examples[m]) continue;
        figures.push_back(exampleFigure(*models[m], *examples[m], result.traces, style));
    }
    page.gallery(figures);
}

void addTradeOff(Kit::Page& page, const EvaluationResult& result) {
    const std::string plot = Kit::tradeOffPlot(
        "Share of unknown gestures accepted over the share of known ones "
        "rejected; the table after it has some of the numbers",
        result.outcomes);
    if (plot.empty()) return;
    page.section("Known or unknown");
    page.figure({plot,
                 "The stricter the acceptance ratio, the fewer unknown gestures pass and the more "
                 "known ones are rejected."});
    page.table(tradeOffTable(tradeOffOf(result.outcomes)));
}

void addCurve(Kit::Page& page, const EvaluationResult& result) {
    if (result.curve.empty()) return;
    Kit::Series likeliest{"arg-max", {}};
    Kit::Series correct{"correct", {}};
    Kit::Series templates{"template matcher's arg-max", {}};
    for (const FewExamples& few : result.curve) {
        const auto x = static_cast<double>(few.examples);
        const Kit::Rates rates = ratesOf(few.outcomes, &Kit::Outcome::models);
        likeliest.points.emplace_back(x, percent(rates.argMax));
        correct.points.emplace_back(x, percent(rates.correct));
        templates.points.emplace_back(
            x, percent(ratesOf(few.outcomes, &Kit::Outcome::templates).argMax));
    }
    for (Kit::Series* series : {&likeliest, &correct, &templates}) {
        std::sort(series->points.begin(), series->points.end());
    }
    page.section("Few examples");
    page.figure({Kit::linePlot("Shares recognised over the number of training examples; the table "
                               "after it has the numbers",
                               {"training examples a gesture", 0.0, 1.0},
                               {"traces, %", 90.0, 100.0}, {likeliest, correct, templates}),
                 "How many examples of each gesture training needs."});
    page.table(curveTable(result));
}

/// Places of the outcomes that `chosen` picks, `first` of two before the other.
template <typename Chosen, typename First>
std::vector<const Kit::Outcome*> worstOf(const EvaluationResult& result, const Chosen& chosen,
                                         const First& first) {
    std::vector<const Kit::Outcome*> found;
    for (const Kit::Outcome& outcome : result.outcomes) {
        if (chosen(outcome)) found.push_back(&outcome);
    }
    std::stable_sort(found.begin(), found.end(),
                     [&](const Kit::Outcome* x, const Kit::Outcome* y) { return first(*x, *y); });
    return found;
}

/// "check taken for v", "check rejected (threshold), likeliest v"
std::string mistakeOf(const Kit::Outcome& outcome) {
    const Kit::Verdict& verdict = outcome.models;
    if (!verdict.gesture.empty()) {
        return fmt::format("{} taken for {}", outcome.expected, verdict.gesture);
    }
    const bool other = !verdict.likeliest.empty() && verdict.likeliest != outcome.expected;
    return fmt::format("{} rejected ({}){}", outcome.expected, toString(outcome.rejection),
                       other ? ", likeliest " + verdict.likeliest : "");
}

/// How many there are of how many, and how many of them are shown.
std::string countOf(const std::vector<const Kit::Outcome*>& outcomes,
                    const EvaluationResult& result) {
    return fmt::format(
        "{} of {}{}", outcomes.size(), counted(result.outcomes.size(), "trace"),
        outcomes.size() > mostMistakes ? fmt::format("; {} are shown", mostMistakes) : "");
}

void addStrokes(Kit::Page& page, const EvaluationResult& result, const Kit::Resampler& resampler,
                const std::vector<const Kit::Outcome*>& outcomes, const Kit::StrokeStyle& style) {
    std::vector<Kit::Figure> figures;
    std::set<std::size_t> shown;
    for (const Kit::Outcome* outcome : outcomes) {
        if (figures.size() == mostMistakes) break;
        if (!shown.insert(outcome->trace).second) continue;
        const Kit::Trace& trace = result.traces[outcome->trace];
        const std::string what = mistakeOf(*outcome);
        figures.push_back(
            {strokesPlot(what, {{outcome->expected, resampler.path(trace.points)}}, style),
             fmt::format("{} ({})", what, originOf(trace))});
    }
    page.gallery(figures);
}

void addMistakes(Kit::Page& page, const EvaluationResult& result, const Kit::Resampler& resampler,
                 const Kit::StrokeStyle& style) {
    const auto wrong = worstOf(
        result,
        [](const Kit::Outcome& it) {
            return !it.models.gesture.empty() && it.models.gesture != it.expected;
        },
        [](const Kit::Outcome& x, const Kit::Outcome& y) { return x.margin > y.margin; });
    const auto rejected = worstOf(
        result, [](const Kit::Outcome& it) { return it.models.gesture.empty(); },
        [](const Kit::Outcome& x, const Kit::Outcome& y) { return x.margin < y.margin; });
    page.section("Mistakes");
    page.part("Wrong: " + countOf(wrong, result));
    page.paragraph(wrong.empty() ? "No trace was taken for another gesture."
                                 : "Those that cleared the threshold by most come first.");
    addStrokes(page, result, resampler, wrong, style);
    page.part("Rejected: " + countOf(rejected, result));
    page.paragraph(rejected.empty() ? "No trace was rejected."
                                    : "Those farthest below the threshold come first.");
    addStrokes(page, result, resampler, rejected, style);
}

}  // namespace

Kit::Page evaluationPage(const EvaluationResult& result, const Kit::GestureRecognizer& recognizer,
                         const Kit::StrokeStyle& style) {
    Kit::Page page("Gesture evaluation");
    addRates(page, result);
    addGestures(page, result);
    addTradeOff(page, result);
    addCurve(page, result);
    addExamples(page, result, recognizer, style);
    addMistakes(page, result, Kit::Resampler(recognizer.preparation()), style);
    return page;
}

}  // namespace Vesk::Tool
