#ifndef VESK_FUZZ_LOADEDMODEL_H
#define VESK_FUZZ_LOADEDMODEL_H

#include <vesk/recognition/RecognitionModelHMM.h>

#include <set>

namespace Vesk::Fuzz {

/// A recognition model that owns what its reader and composition make, which the library keeps for
/// ever: millions of them have to fit into one process.
class LoadedModel : public Vesk::ML::RecognitionModelHMM {
public:
    LoadedModel() = default;
    LoadedModel(const LoadedModel&) = delete;
    LoadedModel& operator=(const LoadedModel&) = delete;
    ~LoadedModel() {
        own();
        for (const Vesk::ML::HMM* gesture : gestures) delete gesture;
        for (const Vesk::ML::HMM* combined : owned) delete combined;
    }

    /// Takes the present combined model, before another may replace it.
    void own() {
        if (recognitionHMM != nullptr) owned.insert(recognitionHMM);
    }

private:
    std::set<const Vesk::ML::HMM*> owned;
};

}  // namespace Vesk::Fuzz

#endif
