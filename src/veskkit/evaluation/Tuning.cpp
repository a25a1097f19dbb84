#include <veskkit/evaluation/Tuning.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>

#include <cmath>
#include <utility>

namespace Vesk::Kit {

using internal::joined;

namespace {

/// One setting, tried.
struct Candidate {
    TrainingOptions training;
    std::vector<Outcome> outcomes;
    TradeOffPoint result;
};

bool isRight(const Outcome& outcome, double logRatio) {
    return answerAt(outcome.answers, logRatio) == outcome.expected;
}

class Tuning {
public:
    Tuning(const std::vector<Trace>& all, const std::vector<Fold>& parts, const TuningOptions& how,
           const TuningObserver& told)
        : traces(all), folds(parts), options(how), observer(told) {}

    TuningResult run() {
        for (const TunedOption& option : options.options) trialsARound += option.values.size();
        Candidate best = tried(options.training);
        result.trials.push_back({"start", best.training, best.result, true});
        for (round = 1; round <= options.rounds; ++round) {
            done = 0;
            bool changed = false;
            for (const TunedOption& option : options.options) {
                for (const double value : option.values) {
                    changed = tryValue(option, value, best) || changed;
                    ++done;
                }
            }
            if (!changed) break;
        }
        result.training = best.training;
        result.training.acceptanceRatio = best.result.ratio;
        result.outcomes = std::move(best.outcomes);
        return std::move(result);
    }

private:
    Candidate tried(const TrainingOptions& training) const {
        EvaluationOptions settings;
        settings.training = training;
        settings.templates = false;
        // Any will do: the outcomes hold the answers at all of them.
        settings.training.acceptanceRatio = 1.0;
        Candidate candidate{training, {}, {}};
        candidate.outcomes = outcomesOf(settings);
        candidate.result =
            tradeOffAt(candidate.outcomes, ratioFor(candidate.outcomes, options.falseAccept));
        return candidate;
    }

    std::vector<Outcome> outcomesOf(const EvaluationOptions& settings) const {
        if (options.evaluation) {
            tell(0.0);
            return options.evaluation(settings);
        }
        return evaluate(traces, folds, settings, [this](const EvaluationProgress& progress) {
            tell((static_cast<double>(progress.fold) + progress.share) /
                 static_cast<double>(progress.folds));
        });
    }

    /// Whether the value was adopted.
    bool tryValue(const TunedOption& option, double value, Candidate& best) {
        TrainingOptions training = best.training;
        option.set(training, value);
        const std::string change = joined(option.name, ' ', value);
        if (wasTried(change, training)) return false;
        Candidate candidate = tried(training);
        const bool adopted = isBetter(candidate, best);
        result.trials.push_back({change, candidate.training, candidate.result, adopted});
        if (!adopted) return false;
        best = std::move(candidate);
        result.best = result.trials.size() - 1;
        return true;
    }

    /// Since the last change for the better: the same value of the same option.
    bool wasTried(const std::string& change, const TrainingOptions& training) const {
        for (std::size_t i = result.best; i < result.trials.size(); ++i) {
            if (result.trials[i].change == change) return true;
        }
        return sameSettings(training, result.trials[result.best].training);
    }

    static bool sameSettings(const TrainingOptions& x, const TrainingOptions& y) {
        return x.symbols == y.symbols && x.states == y.states && x.delta == y.delta &&
               x.subModels == y.subModels && x.smoothing == y.smoothing;
    }

    bool keepsUnknownOut(const Candidate& candidate) const {
        return candidate.result.unknownAccepted.value() <= options.falseAccept;
    }

    bool isBetter(const Candidate& candidate, const Candidate& best) const {
        if (keepsUnknownOut(candidate) != keepsUnknownOut(best)) return keepsUnknownOut(candidate);
        const double ratio = std::log(candidate.result.ratio);
        const double ratioBefore = std::log(best.result.ratio);
        double gained = 0.0;
        double lost = 0.0;
        for (std::size_t i = 0; i < best.outcomes.size(); ++i) {
            const bool right = isRight(candidate.outcomes[i], ratio);
            const bool rightBefore = isRight(best.outcomes[i], ratioBefore);
            gained += right && !rightBefore ? 1.0 : 0.0;
            lost += rightBefore && !right ? 1.0 : 0.0;
        }
        return gained - lost > std::sqrt(gained + lost);
    }

    void tell(double share) const {
        if (!observer) return;
        const double all = round == 0 ? 1.0 : static_cast<double>(trialsARound);
        observer({round, options.rounds, (static_cast<double>(done) + share) / all});
    }

    const std::vector<Trace>& traces;
    const std::vector<Fold>& folds;
    const TuningOptions& options;
    const TuningObserver& observer;
    TuningResult result{{}, {}, 0, {}};
    std::size_t trialsARound = 0;
    std::size_t done = 0;
    int round = 0;
};

}  // namespace

std::vector<TunedOption> usualTunedOptions() {
    return {
        {"symbols",
         {16, 24, 32, 48},
         [](TrainingOptions& it, double value) { it.symbols = static_cast<int>(value); }},
        {"states",
         {16, 24, 32, 40, 44},
         [](TrainingOptions& it, double value) { it.states = static_cast<int>(value); }},
        {"delta",
         {1, 2},
         [](TrainingOptions& it, double value) { it.delta = static_cast<int>(value); }},
        {"sub-models",
         {1, 4, 8},
         [](TrainingOptions& it, double value) { it.subModels = static_cast<int>(value); }},
        {"smoothing",
         {15, 22, 30, 40},
         [](TrainingOptions& it, double value) { it.smoothing = value; }},
    };
}

TuningResult tune(const std::vector<Trace>& traces, const std::vector<Fold>& folds,
                  const TuningOptions& options, const TuningObserver& observer) {
    if (!(options.falseAccept >= 0.0 && options.falseAccept <= 1.0)) {
        throw InputError(
            joined("found ", options.falseAccept, " for false acceptance, expected 0 to 1"));
    }
    if (options.rounds < 1) {
        throw InputError(joined("found ", options.rounds, " for rounds, expected at least 1"));
    }
    return Tuning(traces, folds, options, observer).run();
}

}  // namespace Vesk::Kit
