#ifndef VESK_VESKKIT_RECOGNITION_GESTURERECOGNIZER_H
#define VESK_VESKKIT_RECOGNITION_GESTURERECOGNIZER_H

#include <vesk/quantizer/VectorQuantizer2D.h>
#include <veskkit/recognition/RecognitionModel.h>
#include <veskkit/traces/Resampler.h>
#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// Why a trace was not recognised.
enum class Rejection {
    None,             ///< it was recognised
    TooShort,         ///< no direction, or fewer than two symbols
    ZeroProbability,  ///< no gesture model can produce it, or all probabilities underflow
    Threshold,        ///< the likeliest gesture does not beat the threshold model
    LastState         ///< it does, but the trace does not end in that gesture's last state
};

/// The reason in words: "too short", "zero probability", "threshold", "last state"; "" for None.
const char* toString(Rejection reason);

/// How well one gesture explains a trace.
struct Score {
    std::string gesture;    ///< each name once, with its best sub-model
    double logProbability;  ///< natural log of P(symbols | gesture); minus infinity for 0
};

/// What a recogniser makes of one trace.
struct Result {
    std::string gesture;  ///< the recognised gesture's name; empty where rejected
    Rejection rejection = Rejection::TooShort;  ///< None where recognised
    std::vector<Score> scores;  ///< best first, equal ones in the model's order; empty if TooShort

    /// How far the winner (where rejected: the likeliest gesture) clears the threshold, as a
    /// natural logarithm: ln(weighted probability / threshold). Positive where it does, plus
    /// infinity over a threshold of 0, minus infinity for a probability of 0 and if TooShort.
    double margin = -std::numeric_limits<double>::infinity();

    /// Whether a gesture was recognised.
    bool recognized() const { return rejection == Rejection::None; }
};

/// A gesture that is the answer where the acceptance ratio R is below a bound.
struct Answer {
    double logRatio;      ///< the bound's natural logarithm
    std::string gesture;  ///< its name
};

/// The answer at a ratio whose natural logarithm is given, of `GestureRecognizer::answers`; empty
/// where the trace is rejected. O(log answers).
std::string answerAt(const std::vector<Answer>& answers, double logRatio);

/// Recognises traces with a trained model: prepares the trace, takes its symbols with the model's
/// own codebook and quantiser settings, and asks the model.
///
/// The verdict is the one of RecognitionModelHMM::check on the same symbols. Scores are natural
/// logarithms of the plain probabilities; where these underflow, of the scaled pass.
///
/// Owns its model. Immutable; const calls from any number of threads at once.
class GestureRecognizer {
public:
    /// InputError where the model is not sound (ModelCheck.h), prefixed with `source`: the file
    /// that the model comes from, say. InputError as Resampler for the preparation. O(parameters).
    explicit GestureRecognizer(RecognitionModel model, Preparation preparation = {},
                               const std::string& source = "model");

    /// The model that it recognises with.
    const RecognitionModel& model() const { return owned; }

    /// How it prepares traces.
    const Preparation& preparation() const { return resampler.preparation(); }

    /// The symbols of a trace, each an index into the model's codebook; empty where it has no
    /// direction. InputError, naming the trace, for positions with fewer than two numbers or with
    /// non-finite ones. O(positions + (P + M) log M), P prepared positions, M directions.
    std::vector<int> symbols(const Trace& trace) const;

    /// Recognises a trace. InputError as `symbols`. O(T (N^2 + sum of squared gesture sizes)), T
    /// symbols, N states of the threshold model.
    Result recognize(const Trace& trace) const;

    /// What the answers would be at other acceptance ratios R: how many times as likely as the
    /// threshold model a gesture has to be, as a whole and in its last state. By falling ratio;
    /// each gesture is likelier than the one before. R is the transition probability's; what is in
    /// pi stays. Empty for a trace that is never recognised. Errors and cost as `recognize`.
    std::vector<Answer> answers(const Trace& trace) const;

    /// Recognises positions in memory: the same for a trace of nothing else.
    Result recognize(const Points& points) const;

    /// Recognises a symbol sequence, at the same cost. InputError for a symbol that is not in the
    /// codebook.
    Result recognizeSymbols(const std::vector<int>& symbols) const;

private:
    RecognitionModel owned;
    Resampler resampler;
    Vesk::ML::VectorQuantizer2D quantizer;
    std::vector<std::string> names;   ///< each gesture's name once
    std::vector<std::size_t> nameOf;  ///< per gesture model its index in `names`
};

}  // namespace Vesk::Kit

#endif
