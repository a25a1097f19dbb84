#include <vesk/recognition/RecognitionModelHMM.h>

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Passes.h>
#include <vesk/hmm/internal/PlainPasses.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <utility>
#include <vector>

namespace Vesk::ML {
namespace {

using Sequence = Vesk::Math::VectorT<int>;

/// One more than the largest symbol: what every model's alphabet has to hold. Gestures of a damaged
/// file can have fewer symbols than the model they belong to.
std::int64_t alphabetOf(const Sequence& sequence) {
    assert(*std::min_element(sequence.begin(), sequence.end()) >= 0);
    return std::int64_t{*std::max_element(sequence.begin(), sequence.end())} + 1;
}

/// The rules of recognition. Tells `observer` the threshold, and for every gesture its weighted
/// probability and then its weighted gamma, in the order of the gestures.
template <typename Observer>
Recognition recognise(const RecognitionModelHMM& model, const Sequence& sequence,
                      Observer&& observer) {
    Recognition result;
    const auto T = static_cast<int>(sequence.size());
    if (T < 2) return result;
    result.longEnough = true;
    const int* o = sequence.data();
    const std::int64_t alphabet = alphabetOf(sequence);
    internal::Scratch scratch;
    const internal::Symbols symbols(scratch, o, T);

    double combined = 0.0;
    if (model.recognitionHMM != nullptr) {
        combined = internal::forwardLikelihood(
            internal::parametersFor(*model.recognitionHMM, alphabet, T), symbols, o, T);
    }
    result.threshold = combined * model.modelTransitionProb;
    observer.onThreshold(result.threshold);

    const double weight = model.gestureTransitionProb;
    double best = 0.0;
    result.gestures.reserve(model.gestures.size());
    std::vector<internal::Parameters> together;
    for (std::size_t i = 0; i < model.gestures.size(); i = result.gestures.size()) {
        together.clear();
        // Those whose tables are too small end the company of the ones before, which are told of
        // before the exception is thrown.
        std::size_t next = i;
        do {
            together.push_back(internal::parametersFor(*model.gestures[next], alphabet, T));
            ++next;
        } while (next < model.gestures.size() && together.size() < internal::passesTogether &&
                 internal::PassNeeds(*model.gestures[next], alphabet, T)
                     .coveredBy(*model.gestures[next]));

        for (const auto& [probability, inLastState] :
             internal::forwardResults(together, symbols, o, T)) {
            const std::size_t gesture = result.gestures.size();
            observer.onProbability(gesture, probability * weight);
            // gamma at the last time: beta is 1 there, so its denominator is the probability.
            const double gamma = internal::divide(inLastState, probability);
            observer.onGamma(gesture, gamma * weight);
            const bool accepted = probability > best && probability * weight > result.threshold &&
                                  weight * gamma > result.threshold;
            if (accepted) {
                best = probability;
                result.winner = static_cast<int>(gesture);
            }
            result.gestures.push_back(
                {probability, probability * weight, gamma * weight, accepted});
        }
    }
    return result;
}

struct Silent {
    void onThreshold(double) {}
    void onProbability(std::size_t, double) {}
    void onGamma(std::size_t, double) {}
};

/// Writes what is known before a gesture whose tables are too small.
struct Printing {
    void onThreshold(double threshold) { std::cout << "threshold = " << threshold << std::endl; }
    void onProbability(std::size_t gesture, double weighted) {
        std::cout << "prob[" << gesture << "] = " << weighted << std::endl;
    }
    void onGamma(std::size_t, double weighted) { std::cout << "gamma = " << weighted << std::endl; }
};

}  // namespace

double RecognitionModelHMM::forwardProb(Vesk::Math::VectorT<int> seq) {
    if (recognitionHMM == nullptr) return 0.0;
    const auto T = static_cast<int>(seq.size());
    return recognitionHMM->forwardProbability(std::move(seq), T);
}

std::string RecognitionModelHMM::check(Vesk::Math::VectorT<int> seq) {
    const Recognition result = recognise(*this, seq, Printing());
    if (result.winner < 0) return {};
    return gestures[static_cast<std::size_t>(result.winner)]->name;
}

Recognition RecognitionModelHMM::evaluate(const Vesk::Math::VectorT<int>& sequence) const {
    return recognise(*this, sequence, Silent());
}

}  // namespace Vesk::ML
