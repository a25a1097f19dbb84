#include <veskkit/recognition/TurnedCopies.h>

#include <numeric>

namespace Vesk::Kit {

using Vesk::ML::LeftRightHMM;

namespace {

bool isTurnedCopy(const LeftRightHMM& model, const LeftRightHMM& original) {
    const auto prior = [](const LeftRightHMM& it) {
        return std::accumulate(it.pi.begin(), it.pi.end(), 0.0);
    };
    return model.name == original.name && model.a.data == original.a.data &&
           prior(model) < prior(original);
}

}  // namespace

std::vector<std::size_t> originalsOf(const RecognitionModel& model) {
    const auto& gestures = model.gestures();
    std::vector<std::size_t> originals;
    for (std::size_t k = 0; k < gestures.size(); ++k) {
        std::size_t original = 0;
        while (original < k && !(originals[original] == original &&
                                 isTurnedCopy(*gestures[k], *gestures[original]))) {
            ++original;
        }
        originals.push_back(original);
    }
    return originals;
}

}  // namespace Vesk::Kit
