#include <veskkit/traces/internal/Shape.h>
#include <veskkit/training/KMedoids.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace Vesk::Kit {

namespace {

constexpr std::size_t mostCompared = 1000;

using Indices = std::vector<std::size_t>;

/// Index of the first smallest value.
std::size_t argMin(const std::vector<double>& values) {
    return static_cast<std::size_t>(std::min_element(values.begin(), values.end()) -
                                    values.begin());
}

/// The medoids' search over a table of distances.
class Search {
public:
    Search(const std::vector<double>& table, std::size_t items) : distances(table), n(items) {}

    double distance(std::size_t i, std::size_t j) const { return distances[i * n + j]; }

    /// The build phase of the medoids: at most k, fewer where no further one lowers the sum.
    Indices build(std::size_t k) const {
        Indices medoids{centreOf(all())};
        std::vector<double> nearest(n);
        for (std::size_t i = 0; i < n; ++i) nearest[i] = distance(i, medoids[0]);
        while (medoids.size() < k) {
            std::size_t best = 0;
            double bestGain = 0.0;
            for (std::size_t candidate = 0; candidate < n; ++candidate) {
                double gain = 0.0;
                for (std::size_t i = 0; i < n; ++i) {
                    gain += std::max(0.0, nearest[i] - distance(i, candidate));
                }
                if (gain > bestGain) {
                    bestGain = gain;
                    best = candidate;
                }
            }
            if (bestGain == 0.0) break;
            medoids.push_back(best);
            for (std::size_t i = 0; i < n; ++i)
                nearest[i] = std::min(nearest[i], distance(i, best));
        }
        std::sort(medoids.begin(), medoids.end());
        return medoids;
    }

    Clustering assign(Indices medoids) const {
        Clustering result;
        result.cluster.resize(n);
        for (std::size_t i = 0; i < n; ++i) {
            std::vector<double> to;
            for (const std::size_t medoid : medoids) to.push_back(distance(i, medoid));
            result.cluster[i] = argMin(to);
        }
        result.medoids = std::move(medoids);
        return result;
    }

    /// Of every cluster the item of least total distance to its members; empty clusters vanish.
    Indices centres(const Clustering& clustering) const {
        Indices result;
        for (const Indices& members : clustering.members()) {
            if (!members.empty()) result.push_back(centreOf(members));
        }
        std::sort(result.begin(), result.end());
        return result;
    }

    Indices all() const {
        Indices items(n);
        for (std::size_t i = 0; i < n; ++i) items[i] = i;
        return items;
    }

private:
    std::size_t centreOf(const Indices& members) const {
        std::vector<double> totals;
        for (const std::size_t candidate : members) {
            double total = 0.0;
            for (const std::size_t member : members) total += distance(candidate, member);
            totals.push_back(total);
        }
        return members[argMin(totals)];
    }

    const std::vector<double>& distances;
    std::size_t n;
};

/// The medoids whose clusters are large enough; the largest one's in any case.
Indices lasting(const Clustering& clustering, std::size_t smallest) {
    const std::vector<Indices> members = clustering.members();
    const auto largest =
        std::max_element(members.begin(), members.end(),
                         [](const Indices& x, const Indices& y) { return x.size() < y.size(); });
    Indices result;
    for (std::size_t c = 0; c < members.size(); ++c) {
        if (members[c].size() >= smallest || &members[c] == &*largest) {
            result.push_back(clustering.medoids[c]);
        }
    }
    return result;
}

double meanDistance(const std::vector<double>& distances, const Clustering& clustering) {
    const std::size_t n = clustering.cluster.size();
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        sum += distances[i * n + clustering.medoids[clustering.cluster[i]]];
    }
    return sum / static_cast<double>(n);
}

/// The first of 1, 2, ... `most` clusters whose items are close enough to their medoids, else the
/// closest.
Clustering closestClustering(const std::vector<double>& distances, std::size_t n, std::size_t most,
                             std::size_t smallest, double closeEnough) {
    Clustering closest;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t k = 1; k <= std::max<std::size_t>(most, 1) && least > closeEnough; ++k) {
        Clustering clustering = clusterAroundMedoids(distances, n, k, smallest);
        const double mean = meanDistance(distances, clustering);
        if (mean >= least) continue;
        least = mean;
        closest = std::move(clustering);
    }
    return closest;
}

}  // namespace

std::vector<Indices> Clustering::members() const {
    std::vector<Indices> result(medoids.size());
    for (std::size_t i = 0; i < cluster.size(); ++i) result[cluster[i]].push_back(i);
    return result;
}

Clustering clusterAroundMedoids(const std::vector<double>& distances, std::size_t n, std::size_t k,
                                std::size_t smallest, int rounds) {
    if (n == 0) return {};
    const Search search(distances, n);
    Clustering clustering = search.assign(search.build(std::max<std::size_t>(k, 1)));
    for (int round = 0; round < rounds; ++round) {
        Indices medoids = search.centres(clustering);
        if (medoids == clustering.medoids) break;
        clustering = search.assign(std::move(medoids));
    }
    Indices staying = lasting(clustering, smallest);
    if (staying.size() == clustering.medoids.size()) return clustering;
    return search.assign(std::move(staying));
}

Clustering clusterByShape(const std::vector<const Points*>& traces, std::size_t most,
                          std::size_t smallest, double closeEnough) {
    std::vector<std::vector<double>> shapes;
    shapes.reserve(traces.size());
    for (const Points* trace : traces) shapes.push_back(internal::shapeOf(*trace));

    const std::size_t stride = (traces.size() + mostCompared - 1) / mostCompared;
    Indices compared;
    for (std::size_t i = 0; i < traces.size(); i += stride) compared.push_back(i);
    const std::size_t n = compared.size();
    std::vector<double> distances(n * n);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const double d = internal::squaredDistance(shapes[compared[i]], shapes[compared[j]]);
            distances[i * n + j] = d;
            distances[j * n + i] = d;
        }
    }
    Clustering clustering = closestClustering(distances, n, most, smallest, closeEnough);
    for (std::size_t& medoid : clustering.medoids) medoid = compared[medoid];
    if (stride <= 1) return clustering;

    clustering.cluster.clear();
    for (const std::vector<double>& shape : shapes) {
        std::vector<double> to;
        for (const std::size_t m : clustering.medoids)
            to.push_back(internal::squaredDistance(shape, shapes[m]));
        clustering.cluster.push_back(argMin(to));
    }
    return clustering;
}

}  // namespace Vesk::Kit
