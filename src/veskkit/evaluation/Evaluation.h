#ifndef VESK_VESKKIT_EVALUATION_EVALUATION_H
#define VESK_VESKKIT_EVALUATION_EVALUATION_H

#include <veskkit/evaluation/Folds.h>
#include <veskkit/evaluation/Share.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/traces/Trace.h>
#include <veskkit/training/TrainingOptions.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// What one method made of a test trace. Names are those in a model, blanks as underscores.
struct Verdict {
    std::string gesture;    ///< the answer; empty where rejected
    std::string likeliest;  ///< the best gesture, accepted or not; empty where there is none

    /// The answer where the trace's own gesture was never trained: empty is right. Nothing where
    /// that was not asked, or no gesture would have been left.
    std::optional<std::string> asUnknown;
};

/// What became of one test trace.
struct Outcome {
    std::size_t trace;     ///< its place in the list of traces
    std::size_t fold;      ///< the one that tested it
    std::string expected;  ///< its own gesture
    Verdict models;        ///< of the hidden Markov models
    Verdict templates;     ///< of the TemplateMatcher, the yardstick
    Rejection rejection;   ///< why the models rejected it
    double margin;         ///< as in Result, a natural logarithm

    /// What the models would answer at other acceptance ratios, single gestures asked for more as
    /// they are: GestureRecognizer::answers, but by the whole of R
    /// (TrainingOptions::acceptanceRatio).
    std::vector<Answer> answers = {};

    /// The same where the trace's own gesture was never trained; empty where that was not asked.
    std::vector<Answer> answersAsUnknown = {};

    /// The likeliest gesture of the models but its own; empty where one of the two was not trained
    /// or the trace is too short.
    std::string rival = {};

    /// How much likelier than the rival its own gesture is: the difference of natural logarithms,
    /// negative where the trace is taken for the rival, 0 where there is none.
    double lead = 0.0;
};

/// What an evaluation consists of besides the folds.
struct EvaluationOptions {
    TrainingOptions training;  ///< of every fold

    /// Whether each gesture is also taken for unknown in turn (`Verdict::asUnknown`). What was
    /// trained for the fold is put together without it, with the same acceptance ratio.
    bool unknownGestures = true;

    /// Whether the template matcher is asked too; its verdicts are empty where not.
    bool templates = true;
};

/// How far an evaluation is.
struct EvaluationProgress {
    std::size_t fold;   ///< that is worked on, from 0
    std::size_t folds;  ///< in all
    double share;       ///< of the fold, 0 to 1
};

/// As TrainingObserver.
using EvaluationObserver = std::function<void(const EvaluationProgress&)>;

/// Trains on each fold's training traces and recognises its test traces, with hidden Markov models
/// and with the template matcher: nothing of a test trace gets into what recognises it. Outcomes
/// are in the order of the folds and of their test traces; the same at any number of threads.
/// Places in folds have to be those of traces, which is not checked. InputError as GestureTrainer,
/// and for a test trace without a label. Time: for each fold a training, and its rounds of
/// discrimination again for each gesture taken for unknown; for each test trace two recognitions,
/// and two more where its gesture is.
std::vector<Outcome> evaluate(const std::vector<Trace>& traces, const std::vector<Fold>& folds,
                              const EvaluationOptions& options = {},
                              const EvaluationObserver& observer = {});

/// How often a method was right. The first four shares are of all traces.
struct Rates {
    Share argMax;           ///< the likeliest gesture is the right one, accepted or not
    Share correct;          ///< recognised as what they are
    Share wrong;            ///< recognised as something else
    Share rejected;         ///< not recognised
    Share unknownAccepted;  ///< of the traces taken for unknown, recognised as anything
};

/// Of one method: &Outcome::models or &Outcome::templates. O(outcomes).
Rates ratesOf(const std::vector<Outcome>& outcomes, Verdict Outcome::*method);

/// How often each gesture got each answer.
struct Confusion {
    std::vector<std::string> gestures;  ///< in the order of their names

    /// [expected][answer] by their places in `gestures`; the last column counts rejections.
    std::vector<std::vector<std::size_t>> counts;

    /// Of the traces of a gesture, by its place in `gestures`, those recognised as it. O(gestures).
    Share recall(std::size_t gesture) const;

    /// Of the traces recognised as a gesture, by its place, those that are. O(gestures).
    Share precision(std::size_t gesture) const;
};

/// Counts the verdicts of the models or of the templates: `&Outcome::models`,
/// `&Outcome::templates`. O(n log k + k^2), n outcomes of k gestures.
Confusion confusionOf(const std::vector<Outcome>& outcomes, Verdict Outcome::*method);

}  // namespace Vesk::Kit

#endif
