#ifndef VESK_VESKKIT_TRAINING_KMEDOIDS_H
#define VESK_VESKKIT_TRAINING_KMEDOIDS_H

#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <vector>

namespace Vesk::Kit {

/// A partition of n items.
struct Clustering {
    std::vector<std::size_t> medoids;  ///< per cluster the item at its centre, ascending
    std::vector<std::size_t> cluster;  ///< per item its cluster, an index into `medoids`

    /// Per cluster its items, ascending.
    std::vector<std::vector<std::size_t>> members() const;
};

/// Partitions n items around at most k of them (L. Kaufman, P. J. Rousseeuw, "Finding Groups in
/// Data", Wiley 1990, chapter 2: the build phase, then alternating assignment and re-centring).
///
/// Starts with the item of least total distance to all, adds the item that lowers the sum of the
/// distances to the nearest medoid most, and then assigns and re-centres up to `rounds` times.
/// Clusters with fewer than `smallest` items are dissolved into the nearest of those that stay;
/// the largest stays in any case. Ties go to the lowest index: no randomness.
/// @param distances n x n, row after row, symmetric
/// @param k below 1 it is 1
///
/// O((k + rounds) n^2) time. Nothing for n = 0.
Clustering clusterAroundMedoids(const std::vector<double>& distances, std::size_t n, std::size_t k,
                                std::size_t smallest, int rounds = 10);

/// Clusters traces by shape, size and position put aside: 32 positions at equal distances,
/// centred, divided by the largest absolute coordinate, squared Euclidean distance. InputError for
/// a trace without a direction (Resampler.h). Of more than 1000 traces every n-th takes part in
/// finding the medoids; the others join the nearest.
///
/// Tries one cluster, two, and so on to `most`, until traces are at most `closeEnough` (that
/// squared distance) from their medoids on average, and takes the clustering with the least
/// average: after clusters were dissolved, fewer may be better. O(most^2 n^2) time and O(n^2)
/// memory, n the traces that take part, and O(most) a trace.
Clustering clusterByShape(const std::vector<const Points*>& traces, std::size_t most,
                          std::size_t smallest, double closeEnough = 0.0);

}  // namespace Vesk::Kit

#endif
