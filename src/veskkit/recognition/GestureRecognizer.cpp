#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/internal/LogProbability.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::logProbability;
using Vesk::ML::GestureScore;
using Vesk::ML::Recognition;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

double marginOf(const GestureScore& score, double threshold) {
    if (!(score.weightedProbability > 0.0)) return -infinity;
    if (threshold == 0.0) return infinity;
    return std::log(score.weightedProbability) - std::log(threshold);
}

/// The gesture that the verdict is about: the winner, or the likeliest where none won.
std::size_t decisiveGesture(const Recognition& verdict, const std::vector<double>& logs) {
    if (verdict.winner >= 0) return static_cast<std::size_t>(verdict.winner);
    return static_cast<std::size_t>(std::max_element(logs.begin(), logs.end()) - logs.begin());
}

Rejection reasonOf(const Recognition& verdict, const GestureScore& likeliest) {
    if (verdict.winner >= 0) return Rejection::None;
    if (!(likeliest.probability > 0.0)) return Rejection::ZeroProbability;
    return likeliest.weightedProbability > verdict.threshold ? Rejection::LastState
                                                             : Rejection::Threshold;
}

}  // namespace

const char* toString(Rejection reason) {
    switch (reason) {
        case Rejection::None: return "";
        case Rejection::TooShort: return "too short";
        case Rejection::ZeroProbability: return "zero probability";
        case Rejection::Threshold: return "threshold";
        case Rejection::LastState: return "last state";
    }
    return "";
}

std::string answerAt(const std::vector<Answer>& answers, double logRatio) {
    const auto below = std::partition_point(
        answers.begin(), answers.end(),
        [logRatio](const Answer& answer) { return answer.logRatio > logRatio; });
    return below == answers.begin() ? "" : std::prev(below)->gesture;
}

GestureRecognizer::GestureRecognizer(RecognitionModel model, Preparation preparation,
                                     const std::string& source)
    : owned(std::move(model)), resampler(preparation), names(owned.gestureNames()) {
    requireSoundModel(owned.get(), source);
    quantizer.setCodebook(owned.get().codebook);
    for (const auto& gesture : owned.gestures()) {
        const auto name = std::find(names.begin(), names.end(), gesture->name);
        nameOf.push_back(static_cast<std::size_t>(name - names.begin()));
    }
}

std::vector<int> GestureRecognizer::symbols(const Trace& trace) const {
    return quantizer.quantize(resampler.resample(trace), owned.get().proxFilterThreshold,
                              owned.get().rotationAllowed);
}

Result GestureRecognizer::recognize(const Trace& trace) const {
    return recognizeSymbols(symbols(trace));
}

std::vector<Answer> GestureRecognizer::answers(const Trace& trace) const {
    const Recognition verdict = owned.get().evaluate(symbols(trace));
    const double weights =
        std::log(owned.get().modelTransitionProb) - std::log(owned.get().gestureTransitionProb);
    struct Candidate {
        double logRatio;
        double probability;
        std::size_t gesture;
    };
    std::vector<Candidate> candidates;
    for (std::size_t i = 0; i < verdict.gestures.size(); ++i) {
        const GestureScore& score = verdict.gestures[i];
        const double weighted = std::min(score.weightedProbability, score.weightedGamma);
        if (!(weighted > 0.0)) continue;
        const double logRatio = verdict.threshold == 0.0
                                    ? infinity
                                    : std::log(weighted) - std::log(verdict.threshold) + weights;
        candidates.push_back({logRatio, score.probability, i});
    }
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const Candidate& x, const Candidate& y) { return x.logRatio > y.logRatio; });
    std::vector<Answer> answers;
    double likeliest = 0.0;
    for (const Candidate& candidate : candidates) {
        if (!(candidate.probability > likeliest)) continue;
        likeliest = candidate.probability;
        answers.push_back({candidate.logRatio, owned.gestures()[candidate.gesture]->name});
    }
    return answers;
}

Result GestureRecognizer::recognize(const Points& points) const {
    Trace trace;
    trace.points = points;
    return recognize(trace);
}

Result GestureRecognizer::recognizeSymbols(const std::vector<int>& symbols) const {
    const int M = static_cast<int>(quantizer.codebook.size());
    for (const int symbol : symbols) {
        if (symbol >= 0 && symbol < M) continue;
        throw InputError(joined("found the symbol ", symbol, ", expected 0 to ", M - 1));
    }
    Result result;
    const Recognition verdict = owned.get().evaluate(symbols);
    if (!verdict.longEnough) return result;

    const auto& gestures = owned.gestures();
    std::vector<double> logs(gestures.size());
    std::vector<double> best(names.size(), -infinity);
    for (std::size_t i = 0; i < gestures.size(); ++i) {
        logs[i] = logProbability(verdict.gestures[i].probability, *gestures[i], symbols);
        best[nameOf[i]] = std::max(best[nameOf[i]], logs[i]);
    }
    for (std::size_t n = 0; n < names.size(); ++n) result.scores.push_back({names[n], best[n]});
    std::stable_sort(
        result.scores.begin(), result.scores.end(),
        [](const Score& x, const Score& y) { return x.logProbability > y.logProbability; });

    const std::size_t decisive = decisiveGesture(verdict, logs);
    result.rejection = reasonOf(verdict, verdict.gestures[decisive]);
    result.margin = marginOf(verdict.gestures[decisive], verdict.threshold);
    if (result.recognized()) result.gesture = gestures[decisive]->name;
    return result;
}

}  // namespace Vesk::Kit
