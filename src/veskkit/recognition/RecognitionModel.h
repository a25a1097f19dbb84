#ifndef VESK_VESKKIT_RECOGNITION_RECOGNITIONMODEL_H
#define VESK_VESKKIT_RECOGNITION_RECOGNITIONMODEL_H

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <memory>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// A recognition model together with the models that it refers to: the library's class borrows
/// its gestures and never frees its combined model; this one owns and frees all of them.
///
/// Move-only; the pointers inside stay valid when it moves. `clone` copies everything.
class RecognitionModel {
public:
    RecognitionModel() = default;
    /// Takes everything over and leaves `other` empty.
    RecognitionModel(RecognitionModel&& other) noexcept;
    /// Takes everything over and leaves `other` empty; what it held is freed.
    RecognitionModel& operator=(RecognitionModel&& other) noexcept;
    RecognitionModel(const RecognitionModel&) = delete;
    RecognitionModel& operator=(const RecognitionModel&) = delete;
    ~RecognitionModel();

    /// The library's object, for everything that it can do. Do not exchange its gestures or
    /// rebuild its combined model through a copy of it.
    const Vesk::ML::RecognitionModelHMM& get() const { return model; }

    /// The gesture models, in order; several may carry one name (sub-models of one gesture).
    const std::vector<std::unique_ptr<Vesk::ML::LeftRightHMM>>& gestures() const { return owned; }

    /// Each gesture's name once, in the order of first appearance. O(K^2), K gesture models.
    std::vector<std::string> gestureNames() const;

    /// Appends a gesture model, which counts from the next `build` on.
    void add(Vesk::ML::LeftRightHMM gesture);

    /// Puts `settings` in place (name, codebook, quantiser settings, staging fields and
    /// modelTransitionProb; its gestures and combined model are ignored) and builds the combined
    /// model from its staging fields, as reading a file does. Call it after the last `add`.
    /// std::bad_alloc as RecognitionModelHMM::createRecognitionHMMfromParameters. O(parameters).
    void build(const Vesk::ML::RecognitionModelHMM& settings);

    /// A model of its own with the same content. O(parameters).
    RecognitionModel clone() const;

private:
    void swap(RecognitionModel& other) noexcept;

    std::vector<std::unique_ptr<Vesk::ML::LeftRightHMM>> owned;
    std::unique_ptr<Vesk::ML::HMM> combined;
    Vesk::ML::RecognitionModelHMM model;
};

}  // namespace Vesk::Kit

#endif
