#include <vesk/quantizer/KMeansMotionVec.h>

#include <veskcore/internal/NearestCentre.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Vesk::ML {
namespace {

/// pi / 180
constexpr double radiansPerDegree = 0.017453292519943295;

/// A mean resultant length below this is rounding error: the angles cancel out.
constexpr double leastResultant = 1e-12;

/// The sum of the unit vectors of a cluster's angles.
struct Resultant {
    double x = 0.0;
    double y = 0.0;
    double count = 0.0;

    double length() const { return std::hypot(x, y); }
    bool hasDirection() const { return count > 0.0 && length() >= leastResultant * count; }
    double direction() const { return internal::reduced(std::atan2(y, x) / radiansPerDegree); }
};

/// The finite angles in ascending order, with their unit vectors, which every iteration needs.
struct Angles {
    std::vector<double> degrees;
    std::vector<double> x;
    std::vector<double> y;

    explicit Angles(const std::vector<std::vector<double>>& data) {
        for (const std::vector<double>& row : data) {
            for (const double value : row) {
                if (std::isfinite(value)) degrees.push_back(internal::reduced(value));
            }
        }
        std::sort(degrees.begin(), degrees.end());
        x.reserve(degrees.size());
        y.reserve(degrees.size());
        for (const double angle : degrees) {
            const double radians = angle * radiansPerDegree;
            x.push_back(std::cos(radians));
            y.push_back(std::sin(radians));
        }
    }
};

/// Sums in the order of the angles, block by block: the rounding error of a sum grows with the
/// square root of its length, not with its length.
std::vector<Resultant> resultants(const Angles& angles, const std::vector<internal::Run>& clusters,
                                  std::size_t k) {
    constexpr std::size_t block = 1024;
    std::vector<Resultant> sums(k);
    std::size_t i = 0;
    for (const internal::Run& run : clusters) {
        Resultant& sum = sums[static_cast<std::size_t>(run.index)];
        sum.count += static_cast<double>(run.end - i);
        while (i < run.end) {
            const std::size_t end = std::min(i + block, run.end);
            double x = 0.0;
            double y = 0.0;
            for (; i < end; ++i) {
                x += angles.x[i];
                y += angles.y[i];
            }
            sum.x += x;
            sum.y += y;
        }
    }
    return sums;
}

/// How far a centre moved; a centre that was not finite moved without measure.
double movement(double from, double to) {
    if (!std::isfinite(from)) return std::numeric_limits<double>::infinity();
    return internal::circularDistance(internal::reduced(from), to);
}

}  // namespace

KMeansMotionVec::KMeansMotionVec(std::vector<double> centres,
                                 std::vector<std::vector<double>>& data)
    : centres(std::move(centres)), data(&data) {}

void KMeansMotionVec::learn(int maxIterations, double threshold) {
    if (centres.empty()) return;
    const Angles angles(*data);
    std::vector<internal::Run> clusters;
    // The sum of resultant lengths is the sum of cos(angle - mean): every change of assignment
    // raises it, and stopping where rounding keeps it from rising makes the loop finite.
    double fit = -1.0;
    for (int iteration = 0; maxIterations < 0 || iteration < maxIterations; ++iteration) {
        std::vector<internal::Run> nearest = internal::NearestCentre(centres).runs(angles.degrees);
        if (nearest == clusters) return;
        clusters = std::move(nearest);
        const std::vector<Resultant> sums = resultants(angles, clusters, centres.size());
        double newFit = 0.0;
        double largest = 0.0;
        for (std::size_t k = 0; k < sums.size(); ++k) {
            if (!sums[k].hasDirection()) continue;
            newFit += sums[k].length();
            const double mean = sums[k].direction();
            largest = std::max(largest, movement(centres[k], mean));
            centres[k] = mean;
        }
        if (largest < threshold || !(newFit > fit)) return;
        fit = newFit;
    }
}

std::vector<std::vector<int>> KMeansMotionVec::classify() {
    if (centres.empty()) throw std::invalid_argument("a clusterer without centres has no index");
    const internal::NearestCentre nearest(centres);
    std::vector<std::vector<int>> indices;
    indices.reserve(data->size());
    for (const std::vector<double>& row : *data) {
        std::vector<int>& symbols = indices.emplace_back(row.size());
        std::transform(row.begin(), row.end(), symbols.begin(), std::ref(nearest));
    }
    return indices;
}

}  // namespace Vesk::ML
