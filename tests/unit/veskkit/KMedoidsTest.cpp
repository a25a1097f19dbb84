#include "Gestures.h"

#include <support/Random.h>
#include <veskkit/Error.h>
#include <veskkit/training/KMedoids.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Vesk::Kit {
namespace {

using Vesk::Test::Random;
using Vesk::Test::textOf;
using Indices = std::vector<std::size_t>;

/// The table of distances of points on a line.
std::vector<double> distancesOnALine(const std::vector<double>& points) {
    std::vector<double> distances;
    for (const double x : points) {
        for (const double y : points) distances.push_back(std::abs(x - y));
    }
    return distances;
}

Clustering clusterLine(const std::vector<double>& points, std::size_t k, std::size_t smallest = 1,
                       int rounds = 10) {
    return clusterAroundMedoids(distancesOnALine(points), points.size(), k, smallest, rounds);
}

TEST(KMedoidsTest, OneClusterIsAroundTheMostCentralItem) {
    const Clustering clustering = clusterLine({0, 1, 2, 3, 10}, 1);
    EXPECT_EQ(clustering.medoids, Indices{2});
    EXPECT_EQ(clustering.cluster, (Indices{0, 0, 0, 0, 0}));
}

TEST(KMedoidsTest, FindsGroups) {
    const Clustering clustering = clusterLine({0, 50, 1, 51, 2, 52, 100}, 3);
    EXPECT_EQ(clustering.medoids, (Indices{2, 3, 6}));
    EXPECT_EQ(clustering.cluster, (Indices{0, 1, 0, 1, 0, 1, 2}));
    EXPECT_EQ(clustering.members(), (std::vector<Indices>{{0, 2, 4}, {1, 3, 5}, {6}}));
}

// Starting with 2 and 11, the second cluster is {8, 9, 11}; its centre is 9.
TEST(KMedoidsTest, RoundsMoveTheMedoids) {
    const std::vector<double> points{0, 2, 3, 8, 9, 11, 11};
    const Clustering settled = clusterLine(points, 2);
    double cost = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        cost += std::abs(points[i] - points[settled.medoids[settled.cluster[i]]]);
    }
    EXPECT_EQ(cost, 3.0 + 5.0);  // around 2: 0, 3; around 9: 8, 11, 11
}

TEST(KMedoidsTest, MakesNoMoreClustersThanThereAreDifferentItems) {
    const Clustering clustering = clusterLine({5, 5, 5, 7, 7}, 4);
    EXPECT_EQ(clustering.medoids, (Indices{0, 3}));
    EXPECT_EQ(clustering.cluster, (Indices{0, 0, 0, 1, 1}));
}

TEST(KMedoidsTest, TiesGoToTheLowestIndex) {
    EXPECT_EQ(clusterLine({0, 1}, 1).medoids, Indices{0});
    const Clustering clustering = clusterLine({0, 2, 1, 0, 2}, 2);
    // The item at 1 is as near to 0 as to 2.
    EXPECT_EQ(clustering.cluster[2], 0u);
}

TEST(KMedoidsTest, DissolvesSmallClusters) {
    const Clustering clustering = clusterLine({0, 1, 2, 50, 51, 52, 70}, 3, 2);
    EXPECT_EQ(clustering.members(), (std::vector<Indices>{{0, 1, 2}, {3, 4, 5, 6}}));
}

TEST(KMedoidsTest, TheLargestClusterStaysInAnyCase) {
    const Clustering clustering = clusterLine({0, 1, 50}, 2, 5);
    EXPECT_EQ(clustering.medoids.size(), 1u);
    EXPECT_EQ(clustering.cluster, (Indices{0, 0, 0}));
}

TEST(KMedoidsTest, NoItemsNoClusters) {
    const Clustering clustering = clusterAroundMedoids({}, 0, 3, 1);
    EXPECT_TRUE(clustering.medoids.empty());
    EXPECT_TRUE(clustering.cluster.empty());
}

TEST(KMedoidsTest, EveryItemIsWithItsNearestMedoid) {
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        std::vector<double> points;
        const int n = random.integer(1, 40);
        for (int i = 0; i < n; ++i) points.push_back(std::floor(100 * random.unit()));
        const auto smallest = static_cast<std::size_t>(random.integer(1, 6));
        const Clustering clustering =
            clusterLine(points, static_cast<std::size_t>(random.integer(1, 6)), smallest);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double own =
                std::abs(points[i] - points[clustering.medoids[clustering.cluster[i]]]);
            for (const std::size_t medoid : clustering.medoids) {
                EXPECT_LE(own, std::abs(points[i] - points[medoid]));
            }
        }
        EXPECT_TRUE(std::is_sorted(clustering.medoids.begin(), clustering.medoids.end()));
    }
}

std::vector<const Points*> pointersTo(const std::vector<Points>& traces) {
    std::vector<const Points*> pointers;
    for (const Points& trace : traces) pointers.push_back(&trace);
    return pointers;
}

TEST(KMedoidsTest, ShapesAreToldWhateverTheirSizeAndPlace) {
    std::vector<Points> traces;
    for (int i = 0; i < 5; ++i) {
        const double size = std::pow(10.0, i);
        traces.push_back({{size, size}, {2 * size, size}, {2 * size, 3 * size}});
        traces.push_back({{-size, 0}, {-size, 2 * size}, {size, 2 * size}});
    }
    const Clustering clustering = clusterByShape(pointersTo(traces), 2, 2);
    EXPECT_EQ(clustering.members(), (std::vector<Indices>{{0, 2, 4, 6, 8}, {1, 3, 5, 7, 9}}));
}

/// Five lines up, five to the right, and two to the left.
std::vector<Points> threeWays() {
    std::vector<Points> traces(5, Points{{0, 0}, {0, 1}});
    traces.insert(traces.end(), 5, Points{{0, 0}, {1, 0}});
    traces.insert(traces.end(), 2, Points{{0, 0}, {-1, 0}});
    return traces;
}

TEST(KMedoidsTest, ShapesGetAsManyClustersAsItTakesToBeClose) {
    const std::vector<Points> traces = threeWays();
    EXPECT_EQ(clusterByShape(pointersTo(traces), 9, 1).medoids.size(), 3u);
    EXPECT_EQ(clusterByShape(pointersTo(traces), 2, 1).medoids.size(), 2u);
    EXPECT_EQ(clusterByShape(pointersTo(traces), 9, 1, 1e9).medoids.size(), 1u);
}

TEST(KMedoidsTest, MoreClustersThanLastDoNotCostTheGoodOnes) {
    // Of three clusters the smallest is dissolved; none of the tries after it is better.
    const std::vector<Points> traces = threeWays();
    const Clustering clustering = clusterByShape(pointersTo(traces), 6, 3);
    ASSERT_EQ(clustering.medoids.size(), 2u);
    EXPECT_EQ(clustering.cluster[0], clustering.cluster[4]);
    EXPECT_EQ(clustering.cluster[5], clustering.cluster[9]);
    EXPECT_NE(clustering.cluster[0], clustering.cluster[5]);
}

TEST(KMedoidsTest, ThousandsOfTracesAreClusteredThroughSomeOfThem) {
    const Points up{{0, 0}, {0, 1}};
    const Points right{{0, 0}, {1, 0}};
    std::vector<const Points*> pointers;
    for (int i = 0; i < 3001; ++i) pointers.push_back(i % 3 == 0 ? &up : &right);
    const Clustering clustering = clusterByShape(pointers, 2, 5);
    ASSERT_EQ(clustering.medoids.size(), 2u);
    ASSERT_EQ(clustering.cluster.size(), 3001u);
    for (std::size_t i = 0; i < 3001; ++i) {
        EXPECT_EQ(pointers[clustering.medoids[clustering.cluster[i]]], pointers[i]);
    }
}

TEST(KMedoidsTest, RefusesATraceWithoutADirection) {
    const Points still{{1, 1}, {1, 1}};
    EXPECT_EQ(textOf<InputError>([&] { clusterByShape({&still}, 1, 1); }),
              "found a trace without a direction, expected a path");
}

}  // namespace
}  // namespace Vesk::Kit
