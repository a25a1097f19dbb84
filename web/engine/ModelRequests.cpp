#include "Requests.h"

#include "../../tools/ModelPage.h"
#include "../../tools/ModelSummary.h"

#include <veskkit/Error.h>
#include <veskkit/diagnosis/ModelDoctor.h>
#include <veskkit/io/SceneFile.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/recognition/StatePath.h>
#include <veskkit/recognition/TurnedCopies.h>
#include <veskkit/report/Colours.h>
#include <veskkit/report/ModelPlots.h>
#include <veskkit/training/GestureTrainer.h>

#include <vesk/Version.h>

#include <cmath>
#include <optional>
#include <sstream>

namespace Vesk::Studio {

namespace {

Json descriptionOf(const Kit::RecognitionModel& model) {
    Json json = Json::parse(Tool::summaryJson(model));
    json["version"] = VESK_VERSION;
    return json;
}

/// The sub-model of the gesture that the trace is likeliest under, and the trace's path through it.
struct BestPath {
    std::size_t model;
    Kit::StatePath path;
};

std::optional<BestPath> bestPath(const Kit::GestureRecognizer& recognizer,
                                 const std::string& gesture, const Kit::Trace& trace) {
    const auto& models = recognizer.model().gestures();
    std::optional<BestPath> best;
    for (std::size_t m = 0; m < models.size(); ++m) {
        if (models[m]->name != gesture) continue;
        auto path = Kit::statePathOf(recognizer, m, trace);
        if (!path || (best && path->meanLogLikelihood <= best->path.meanLogLikelihood)) continue;
        best = BestPath{m, std::move(*path)};
    }
    return best;
}

/// How much likelier than the threshold each gesture is, in natural logarithms: all carry the same
/// weight, so they differ from the first as their probabilities do.
Json scoresJson(const Kit::Result& result) {
    Json scores = Json::array();
    for (const Kit::Score& score : result.scores) {
        const double behind = result.scores.front().logProbability - score.logProbability;
        scores.push_back({{"gesture", score.gesture},
                          {"logProbability", numberJson(score.logProbability)},
                          {"margin", numberJson(result.margin - behind)}});
    }
    return scores;
}

}  // namespace

/// "traces" and "name": "report"; the model's file.
Answer train(const Call& call) {
    Kit::TrainingOptions options;
    options.name = call.arguments.value("name", options.name);
    options.threads = 1;
    Kit::TrainingResult result = Kit::GestureTrainer(options).train(
        tracesOf(call.arguments.at("traces")), [&](const Kit::TrainingProgress& it) {
            call.tell(static_cast<double>(it.done) / static_cast<double>(it.total));
        });
    Json gestures = Json::array();
    for (const Kit::GestureReport& it : result.report.gestures)
        gestures.push_back(
            {{"gesture", it.gesture}, {"label", it.label}, {"models", it.subModels.size()}});
    Answer answer{{{"gestures", gestures},
                   {"warnings", result.report.warnings},
                   {"acceptanceRatio", Tool::summaryOf(result.model).acceptanceRatio}},
                  Kit::modelText(result.model.get())};
    call.engine.use(std::move(result.model), "model");
    return answer;
}

/// A model file and its "name": as `describe`.
Answer loadModel(const Call& call) {
    std::istringstream in(call.file);
    const std::string name = call.arguments.value("name", "model");
    Kit::RecognitionModel model = Kit::parseModel(in, name);
    Json description = descriptionOf(model);
    call.engine.use(std::move(model), name);
    return {description};
}

Answer describe(const Call& call) { return {descriptionOf(call.engine.recognizer().model())}; }

/// "ratio", how many times as likely as the threshold model a gesture has to be: the model's file,
/// and `describe`.
Answer setStrictness(const Call& call) {
    const double ratio = call.arguments.at("ratio").get<double>();
    if (!(ratio > 0.0) || !std::isfinite(ratio))
        throw Kit::InputError("found no ratio above 0, expected one");
    Kit::RecognitionModel model = call.engine.recognizer().model().clone();
    Vesk::ML::RecognitionModelHMM settings = model.get();
    // What of the ratio is in every pi stays there.
    const double rest = ratio * Tool::largestPrior(model);
    settings.modelTransitionProb = rest / (rest + static_cast<double>(model.gestures().size()));
    model.build(settings);
    call.engine.use(Kit::asStored(model), "model");
    const Kit::RecognitionModel& stored = call.engine.recognizer().model();
    return {descriptionOf(stored), Kit::modelText(stored.get())};
}

/// "points": the verdict, with the reason of a rejection; "scores" best first; "symbols"; what the
/// answer would be at other ratios; and "path", the states of the likeliest gesture.
Answer recognize(const Call& call) {
    const Kit::GestureRecognizer& recognizer = call.engine.recognizer();
    Kit::Trace trace;
    trace.points = call.arguments.at("points").get<Kit::Points>();
    const Kit::Result result = recognizer.recognize(trace);
    Json json{{"gesture", result.gesture},
              {"rejection", Kit::toString(result.rejection)},
              {"margin", numberJson(result.margin)},
              {"scores", scoresJson(result)},
              {"symbols", recognizer.symbols(trace)},
              {"answers", answersJson(recognizer.answers(trace))},
              {"path", nullptr}};
    if (!call.arguments.value("path", true) || result.scores.empty()) return {json};
    const std::string& shown = result.recognized() ? result.gesture : result.scores.front().gesture;
    if (const auto best = bestPath(recognizer, shown, trace)) {
        json["path"] = {{"gesture", shown},
                        {"points", best->path.points},
                        {"states", best->path.states},
                        {"count", recognizer.model().gestures()[best->model]->numStates}};
    }
    return {json};
}

/// "symbols": what the library computes from them by sums, products and quotients alone, so that it
/// is the same to the bit on every machine.
Answer probabilities(const Call& call) {
    const Vesk::ML::RecognitionModelHMM& model = call.engine.recognizer().model().get();
    const auto symbols = call.arguments.at("symbols").get<std::vector<int>>();
    const Vesk::ML::Recognition result = model.evaluate(symbols);
    Json gestures = Json::array();
    for (const Vesk::ML::GestureScore& it : result.gestures)
        gestures.push_back({it.probability, it.weightedProbability, it.weightedGamma});
    const auto T = static_cast<int>(symbols.size());
    return {{{"threshold", result.threshold},
             {"gestures", gestures},
             {"forward", model.recognitionHMM->forwardProc(symbols, T).data},
             {"backward", model.recognitionHMM->backwardProc(symbols, T).data}}};
}

Answer diagnoseModel(const Call& call) {
    return {
        {{"findings", findingsJson(Kit::diagnoseModel(call.engine.recognizer().model().get()))}}};
}

/// "gesture" and "traces": "figures" of each of its models but turned copies, each with "svg" and
/// "caption".
Answer drawGesture(const Call& call) {
    const Kit::GestureRecognizer& recognizer = call.engine.recognizer();
    const auto& models = recognizer.model().gestures();
    const std::string name = call.arguments.at("gesture").get<std::string>();
    const std::vector<Kit::Trace> traces = tracesOf(call.arguments.at("traces"));
    const auto examples = Kit::bestExamples(recognizer, traces);
    const std::vector<std::size_t> originals = Kit::originalsOf(recognizer.model());
    Json figures = Json::array();
    const auto add = [&](const std::string& svg, const std::string& caption) {
        figures.push_back({{"svg", svg}, {"caption", caption}});
    };
    for (std::size_t m = 0; m < models.size(); ++m) {
        const Vesk::ML::LeftRightHMM& model = *models[m];
        if (originals[m] != m || model.name != name) continue;
        if (examples[m]) {
            add(Tool::exampleFigure(model, *examples[m], traces, {}).svg,
                "The example that fits best, coloured by the model's states");
        }
        add(Kit::emissionHeatMap("Emissions of " + name, model.b,
                                 recognizer.model().get().codebook),
            "How likely each direction is in each state");
        add(Kit::transitionGraph("Transitions of " + name, model.a),
            "How it goes from state to state");
    }
    return {{{"figures", figures}}};
}

/// The node's file.
Answer writeScene(const Call& call) {
    return {Json::object(), Kit::sceneText(call.engine.recognizer().model().get())};
}

/// "traces": a page about the model, as a file.
Answer writeReport(const Call& call) {
    const Kit::Page page =
        Tool::modelPage(call.engine.recognizer(), tracesOf(call.arguments.at("traces")), {});
    return {Json::object(), page.html("vesk " VESK_VERSION)};
}

/// "css": the plots' colours on a light and on a dark page.
Answer colours(const Call& /*call*/) { return {{{"css", Kit::plotColours()}}}; }

}  // namespace Vesk::Studio
