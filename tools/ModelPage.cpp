#include "ModelPage.h"

#include "ModelSummary.h"
#include "Text.h"

#include <veskkit/recognition/TurnedCopies.h>
#include <veskkit/report/ModelPlots.h>

#include <fmt/format.h>

#include <cstddef>
#include <map>

namespace Vesk::Tool {

namespace {

std::string codebookText(const std::vector<double>& codebook) {
    std::string text;
    for (const double direction : codebook) {
        text += fmt::format("{}{:.5g}", text.empty() ? "" : " ", direction);
    }
    return text;
}

std::string rangeText(const Range& range) {
    return fmt::format("{:.3g} to {:.3g}", range.smallest, range.largest);
}

/// The gesture models of each gesture, by their places; no turned copies.
std::vector<std::vector<std::size_t>> byGesture(const Kit::RecognitionModel& model) {
    std::vector<std::vector<std::size_t>> groups;
    std::map<std::string, std::size_t> known;
    const std::vector<std::size_t> originals = Kit::originalsOf(model);
    for (std::size_t m = 0; m < originals.size(); ++m) {
        if (originals[m] != m) continue;
        const auto [place, isNew] = known.try_emplace(model.gestures()[m]->name, groups.size());
        if (isNew) groups.emplace_back();
        groups[place->second].push_back(m);
    }
    return groups;
}

/// "circle", "circle, way 2 of 3"
std::string titleOf(const std::string& gesture, std::size_t way, std::size_t ways) {
    return ways == 1 ? gesture : fmt::format("{}, way {} of {}", gesture, way + 1, ways);
}

void addGestureModel(Kit::Page& page, const Kit::RecognitionModel& model, std::size_t place,
                     const std::string& title, Kit::YAxis y) {
    const Vesk::ML::LeftRightHMM& gesture = *model.gestures()[place];
    page.figure({Kit::transitionGraph("Transitions of " + title, gesture.a),
                 fmt::format("{}: {} and their transitions; an arrow is as wide as its probability",
                             title, counted(gesture.numStates, "state"))});
    page.figure({Kit::emissionHeatMap("Emissions of " + title, gesture.b, model.get().codebook, y),
                 fmt::format("{}: probability of each symbol in each state", title)});
}

/// "16 in 69 models and 276 turned copies"
std::string gesturesText(const ModelSummary& summary) {
    std::size_t models = 0;
    std::size_t copies = 0;
    for (const GestureSummary& gesture : summary.gestures) {
        models += gesture.models.size();
        for (const SubModelSummary& it : gesture.models) copies += it.turnedCopies;
    }
    std::string text = fmt::format("{} in {}", summary.gestures.size(), counted(models, "model"));
    if (copies > 0)
        text += fmt::format(" and {} turned {}", copies, copies == 1 ? "copy" : "copies");
    return text;
}

}  // namespace

Kit::Table modelTable(const Kit::RecognitionModel& model) {
    const ModelSummary summary = summaryOf(model);
    const Vesk::ML::RecognitionModelHMM& it = model.get();
    return {"The model",
            {{"property"}, {"value"}},
            {{"name", it.name},
             {"gestures", gesturesText(summary)},
             {"threshold model", counted(it.numStates, "state")},
             {"transition probability", fmt::format("{:.6g}", it.modelTransitionProb)},
             {"acceptance ratio",
              fmt::format("{:.4g}: so many times as likely as the threshold model a gesture has "
                          "to be",
                          summary.acceptanceRatio)},
             {"proximity threshold", fmt::format("{:.6g}", it.proxFilterThreshold)},
             {"rotation", it.rotationAllowed ? "allowed" : "not allowed"},
             {"symbols", std::to_string(it.codebook.size())},
             {"codebook", codebookText(it.codebook) + " degrees"}}};
}

Kit::Table gestureModelsTable(const Kit::RecognitionModel& model) {
    Kit::Table table{"Its gestures; of transitions those that are not 0",
                     {{"gesture"},
                      {"model", true},
                      {"states", true},
                      {"delta", true},
                      {"ratio", true},
                      {"transitions", true},
                      {"emissions", true}},
                     {}};
    const ModelSummary summary = summaryOf(model);
    for (const GestureSummary& gesture : summary.gestures) {
        for (std::size_t m = 0; m < gesture.models.size(); ++m) {
            const SubModelSummary& it = gesture.models[m];
            table.rows.push_back({gesture.name, std::to_string(m + 1), std::to_string(it.states),
                                  std::to_string(it.delta),
                                  fmt::format("{:.4g}", summary.acceptanceRatio / it.prior),
                                  rangeText(it.transitions), rangeText(it.emissions)});
        }
    }
    return table;
}

std::string originOf(const Kit::Trace& trace) {
    const std::string place = placeOf(trace);
    const std::string name = place.substr(place.find_last_of('/') + 1);
    return trace.user.empty() ? name : trace.user + ", " + name;
}

Kit::Figure exampleFigure(const Vesk::ML::LeftRightHMM& model, const Kit::Example& example,
                          const std::vector<Kit::Trace>& traces, const Kit::StrokeStyle& style) {
    const Kit::Trace& trace = traces[example.trace];
    const int N = static_cast<int>(model.numStates);
    const std::string title = fmt::format(
        "Stroke of {}, coloured by the states of its model, 0 to {}", model.name, N - 1);
    return {Kit::stateStrokePlot(title, example.path.points, example.path.states, N, style),
            fmt::format("{} ({})", model.name, originOf(trace))};
}

Kit::Page modelPage(const Kit::GestureRecognizer& recognizer, const std::vector<Kit::Trace>& traces,
                    const Kit::StrokeStyle& style) {
    const Kit::RecognitionModel& model = recognizer.model();
    const auto examples = bestExamples(recognizer, traces);
    Kit::Page page("Gesture model " + model.get().name);
    page.section("Overview");
    page.table(modelTable(model));
    page.table(gestureModelsTable(model));
    page.section("Codebook");
    page.figure({Kit::codebookRose("Directions of the symbols", model.get().codebook, style.y),
                 "The direction that each symbol stands for"});
    for (const std::vector<std::size_t>& group : byGesture(model)) {
        const std::string& gesture = model.gestures()[group.front()]->name;
        page.section(gesture);
        for (std::size_t way = 0; way < group.size(); ++way) {
            const std::string title = titleOf(gesture, way, group.size());
            if (group.size() > 1) page.part(title);
            const std::optional<Kit::Example>& example = examples[group[way]];
            if (example) {
                page.gallery(
                    {exampleFigure(*model.gestures()[group[way]], *example, traces, style)});
            } else if (!traces.empty()) {
                page.paragraph("None of the traces given is an example of it.");
            }
            addGestureModel(page, model, group[way], title, style.y);
        }
    }
    return page;
}

}  // namespace Vesk::Tool
