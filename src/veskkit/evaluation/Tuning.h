#ifndef VESK_VESKKIT_EVALUATION_TUNING_H
#define VESK_VESKKIT_EVALUATION_TUNING_H

#include <veskkit/evaluation/TradeOff.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// A training option that is tuned, and the values that are tried.
struct TunedOption {
    std::string name;            ///< as in messages: "symbols"
    std::vector<double> values;  ///< that are tried, in this order

    /// Puts a value into the options.
    void (*set)(TrainingOptions&, double);
};

/// symbols 16, 24, 32, 48; states 16, 24, 32, 40, 44; delta 1, 2; sub-models 1, 4, 8; smoothing 15,
/// 22, 30, 40 degrees.
std::vector<TunedOption> usualTunedOptions();

/// Where a tuning begins, what it tries, and what it is asked for.
struct TuningOptions {
    TrainingOptions training;                                ///< where the search begins
    std::vector<TunedOption> options = usualTunedOptions();  ///< that are gone through

    /// Share of the unknown gestures' traces that may be accepted, 0 to 1.
    double falseAccept = 0.02;

    /// Most times that all options are gone through, at least 1.
    int rounds = 3;

    /// Carries out the evaluation of one setting on the folds, as `evaluate` does, and does so
    /// where unset: for hosts that spread the folds over processes.
    std::function<std::vector<Outcome>(const EvaluationOptions&)> evaluation = {};
};

/// One setting and what it came to in cross-validation.
struct Trial {
    std::string change;        ///< from the best one before: "states 24"; "start" of the first
    TrainingOptions training;  ///< with the change
    TradeOffPoint result;      ///< at the least ratio that keeps the share asked for
    bool adopted;              ///< better than all before by more than chance
};

/// What a tuning found, and how.
struct TuningResult {
    TrainingOptions training;       ///< the best one, with its ratio in `acceptanceRatio`
    std::vector<Trial> trials;      ///< in order, at least the start
    std::size_t best;               ///< the trial of that training
    std::vector<Outcome> outcomes;  ///< of that trial: for tradeOffOf
};

/// How far a tuning is.
struct TuningProgress {
    int round;     ///< that is worked on, from 1; 0 while the start is tried
    int rounds;    ///< at the most
    double share;  ///< of the round, 0 to 1
};
/// Told while a setting is tried and after it. As TrainingObserver.
using TuningObserver = std::function<void(const TuningProgress&)>;

/// Looks for the training options that recognise most traces of the folds' tests right while they
/// accept no more unknown gestures than asked for: one option after the other is tried with each
/// of its values, the best one kept, until a round changes nothing. A value is adopted where the
/// traces that only it gets right outnumber those that only the best one before does by more than
/// one standard error of that difference; a setting that keeps the share of unknown gestures is
/// better than one that cannot. Training and tests are those of `evaluate`: nothing of a fold's
/// test traces gets into its models, and what is not in the folds gets into nothing.
///
/// Same bits at any number of threads. InputError as `evaluate`, and for options out of range. At
/// most 1 + rounds * (values in all) evaluations, without templates, each calibrated as its
/// training is (`TrainingOptions::calibrate`); the outcomes of two are held.
TuningResult tune(const std::vector<Trace>& traces, const std::vector<Fold>& folds,
                  const TuningOptions& options, const TuningObserver& observer = {});

}  // namespace Vesk::Kit

#endif
