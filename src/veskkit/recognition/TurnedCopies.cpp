#include <veskkit/recognition/TurnedCopies.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace Vesk::Kit {

using Vesk::Math::MatrixT;
using Vesk::ML::LeftRightHMM;

namespace {

constexpr double turnOfCopies = 22.5;     ///< degrees from one copy to the next
constexpr double weightOfATurn = 0.01;    ///< people turn their gestures a little, but rarely
constexpr double roundingOfFiles = 3e-5;  ///< of values of six digits, and their normalised sums

/// Degrees from one direction on to another, 0 to less than 360.
double onwards(double from, double to) {
    const double difference = std::fmod(to - from, 360.0);
    return difference < 0.0 ? difference + 360.0 : difference;
}

/// A direction as a mixture of the two of a codebook that it lies between.
struct Mixture {
    Mixture(const std::vector<double>& codebook, double direction) {
        const auto nearest = [&](const auto& distance) {
            const auto nearer = [&](double x, double y) { return distance(x) < distance(y); };
            return std::min_element(codebook.begin(), codebook.end(), nearer);
        };
        const auto below = nearest([=](double it) { return onwards(it, direction); });
        const auto above = nearest([=](double it) { return onwards(direction, it); });
        first = static_cast<int>(below - codebook.begin());
        second = static_cast<int>(above - codebook.begin());
        const double before = onwards(*below, direction);
        const double behind = onwards(direction, *above);
        if (before > 0.0) share = before / (before + behind);
    }

    int first;
    int second;
    double share = 0.0;  ///< of the second
};

LeftRightHMM turned(LeftRightHMM model, const std::vector<double>& codebook, double degrees) {
    std::vector<Mixture> sources;
    for (const double direction : codebook) sources.emplace_back(codebook, direction - degrees);
    const MatrixT<double> upright = model.b;
    for (int i = 0; i < upright.rows; ++i) {
        double sum = 0.0;
        for (int k = 0; k < upright.cols; ++k) {
            const Mixture& source = sources[static_cast<std::size_t>(k)];
            model.b(i, k) = (1.0 - source.share) * upright(i, source.first) +
                            source.share * upright(i, source.second);
            sum += model.b(i, k);
        }
        for (int k = 0; k < upright.cols; ++k) model.b(i, k) /= sum;
    }
    return model;
}

bool areEqualButForRounding(const std::vector<double>& x, const std::vector<double>& y) {
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](double a, double b) {
        return std::abs(a - b) <= roundingOfFiles * std::max(a, b);
    });
}

bool areEqualButForRounding(const LeftRightHMM& x, const LeftRightHMM& y) {
    return areEqualButForRounding(x.pi, y.pi) && areEqualButForRounding(x.b.data, y.b.data);
}

}  // namespace

std::vector<LeftRightHMM> turnedCopies(const LeftRightHMM& model,
                                       const std::vector<double>& codebook, int turns) {
    std::vector<LeftRightHMM> copies;
    double weight = 1.0;
    for (int n = 1; n <= turns; ++n) {
        weight *= weightOfATurn;
        for (const double turn : {-n * turnOfCopies, n * turnOfCopies}) {
            LeftRightHMM copy = turned(model, codebook, turn);
            for (double& first : copy.pi) first *= weight;
            copies.push_back(std::move(copy));
        }
    }
    return copies;
}

std::vector<std::size_t> originalsOf(const RecognitionModel& model) {
    const auto& gestures = model.gestures();
    const std::vector<double>& codebook = model.get().codebook;
    std::vector<std::size_t> originals(gestures.size());
    std::iota(originals.begin(), originals.end(), std::size_t{0});
    for (std::size_t o = 0; o < gestures.size(); ++o) {
        const LeftRightHMM& original = *gestures[o];
        if (originals[o] != o || static_cast<std::size_t>(original.b.cols) != codebook.size())
            continue;
        std::vector<LeftRightHMM> copies;
        for (std::size_t k = o + 1; k < gestures.size(); ++k) {
            const LeftRightHMM& it = *gestures[k];
            if (originals[k] != k || it.name != original.name || it.a.data != original.a.data)
                continue;
            if (copies.empty()) copies = turnedCopies(original, codebook, mostTurns);
            const bool isCopy = std::any_of(
                copies.begin(), copies.end(),
                [&](const LeftRightHMM& copy) { return areEqualButForRounding(it, copy); });
            if (isCopy) originals[k] = o;
        }
    }
    return originals;
}

}  // namespace Vesk::Kit
