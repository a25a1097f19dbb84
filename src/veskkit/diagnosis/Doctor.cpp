#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/training/GestureTrainer.h>

#include <algorithm>
#include <map>
#include <string>

namespace Vesk::Kit {

using internal::Examination;
using internal::ShapedTrace;

namespace {

constexpr std::size_t mostParts = 5;
constexpr std::size_t fewestParts = 3;

/// Every sample recognised by models trained on the other parts; samples of gestures that have
/// fewer than three are left out. `Outcome::trace` is a place in the list of samples.
std::vector<Outcome> crossValidate(const Examination& examination,
                                   const std::vector<ShapedTrace>& samples,
                                   const DoctorOptions& options, const DoctorObserver& observer) {
    std::map<std::string, std::size_t> counts;
    for (const ShapedTrace& sample : samples) ++counts[sample.gesture];
    std::size_t parts = mostParts;
    std::vector<Trace> traces;
    std::vector<std::size_t> places;
    for (std::size_t s = 0; s < samples.size(); ++s) {
        const std::size_t count = counts[samples[s].gesture];
        if (count < fewestParts) continue;
        parts = std::min(parts, count);
        traces.push_back(examination.traces[samples[s].trace]);
        traces.back().gesture = samples[s].gesture;
        places.push_back(s);
    }
    if (traces.empty()) return {};
    EvaluationOptions settings{options.training, false};
    settings.training.calibrate = false;
    // Models that learnt to tell drawings apart are sure of differences that are none.
    settings.training.discrimination = 0;
    settings.training.skipBad = true;
    std::vector<Outcome> outcomes =
        evaluate(traces, stratifiedFolds(traces, parts, options.seed), settings,
                 [&](const EvaluationProgress& progress) {
                     if (observer) {
                         observer((static_cast<double>(progress.fold) + progress.share) /
                                  static_cast<double>(progress.folds));
                     }
                 });
    for (Outcome& outcome : outcomes) outcome.trace = places[outcome.trace];
    return outcomes;
}

}  // namespace

std::vector<Finding> diagnose(const std::vector<Trace>& traces, const DoctorOptions& options,
                              const DoctorObserver& observer) {
    const GestureTrainer checked(options.training);
    Examination examination(traces);
    examineLabels(examination);
    examineCounts(examination);
    examinePaths(examination);
    examineDuplicates(examination);

    const std::vector<ShapedTrace> samples = shapedTraces(examination);
    const std::vector<internal::Neighbours> neighbours =
        neighboursOf(samples, options.training.threads);
    if (options.crossValidation) {
        const std::vector<Outcome> outcomes =
            crossValidate(examination, samples, options, observer);
        examineLabelling(examination, samples, neighbours, outcomes);
        examinePairs(examination, samples, outcomes);
    } else {
        examineLabelling(examination, samples, neighbours);
    }
    examineOutliers(examination, samples, neighbours);
    sortFindings(examination.findings);
    return std::move(examination.findings);
}

}  // namespace Vesk::Kit
