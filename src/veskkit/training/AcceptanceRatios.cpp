#include <veskkit/training/internal/AcceptanceRatios.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Vesk::Kit::internal {

namespace {

constexpr double sacrificeOfOneGesture = 0.5;
constexpr double slackOfOneGesture = 2.0;  // equal traces must not stand right on the ratio
constexpr std::size_t fewestOwnTraces = 50;
constexpr double leastPrior = 1.0 / 2000.0;  // beyond, what is known is lost rather
constexpr double ratioOfSingleModels = 1e3;
constexpr double ratioOfSubModels = 1e4;

/// The value that all but `share` of the values reach.
double quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size()));
    return values[std::min(index, values.size() - 1)];
}

/// Which of the numbers of turned copies.
std::size_t chosenOf(std::size_t numbers, const std::vector<CalibrationAnswers>& runs) {
    double gained = 0.0;
    double lost = 0.0;
    for (const CalibrationAnswers& run : runs) {
        gained += static_cast<double>(run.gained);
        lost += static_cast<double>(run.lost);
    }
    return lost - gained > std::sqrt(lost + gained) ? 0 : numbers - 1;
}

/// The values of all runs, gesture by gesture.
LogRatios together(const std::vector<CalibrationAnswers>& runs,
                   std::vector<LogRatios> CalibrationAnswers::*values, std::size_t chosen) {
    LogRatios all;
    for (const CalibrationAnswers& run : runs) {
        for (const auto& [gesture, own] : (run.*values)[chosen]) {
            all[gesture].insert(all[gesture].end(), own.begin(), own.end());
        }
    }
    return all;
}

/// R where the options set none and nothing was calibrated.
double ordinaryRatio(const std::vector<GestureModels>& gestures) {
    const bool single = std::all_of(gestures.begin(), gestures.end(),
                                    [](const GestureModels& it) { return it.fine.size() == 1; });
    return single ? ratioOfSingleModels : ratioOfSubModels;
}

}  // namespace

CalibratedRatios ratiosOf(const std::vector<CalibrationAnswers>& runs,
                          const std::vector<int>& turns, double falseRejection) {
    const std::size_t chosen = chosenOf(turns.size(), runs);
    CalibratedRatios result;
    result.turns = turns[chosen];

    const LogRatios ratios = together(runs, &CalibrationAnswers::ratios, chosen);
    const LogRatios leads = together(runs, &CalibrationAnswers::leads, chosen);
    std::vector<double> all;
    double least = std::numeric_limits<double>::infinity();
    for (const auto& [gesture, own] : ratios) {
        all.insert(all.end(), own.begin(), own.end());
        least = std::min(least, quantile(own, sacrificeOfOneGesture));
    }
    if (all.empty()) return result;
    least = std::min(least - std::log(slackOfOneGesture), quantile(all, falseRejection));
    result.all = std::clamp(std::exp(least), leastRatio, largestRatio);
    for (const auto& [gesture, own] : ratios) {
        if (own.size() < fewestOwnTraces) continue;
        const double bearable = result.all * std::exp(quantile(leads.at(gesture), falseRejection));
        result.own[gesture] = std::min(std::exp(quantile(own, falseRejection)), bearable);
    }
    return result;
}

bool anyMayHaveItsOwnRatio(const std::vector<GestureSamples>& gestures) {
    return std::any_of(gestures.begin(), gestures.end(), [](const GestureSamples& it) {
        return it.samples.size() >= fewestOwnTraces;
    });
}

Acceptance acceptanceFor(const std::vector<GestureModels>& gestures, const TrainingOptions& options,
                         const CalibratedRatios& calibrated, bool runsAreUsers) {
    const double customary = options.acceptanceRatio.value_or(ordinaryRatio(gestures));
    if (!(calibrated.all > 0.0)) return {customary};
    const double wanted = calibrated.all;
    // Beyond what a file's transition probability holds only where some gesture has many traces:
    // found on few all round it would be chance.
    const double found = calibrated.own.empty() ? storedRatio(wanted) : wanted;
    // Of other people's traces nothing is known without users: what is customary stays.
    if (!runsAreUsers) return {std::min(customary, found)};
    Acceptance acceptance{options.acceptanceRatio.value_or(found)};
    for (const auto& [gesture, own] : calibrated.own) {
        const double asked = std::clamp(own, wanted, wanted / leastPrior);
        if (asked > wanted) acceptance.priors[gesture] = wanted / asked;
    }
    return acceptance;
}

}  // namespace Vesk::Kit::internal
