#include "TurnableModels.h"

#include <veskkit/recognition/TurnedCopies.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>

namespace Vesk::Kit {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Pointwise;
using Vesk::ML::LeftRightHMM;
using Vesk::Test::evenDirections;
using Vesk::Test::goingTo;
using Vesk::Test::turnableModels;

/// One state that emits as told.
LeftRightHMM emitting(const std::vector<double>& row) {
    LeftRightHMM model(1, static_cast<int>(row.size()), 1);
    model.b.data = row;
    model.pi = {1.0};
    return model;
}

std::vector<std::vector<double>> rowsOfCopies(const std::vector<double>& row,
                                              const std::vector<double>& codebook, int turns) {
    std::vector<std::vector<double>> rows;
    for (const LeftRightHMM& copy : turnedCopies(emitting(row), codebook, turns)) {
        rows.push_back(copy.b.data);
    }
    return rows;
}

TEST(TurnedCopiesTest, TurnByOneDirectionOfSixteen) {
    std::vector<double> row(16, 0.03125);
    row[0] = 0.53125;
    std::vector<double> before = row;
    std::rotate(before.begin(), before.begin() + 1, before.end());
    std::vector<double> behind = row;
    std::rotate(behind.begin(), behind.end() - 1, behind.end());
    EXPECT_THAT(rowsOfCopies(row, evenDirections(16), 1), ElementsAre(before, behind));
}

// By 22.5 degrees a quarter of the way to the next.
TEST(TurnedCopiesTest, BetweenDirectionsTheyAreInterpolated) {
    const auto rows = rowsOfCopies({0.5, 0.25, 0.125, 0.125}, evenDirections(4), 4);
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_THAT(rows[0], ElementsAre(0.4375, 0.21875, 0.125, 0.21875));
    EXPECT_THAT(rows[1], ElementsAre(0.40625, 0.3125, 0.15625, 0.125));
    EXPECT_THAT(rows[6], ElementsAre(0.25, 0.125, 0.125, 0.5)) << "by -90";
    EXPECT_THAT(rows[7], ElementsAre(0.125, 0.5, 0.25, 0.125));
}

TEST(TurnedCopiesTest, BothSidesAreMirrorImages) {
    for (const int M : {5, 8, 24, 32, 40}) {
        std::vector<double> row;
        double sum = 0.0;
        for (int k = 0; k < M; ++k) sum += row.emplace_back(1.0 / (1 + std::min(k, M - k)));
        for (double& value : row) value /= sum;
        const auto rows = rowsOfCopies(row, evenDirections(M), 3);
        for (std::size_t n = 0; n < rows.size(); n += 2) {
            std::vector<double> mirrored = rows[n + 1];
            std::reverse(mirrored.begin() + 1, mirrored.end());
            EXPECT_THAT(rows[n], Pointwise(DoubleNear(1e-12), mirrored)) << M;
            EXPECT_GT(std::abs(rows[n][1] - row[1]), 1e-3) << M;
        }
    }
}

// What is 337.5 degrees before the turn lies 157.5 behind 180 and 22.5 before 0.
TEST(TurnedCopiesTest, RowsOfUnevenDirectionsAreNormalised) {
    const auto rows = rowsOfCopies({0.5, 0.25, 0.25}, {0, 10, 180}, 1);
    const double first = 0.125 * 0.25 + 0.875 * 0.5;
    const double second = 12.5 / 180 * 0.25 + 167.5 / 180 * 0.5;
    const double sum = first + second + 0.25;
    EXPECT_THAT(rows[1],
                ElementsAre(DoubleNear(first / sum, 1e-15), DoubleNear(second / sum, 1e-15),
                            DoubleNear(0.25 / sum, 1e-15)));
}

TEST(TurnedCopiesTest, EveryTurnWeighsAHundredth) {
    LeftRightHMM model = emitting({0.5, 0.5});
    model.pi = {0.5};
    std::vector<double> priors;
    for (const LeftRightHMM& copy : turnedCopies(model, evenDirections(2), 2)) {
        priors.push_back(copy.pi[0]);
    }
    EXPECT_THAT(priors, ElementsAre(0.005, 0.005, 0.5 * 0.01 * 0.01, 0.5 * 0.01 * 0.01));
    EXPECT_TRUE(turnedCopies(model, evenDirections(2), 0).empty());
}

// Behind the gesture's own models, the nearer turns first, each to both sides.
TEST(TurnedCopiesTest, StandBehindTheModelsOfTheirGesture) {
    const RecognitionModel model = internal::composeRecognitionModel(
        turnableModels(), evenDirections(16), {1e3, {{"g0", 0.5}}}, 2, "all");
    const auto& gestures = model.gestures();
    ASSERT_EQ(gestures.size(), 6u);
    const std::vector<double> priors{0.5, 0.005, 0.005, 5e-5, 5e-5, 1.0};
    const std::vector<int> peaks{3, 2, 4, 1, 5, 1};
    for (std::size_t k = 0; k < gestures.size(); ++k) {
        EXPECT_EQ(gestures[k]->name, k < 5 ? "g0" : "g1");
        EXPECT_EQ(gestures[k]->pi[0], priors[k]) << k;
        EXPECT_EQ(gestures[k]->a.data, gestures[k < 5 ? 0 : 5]->a.data);
        const auto row = gestures[k]->b.data.begin();
        EXPECT_EQ(std::max_element(row, row + 16) - row, peaks[k]) << k;
    }
    EXPECT_THAT(originalsOf(model), ElementsAre(0, 0, 0, 0, 0, 5));
    EXPECT_NEAR(internal::acceptanceRatio(model.get().modelTransitionProb, 6), 1e3, 1.0);
}

/// Whether the second model of two is a copy of the first, which goes in direction 3.
bool isCopy(const LeftRightHMM& second, int directions = 16) {
    RecognitionModel model;
    model.add(goingTo("g", 3, 0.25));
    model.add(second);
    Vesk::ML::RecognitionModelHMM settings;
    settings.codebook = evenDirections(directions);
    model.build(settings);
    return originalsOf(model)[1] == 0;
}

TEST(TurnedCopiesTest, AreToldFromOtherModelsOfOneName) {
    LeftRightHMM copy = goingTo("g", 2, 0.25);
    copy.pi[0] = 0.01;
    EXPECT_TRUE(isCopy(copy));
    copy.b(0, 0) *= 1.00001;
    EXPECT_TRUE(isCopy(copy)) << "files have six digits";

    const auto with = [&](const auto& change) {
        LeftRightHMM other = copy;
        change(other);
        return isCopy(other);
    };
    EXPECT_FALSE(with([](LeftRightHMM& it) { it.name = "h"; }));
    EXPECT_FALSE(with([](LeftRightHMM& it) { it.pi[0] = 0.3; }));
    EXPECT_FALSE(with([](LeftRightHMM& it) { it.pi[0] = 0.0001; })) << "as twice turned";
    EXPECT_FALSE(with([](LeftRightHMM& it) { it.pi[0] = 1.0; }));
    EXPECT_FALSE(with([](LeftRightHMM& it) { it.a(0, 0) = 0.4; }));
    EXPECT_FALSE(with([](LeftRightHMM& it) { it.b(3, 15) *= 1.001; }));
    EXPECT_FALSE(isCopy(copy, 15)) << "of a file that lacks a direction";
}

}  // namespace
}  // namespace Vesk::Kit
