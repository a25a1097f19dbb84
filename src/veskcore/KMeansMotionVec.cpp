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

/// The sum of some unit vectors.
struct Resultant {
    double x = 0.0;
    double y = 0.0;

    Resultant& operator+=(const Resultant& other) {
        x += other.x;
        y += other.y;
        return *this;
    }
    double length() const { return std::hypot(x, y); }
    double direction() const { return internal::reduced(std::atan2(y, x) / radiansPerDegree); }
};

/// The resultant of a cluster's angles and how many they are.
struct Cluster {
    Resultant sum;
    double count = 0.0;

    bool hasDirection() const { return count > 0.0 && sum.length() >= leastResultant * count; }
};

/// The finite angles in ascending order, with their unit vectors, which every iteration needs.
class Angles {
public:
    explicit Angles(const std::vector<std::vector<double>>& data) {
        for (const std::vector<double>& row : data) {
            for (const double value : row) {
                if (std::isfinite(value)) degrees.push_back(internal::reduced(value));
            }
        }
        std::sort(degrees.begin(), degrees.end());
        unit.reserve(degrees.size());
        for (const double angle : degrees) {
            const double radians = angle * radiansPerDegree;
            unit.push_back({std::cos(radians), std::sin(radians)});
        }
        for (std::size_t i = block; i <= unit.size(); i += block) {
            blocks.push_back(sumOf(i - block, i));
        }
    }

    /// Of the angles from `begin` to before `end`. Whole blocks are added as such: the rounding
    /// error of a sum grows with the square root of its length, not with its length.
    Resultant resultant(std::size_t begin, std::size_t end) const {
        const std::size_t firstBlock = (begin + block - 1) / block;
        const std::size_t endBlock = end / block;
        if (firstBlock >= endBlock) return sumOf(begin, end);
        Resultant sum = sumOf(begin, firstBlock * block);
        for (std::size_t b = firstBlock; b < endBlock; ++b) sum += blocks[b];
        return sum += sumOf(endBlock * block, end);
    }

    std::vector<double> degrees;

private:
    static constexpr std::size_t block = 1024;

    Resultant sumOf(std::size_t begin, std::size_t end) const {
        Resultant sum;
        for (std::size_t i = begin; i < end; ++i) sum += unit[i];
        return sum;
    }

    std::vector<Resultant> unit;    ///< of each angle
    std::vector<Resultant> blocks;  ///< sums of `block` of them
};

/// What belongs to each of k centres.
std::vector<Cluster> clustersOf(const Angles& angles, const std::vector<internal::Run>& runs,
                                std::size_t k) {
    std::vector<Cluster> clusters(k);
    std::size_t begin = 0;
    for (const internal::Run& run : runs) {
        Cluster& cluster = clusters[static_cast<std::size_t>(run.index)];
        cluster.sum += angles.resultant(begin, run.end);
        cluster.count += static_cast<double>(run.end - begin);
        begin = run.end;
    }
    return clusters;
}

/// How far a centre moved; a centre that was not finite moved without measure.
double movement(double from, double to) {
    if (!std::isfinite(from)) return std::numeric_limits<double>::infinity();
    return internal::circularDistance(internal::reduced(from), to);
}

}  // namespace

KMeansMotionVec::KMeansMotionVec(std::vector<double> starts,
                                 std::vector<std::vector<double>>& traces)
    : centres(std::move(starts)), data(&traces) {}

void KMeansMotionVec::learn(int maxIterations, double threshold) {
    if (centres.empty()) return;
    const Angles angles(*data);
    std::vector<internal::Run> runs;
    // The sum of resultant lengths is the sum of cos(angle - mean): every change of assignment
    // raises it, and stopping where rounding keeps it from rising makes the loop finite.
    double fit = -1.0;
    for (int iteration = 0; maxIterations < 0 || iteration < maxIterations; ++iteration) {
        std::vector<internal::Run> nearest =
            internal::NearestCentre(centres, 0).runs(angles.degrees);
        if (nearest == runs) return;
        runs = std::move(nearest);
        const std::vector<Cluster> clusters = clustersOf(angles, runs, centres.size());
        double newFit = 0.0;
        double largest = 0.0;
        for (std::size_t k = 0; k < clusters.size(); ++k) {
            if (!clusters[k].hasDirection()) continue;
            newFit += clusters[k].sum.length();
            const double mean = clusters[k].sum.direction();
            largest = std::max(largest, movement(centres[k], mean));
            centres[k] = mean;
        }
        if (largest < threshold || !(newFit > fit)) return;
        fit = newFit;
    }
}

std::vector<std::vector<int>> KMeansMotionVec::classify() {
    if (centres.empty()) throw std::invalid_argument("a clusterer without centres has no index");
    std::size_t angles = 0;
    for (const std::vector<double>& row : *data) angles += row.size();
    const internal::NearestCentre nearest(centres, angles);
    std::vector<std::vector<int>> indices;
    indices.reserve(data->size());
    for (const std::vector<double>& row : *data) {
        std::vector<int>& symbols = indices.emplace_back(row.size());
        std::transform(row.begin(), row.end(), symbols.begin(), std::ref(nearest));
    }
    return indices;
}

}  // namespace Vesk::ML
