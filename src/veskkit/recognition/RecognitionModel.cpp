#include <veskkit/recognition/RecognitionModel.h>

#include <algorithm>
#include <utility>

namespace Vesk::Kit {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

RecognitionModel::RecognitionModel(RecognitionModel&& other) noexcept { swap(other); }

RecognitionModel& RecognitionModel::operator=(RecognitionModel&& other) noexcept {
    RecognitionModel taken(std::move(other));
    swap(taken);
    return *this;
}

RecognitionModel::~RecognitionModel() = default;

void RecognitionModel::swap(RecognitionModel& other) noexcept {
    std::swap(owned, other.owned);
    std::swap(combined, other.combined);
    std::swap(model, other.model);
}

std::vector<std::string> RecognitionModel::gestureNames() const {
    std::vector<std::string> names;
    for (const auto& gesture : owned) {
        if (std::find(names.begin(), names.end(), gesture->name) == names.end()) {
            names.push_back(gesture->name);
        }
    }
    return names;
}

void RecognitionModel::add(LeftRightHMM gesture) {
    auto added = std::make_unique<LeftRightHMM>(std::move(gesture));
    model.gestures.push_back(added.get());
    try {
        owned.push_back(std::move(added));
    } catch (...) {
        model.gestures.pop_back();
        throw;
    }
}

void RecognitionModel::build(const RecognitionModelHMM& settings) {
    RecognitionModelHMM built = settings;
    built.gestures = model.gestures;
    built.recognitionHMM = nullptr;
    built.setModelTransitionProb(settings.modelTransitionProb);
    built.createRecognitionHMMfromParameters();
    combined.reset(built.recognitionHMM);
    std::swap(model, built);
}

RecognitionModel RecognitionModel::clone() const {
    RecognitionModel copy;
    for (const auto& gesture : owned) copy.add(*gesture);
    if (combined) copy.build(model);
    return copy;
}

}  // namespace Vesk::Kit
