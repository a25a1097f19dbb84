#include <veskkit/internal/Parallel.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/recognition/TurnedCopies.h>
#include <veskkit/training/KMedoids.h>
#include <veskkit/training/internal/Emissions.h>
#include <veskkit/training/internal/ModelTraining.h>
#include <veskkit/training/internal/Turns.h>

#include <vesk/recognition/RecognitionModelHMM.h>

#include <algorithm>
#include <limits>
#include <locale>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

namespace Vesk::Kit::internal {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::ML::TrainingStep;

namespace {

constexpr std::size_t manyTraces = 20;
constexpr int subModelsByDefault = 6;
constexpr double oneWayOfDrawing = 0.5;  ///< mean distance of shapes that one sub-model serves
constexpr std::size_t fewTraces = 5;
constexpr double smoothingByDefault = 22.0;
constexpr double smoothingOfFewTraces = 28.0;

/// p is stored with six digits: 1e5 / (1e5 + 1) is the last that is told from 1 by a fair margin.
constexpr double largestStoredRatio = 1e5;

using Sequences = std::vector<std::vector<int>>;

/// One iteration of the library's training; whether it was adopted.
bool iterate(LeftRightHMM& model, const Sequences& sequences) {
    bool accepted = false;
    model.trainMultiple(sequences, 1, [&accepted](const TrainingStep& step) {
        accepted = step.accepted;
        return true;
    });
    return accepted;
}

/// Takes rounding errors above 1 off, and subnormal numbers, which not every reader takes.
void cleanTransitions(std::vector<double>& a) {
    for (double& value : a) {
        value = value < std::numeric_limits<double>::min() ? 0.0 : std::min(value, 1.0);
    }
}

double meanLogLikelihood(const LeftRightHMM& model, const Sequences& sequences) {
    double sum = 0.0;
    std::size_t symbols = 0;
    for (const std::vector<int>& sequence : sequences) {
        sum += model.logLikelihood(sequence);
        symbols += sequence.size();
    }
    return sum / static_cast<double>(symbols);
}

/// Each as it is, and turned both ways.
Sequences withTurns(const Sequences& sequences, const std::vector<double>& codebook) {
    Sequences result = sequences;
    for (const Turn turn : {Turn::Forwards, Turn::Backwards}) {
        const std::vector<int> table = turnedSymbols(codebook, turn);
        for (const std::vector<int>& sequence : sequences) {
            result.push_back(replaced(sequence, table));
        }
    }
    return result;
}

Sequences sequencesOf(const std::vector<Sample>& samples) {
    Sequences result;
    result.reserve(samples.size());
    for (const Sample& sample : samples) result.push_back(sample.symbols);
    return result;
}

/// The gesture's sequences, one list a sub-model.
std::vector<Sequences> partition(const std::vector<Sample>& samples,
                                 const TrainingOptions& options) {
    const int fallback = samples.size() < manyTraces ? 1 : subModelsByDefault;
    const int most = options.subModels.value_or(fallback);
    if (most <= 1) return {sequencesOf(samples)};
    std::vector<const Points*> traces;
    for (const Sample& sample : samples) traces.push_back(&sample.trace->points);
    const Clustering clustering =
        clusterByShape(traces, static_cast<std::size_t>(most),
                       static_cast<std::size_t>(options.smallestSubModel), oneWayOfDrawing);
    std::vector<Sequences> parts;
    for (const std::vector<std::size_t>& members : clustering.members()) {
        Sequences part;
        for (const std::size_t i : members) part.push_back(samples[i].symbols);
        if (!part.empty()) parts.push_back(std::move(part));
    }
    return parts;
}

GestureReport reportOf(const GestureSamples& gesture) {
    std::set<std::string> users;
    for (const Sample& sample : gesture.samples) users.insert(sample.trace->user);
    return {gesture.gesture, gesture.label, gesture.samples.size(), users.size(), {}};
}

/// The gesture's fine models, one a way of drawing it.
std::vector<LeftRightHMM> trainFineModels(const GestureSamples& gesture,
                                          const std::vector<double>& codebook,
                                          const TrainingOptions& options, GestureReport& report) {
    const bool few = gesture.samples.size() <= fewTraces;
    const ModelSettings settings{
        options.states, options.delta,
        options.smoothing.value_or(few ? smoothingOfFewTraces : smoothingByDefault),
        gesture.samples.size() < manyTraces};
    std::vector<LeftRightHMM> models;
    for (const Sequences& part : partition(gesture.samples, options)) {
        TrainedModel trained = trainModel(part, codebook, settings, options);
        trained.model.name = gesture.gesture;
        report.subModels.push_back(trained.report);
        models.push_back(std::move(trained.model));
    }
    return models;
}

/// The staging fields of the model that the coarse models make together.
RecognitionModelHMM composeThreshold(std::vector<LeftRightHMM>& coarse) {
    std::vector<HMM*> pointers;
    pointers.reserve(coarse.size());
    for (LeftRightHMM& model : coarse) pointers.push_back(&model);
    RecognitionModelHMM composed(pointers, 1.0);
    composed.initialize();
    // Ours from here on: it was only needed for its parts.
    const std::unique_ptr<HMM> combined(composed.recognitionHMM);
    composed.recognitionHMM = nullptr;
    composed.gestures.clear();
    return composed;
}

}  // namespace

bool mayBeTurned(const GestureSamples& gesture) { return gesture.drawn >= manyTraces; }

double storedValue(double value) {
    std::stringstream text;
    text.imbue(std::locale::classic());
    // An allocation that fails on the way is not to pass for another value.
    text.exceptions(std::ios_base::badbit);
    text << value;
    double result = 0.0;
    text >> result;
    return result;
}

double storedRatio(double ratio) { return std::min(ratio, largestStoredRatio); }

double transitionProbability(double ratio, std::size_t K) {
    const double stored = storedRatio(ratio);
    return stored / (stored + static_cast<double>(K));
}

double acceptanceRatio(double p, std::size_t K) { return p * static_cast<double>(K) / (1.0 - p); }

TrainedModel trainModel(const Sequences& sequences, const std::vector<double>& codebook,
                        const ModelSettings& settings, const TrainingOptions& options) {
    const int M = static_cast<int>(codebook.size());
    TrainedModel result{LeftRightHMM(settings.states, M, settings.delta),
                        {sequences.size(), 0, 0.0}};
    LeftRightHMM& model = result.model;
    const Sequences turned = settings.turned ? withTurns(sequences, codebook) : Sequences();
    const Sequences& shown = settings.turned ? turned : sequences;
    model.estimate(HMM::EqualSegments, shown);
    if (options.firstEstimate == FirstEstimate::EvenCut) {
        model.b = evenCutEmissions(shown, settings.states, M);
    }
    floorEmissions(model.b, options.emissionFloor);
    while (result.report.iterations < options.iterations && iterate(model, shown)) {
        oddsToProbabilities(model.b);
        floorEmissions(model.b, options.emissionFloor);
        ++result.report.iterations;
    }
    smoothEmissions(model.b, codebook, settings.smoothing);
    cleanTransitions(model.a.data);
    result.report.logLikelihood = meanLogLikelihood(model, sequences);
    return result;
}

GestureModels trainGesture(const GestureSamples& gesture, const std::vector<double>& codebook,
                           const TrainingOptions& options) {
    const ModelSettings coarseSettings{options.thresholdStates, 1, options.thresholdSmoothing};
    GestureReport report = reportOf(gesture);
    std::vector<LeftRightHMM> fine = trainFineModels(gesture, codebook, options, report);
    TrainedModel coarse =
        trainModel(sequencesOf(gesture.samples), codebook, coarseSettings, options);
    return {std::move(fine), std::move(coarse.model), std::move(report), mayBeTurned(gesture)};
}

std::vector<GestureModels> trainGestures(const std::vector<GestureSamples>& gestures,
                                         const std::vector<double>& codebook,
                                         const TrainingOptions& options,
                                         const std::function<void()>& trained) {
    std::vector<std::optional<GestureModels>> places(gestures.size());
    std::mutex telling;
    bool stopped = false;
    parallelFor(gestures.size(), options.threads, [&](std::size_t i) {
        places[i] = trainGesture(gestures[i], codebook, options);
        const std::lock_guard<std::mutex> lock(telling);
        // Whoever threw is not told of what was under way.
        if (stopped) return;
        stopped = true;
        trained();
        stopped = false;
    });
    std::vector<GestureModels> models;
    models.reserve(places.size());
    for (std::optional<GestureModels>& place : places) models.push_back(std::move(*place));
    return models;
}

RecognitionModel composeRecognitionModel(const std::vector<GestureModels>& gestures,
                                         const std::vector<double>& codebook,
                                         const Acceptance& acceptance, int turns,
                                         const std::string& name) {
    RecognitionModel result;
    std::vector<LeftRightHMM> coarse;
    const double rest = storedRatio(acceptance.ratio) / acceptance.ratio;
    for (const GestureModels& gesture : gestures) {
        const auto prior = acceptance.priors.find(gesture.report.gesture);
        const double weight = prior == acceptance.priors.end() ? 1.0 : prior->second;
        std::vector<LeftRightHMM> fine = gesture.fine;
        for (LeftRightHMM& model : fine) {
            for (double& first : model.pi) first *= weight * rest;
            result.add(model);
        }
        const int copies = gesture.mayBeTurned ? turns : 0;
        for (const LeftRightHMM& model : fine) {
            for (LeftRightHMM& copy : turnedCopies(model, codebook, copies)) {
                result.add(std::move(copy));
            }
        }
        coarse.push_back(gesture.coarse);
    }
    RecognitionModelHMM settings = composeThreshold(coarse);
    settings.name = name;
    settings.codebook = codebook;
    settings.proxFilterThreshold = 0.0f;
    settings.rotationAllowed = false;
    settings.modelTransitionProb =
        transitionProbability(acceptance.ratio, result.gestures().size());
    result.build(settings);
    return asStored(result);
}

}  // namespace Vesk::Kit::internal
