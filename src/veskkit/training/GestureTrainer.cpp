#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/TurnedCopies.h>
#include <veskkit/training/GestureTrainer.h>
#include <veskkit/training/internal/Calibration.h>
#include <veskkit/training/internal/TrainedSet.h>

#include <cstddef>
#include <functional>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

template <typename T>
void requireRange(const char* option, T value, T least, T most) {
    if (value >= least && value <= most) return;
    throw InputError(joined("found ", value, " for ", option, ", expected ", least, " to ", most));
}

void requireOptions(const TrainingOptions& options) {
    if (!isStorableName(options.name)) {
        throw InputError(joined("found the model name ", quoted(options.name),
                                ", expected one word without blanks"));
    }
    requireRange("symbols", options.symbols, 2, 360);
    if (!options.codebook.empty()) {
        requireRange("directions of the codebook", options.codebook.size(), std::size_t{2},
                     std::size_t{360});
        for (const double direction : options.codebook) {
            if (direction >= 0.0 && direction < 360.0) continue;
            throw InputError(joined("found the direction ", direction,
                                    " in the codebook, expected 0 to less than 360"));
        }
    }
    requireRange("states", options.states, 2, 200);
    requireRange("delta", options.delta, 1, options.states - 1);
    if (options.subModels) requireRange("sub-models", *options.subModels, 1, 16);
    requireRange("smallest sub-model", options.smallestSubModel, 1, 1000000);
    requireRange("iterations", options.iterations, 0, 1000);
    requireRange("emission floor", options.emissionFloor, 1e-12, 0.1);
    if (options.smoothing) requireRange("smoothing", *options.smoothing, 0.0, 180.0);
    requireRange("rounds of discrimination", options.discrimination, 0, 1000);
    if (options.turns) requireRange("turned copies", *options.turns, 0, mostTurns);
    requireRange("threshold states", options.thresholdStates, 2, 200);
    requireRange("threshold smoothing", options.thresholdSmoothing, 0.0, 180.0);
    if (options.acceptanceRatio) {
        requireRange("acceptance ratio", *options.acceptanceRatio, internal::leastRatio,
                     internal::largestRatio);
    }
    requireRange("false rejection", options.falseRejection, 0.0, 0.5);
    const Resampler valid(options.preparation);
}

}  // namespace

GestureTrainer::GestureTrainer(TrainingOptions options) : settings(std::move(options)) {
    requireOptions(settings);
}

TrainingResult GestureTrainer::train(const std::vector<Trace>& traces,
                                     const TrainingObserver& observer) const {
    std::vector<const Trace*> borrowed;
    borrowed.reserve(traces.size());
    for (const Trace& trace : traces) borrowed.push_back(&trace);
    internal::TrainingSteps steps(observer);
    internal::TrainedSet set = internal::trainSet(borrowed, settings, steps);
    TrainingResult result{set.compose(std::ref(steps)), std::move(set.report)};
    result.report.acceptanceRatio = set.acceptance.ratio;
    return result;
}

}  // namespace Vesk::Kit
