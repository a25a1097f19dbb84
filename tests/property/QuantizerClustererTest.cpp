#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/KMeansMotionVec.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::KMeansMotionVec;
using Rows = std::vector<std::vector<double>>;

/// Angles of all kinds, most of them where the centres' order could be mistaken: on a centre, half
/// way between two, opposite to one, and a few of the least steps beside.
double testAngle(Random& random, const std::vector<double>& centres) {
    const auto centre = [&] {
        return centres[static_cast<std::size_t>(
            random.integer(0, static_cast<int>(centres.size()) - 1))];
    };
    double angle = 0.0;
    switch (random.integer(0, 6)) {
        case 0: return oddNumber(random);
        case 1: angle = centre(); break;
        case 2: angle = (Reference::reduce(centre()) + Reference::reduce(centre())) / 2.0; break;
        case 3:
            angle = (Reference::reduce(centre()) + Reference::reduce(centre())) / 2.0 + 180.0;
            break;
        case 4: angle = centre() + 180.0; break;
        case 5: angle = closeAngle(random); break;
        default: angle = random.unit() * 1080.0 - 360.0;
    }
    if (random.chance(0.5)) {
        const double direction = random.chance(0.5) ? 1e9 : -1e9;
        for (int i = random.integer(0, 4); i > 0; --i) angle = std::nextafter(angle, direction);
    }
    return angle;
}

class QuantizerClustererPropertyTest : public testing::TestWithParam<Centres> {};

TEST_P(QuantizerClustererPropertyTest, NearestCentreIsThatOfTheDirectLoop) {
    for (std::uint64_t seed = 0; seed < 4000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const std::vector<double> centres =
            randomCentres(random, random.integer(1, 25), GetParam());
        Rows data(static_cast<std::size_t>(random.integer(0, 3)));
        for (std::vector<double>& row : data) {
            for (int i = random.integer(0, 25); i > 0; --i)
                row.push_back(testAngle(random, centres));
        }
        KMeansMotionVec clusterer(centres, data);
        ASSERT_EQ(Reference::classifyAngles(centres, data), clusterer.classify())
            << "centres " << testing::PrintToString(centres) << "\nangles "
            << testing::PrintToString(data);
        ASSERT_TRUE(bitEqual(centres, clusterer.centres));
    }
}

TEST_P(QuantizerClustererPropertyTest, LearningEndsWithAsManyCentres) {
    for (std::uint64_t seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const std::vector<double> centres =
            randomCentres(random, random.integer(1, 12), GetParam());
        Rows data(2);
        for (std::vector<double>& row : data) {
            for (int i = random.integer(0, 30); i > 0; --i)
                row.push_back(testAngle(random, centres));
        }
        KMeansMotionVec clusterer(centres, data);
        clusterer.learn(-1, random.chance(0.5) ? 0.0 : std::numeric_limits<double>::quiet_NaN());
        ASSERT_EQ(clusterer.centres.size(), centres.size());
        for (std::size_t c = 0; c < centres.size(); ++c) {
            const double centre = clusterer.centres[c];
            if (sameBits(centre, centres[c])) continue;
            ASSERT_GE(centre, 0.0);
            ASSERT_LT(centre, 360.0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, QuantizerClustererPropertyTest,
                         testing::ValuesIn(allCentreKinds));

/// Rows of irregular angles in a few groups, some turns off, some not finite.
Rows irregularAngles(Random& random) {
    Rows data(static_cast<std::size_t>(random.integer(1, 3)));
    std::vector<double> groups;
    for (int g = random.integer(1, 6); g > 0; --g) groups.push_back(random.unit() * 360.0);
    for (std::vector<double>& row : data) {
        for (int i = random.integer(0, 30); i > 0; --i) {
            const auto group =
                static_cast<std::size_t>(random.integer(0, static_cast<int>(groups.size()) - 1));
            double angle = groups[group] + (random.unit() - 0.5) * 60.0;
            if (random.chance(0.2)) angle = random.unit() * 360.0;
            if (random.chance(0.1)) angle += 360.0 * random.integer(-3, 3);
            if (random.chance(0.02)) angle = std::numeric_limits<double>::quiet_NaN();
            if (random.chance(0.02)) angle = std::numeric_limits<double>::infinity();
            row.push_back(angle);
        }
    }
    return data;
}

TEST(QuantizerClustererLearningTest, LearntCentresAreThoseOfTheLiteralIteration) {
    const double thresholds[] = {1.0, 0.0, 0.01, 5.0, -1.0, 30.0};
    int longRuns = 0;
    for (std::uint64_t seed = 0; seed < 6000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const Centres kind = random.chance(0.7) ? Centres::Scattered : Centres::Wound;
        std::vector<double> centres = randomCentres(random, random.integer(0, 12), kind);
        for (double& centre : centres) {
            if (random.chance(0.03)) centre = std::numeric_limits<double>::quiet_NaN();
        }
        Rows data = irregularAngles(random);
        const int maxIterations = random.chance(0.5) ? -1 : random.integer(0, 6);
        const double threshold = thresholds[random.integer(0, 5)];
        int iterations = 0;
        const std::vector<double> expected =
            Reference::learn(centres, data, maxIterations, threshold, &iterations);
        if (iterations >= 5) ++longRuns;
        KMeansMotionVec clusterer(centres, data);
        clusterer.learn(maxIterations, threshold);
        ASSERT_TRUE(sameDirections(expected, clusterer.centres))
            << "bound " << maxIterations << ", threshold " << threshold << "\ncentres "
            << testing::PrintToString(centres) << "\nangles " << testing::PrintToString(data);
    }
    EXPECT_GT(longRuns, 300);
}

/// The sum of the cosines of each angle's distance from its centre: what learning increases.
double fit(const std::vector<double>& centres, const Rows& data) {
    double sum = 0.0;
    for (const std::vector<double>& row : data) {
        for (const double angle : row) {
            if (!std::isfinite(angle)) continue;
            const int c = Reference::nearestCentre(angle, centres);
            const double distance =
                Reference::circularDistance(angle, centres[static_cast<std::size_t>(c)]);
            sum += std::cos(distance * 3.141592653589793 / 180.0);
        }
    }
    return sum;
}

TEST(QuantizerClustererLearningTest, EveryIterationFitsAtLeastAsWell) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Rows data = irregularAngles(random);
        KMeansMotionVec clusterer(randomCentres(random, random.integer(1, 8), Centres::Scattered),
                                  data);
        double before = fit(clusterer.centres, data);
        for (int i = 0; i < 10; ++i) {
            clusterer.learn(1, 0.0);
            const double after = fit(clusterer.centres, data);
            ASSERT_GE(after, before - 1e-9);
            before = after;
        }
    }
}

TEST(QuantizerClustererLearningTest, TurningAnglesAndCentresTurnsTheResult) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Rows data = irregularAngles(random);
        std::vector<double> centres =
            randomCentres(random, random.integer(1, 8), Centres::Scattered);
        KMeansMotionVec original(centres, data);
        original.learn(-1, 0.0);
        const double turn = random.unit() * 720.0 - 360.0;
        Rows turnedData = data;
        for (std::vector<double>& row : turnedData) {
            for (double& angle : row) angle += turn;
        }
        for (double& centre : centres) centre += turn;
        KMeansMotionVec turned(centres, turnedData);
        turned.learn(-1, 0.0);
        std::vector<double> expected = original.centres;
        for (double& centre : expected) centre += turn;
        ASSERT_TRUE(sameDirections(expected, turned.centres));
    }
}

TEST(QuantizerClustererLearningTest, RowsAreOnlyADivisionOfTheAngles) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Rows data = irregularAngles(random);
        Rows single(1);
        for (const std::vector<double>& row : data) {
            single[0].insert(single[0].end(), row.begin(), row.end());
        }
        const std::vector<double> centres =
            randomCentres(random, random.integer(1, 8), Centres::Scattered);
        KMeansMotionVec divided(centres, data);
        divided.learn(-1, 0.5);
        KMeansMotionVec whole(centres, single);
        whole.learn(-1, 0.5);
        ASSERT_TRUE(sameDirections(whole.centres, divided.centres));
    }
}

}  // namespace
