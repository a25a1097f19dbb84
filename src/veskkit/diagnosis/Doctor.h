#ifndef VESK_VESKKIT_DIAGNOSIS_DOCTOR_H
#define VESK_VESKKIT_DIAGNOSIS_DOCTOR_H

#include <veskkit/diagnosis/Finding.h>
#include <veskkit/traces/Trace.h>
#include <veskkit/training/TrainingOptions.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace Vesk::Kit {

/// How a set of traces is examined.
struct DoctorOptions {
    /// How models are trained for the cross-validation: each by itself (`discrimination` counts
    /// nothing). Nothing is calibrated.
    TrainingOptions training;

    /// Whether traces are recognised by models trained without them, which takes most of the time.
    /// Without it no confusable gestures are found, and fewer of the mislabelled traces.
    bool crossValidation = true;
    std::uint64_t seed = 1;  ///< draws the parts of the cross-validation
};

/// Told how far the examination is, from 0 to 1, by one thread at a time. As TrainingObserver.
using DoctorObserver = std::function<void(double)>;

/// What is wrong with a set of traces, in the order of `sortFindings`; nothing where all is well.
///
/// Traces that have a finding of their own (degenerate, or a copy) are not compared with others,
/// so that a trace has one finding at most. Traces whose label or points cannot be used are
/// findings, never errors. The same at any number of threads. O(n^2) time for n traces, and up to
/// five trainings. InputError for options as GestureTrainer.
std::vector<Finding> diagnose(const std::vector<Trace>& traces, const DoctorOptions& options = {},
                              const DoctorObserver& observer = {});

}  // namespace Vesk::Kit

#endif
