#ifndef VESK_VESKKIT_DIAGNOSIS_MODELDOCTOR_H
#define VESK_VESKKIT_DIAGNOSIS_MODELDOCTOR_H

#include <veskkit/diagnosis/Finding.h>
#include <veskkit/traces/Resampler.h>

#include <vesk/recognition/RecognitionModelHMM.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// What is wrong with a recognition model, whoever trained it, in the order of `sortFindings`.
///
/// Where the model is not sound (ModelCheck.h) that alone is told: what such a model would do
/// cannot be said. `symbols` is the length T of the sequences that it will be asked about, by
/// default that of a trace prepared by default. O(K N^2 (N + T)) for K gesture models of N states,
/// and two recognitions a gesture model.
std::vector<Finding> diagnoseModel(const Vesk::ML::RecognitionModelHMM& model,
                                   std::size_t symbols = Preparation().symbols());

/// The one finding about a model file that cannot be read; `problem` says why.
Finding unreadableModel(const std::string& problem);

}  // namespace Vesk::Kit

#endif
