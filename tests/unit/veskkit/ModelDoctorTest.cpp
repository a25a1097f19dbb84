#include "Gestures.h"

#include <veskkit/diagnosis/ModelDoctor.h>
#include <veskkit/training/GestureTrainer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::Test::drawnTraces;
using Vesk::Test::smallGesture;
using Vesk::Test::smallGestures;
using Vesk::Test::smallSettings;

constexpr std::size_t T = 12;

std::vector<Finding> findingsOf(std::vector<LeftRightHMM> gestures, double p = 0.6,
                                std::size_t symbols = T) {
    RecognitionModel model;
    for (const LeftRightHMM& gesture : gestures) model.add(gesture);
    model.build(smallSettings(p, std::move(gestures)));
    return diagnoseModel(model.get(), symbols);
}

/// The only finding, of the kind and weight given.
Finding only(const std::vector<Finding>& findings, FindingKind kind, Weight weight) {
    std::string texts;
    for (const Finding& finding : findings) texts += "\n" + finding.text;
    EXPECT_EQ(findings.size(), 1u) << texts;
    if (findings.empty()) return {};
    EXPECT_STREQ(toString(findings[0].kind), toString(kind));
    EXPECT_STREQ(toString(findings[0].weight), toString(weight));
    EXPECT_EQ(findings[0].advice.back(), '.');
    return findings[0];
}

/// `count` states in a row, each liking the next of four symbols.
LeftRightHMM chain(const std::string& name, int count) {
    LeftRightHMM gesture(count, 4, 1);
    gesture.name = name;
    gesture.pi.assign(static_cast<std::size_t>(count), 0.0);
    gesture.pi[0] = 1.0;
    gesture.b.data.assign(static_cast<std::size_t>(count) * 4, 0.1);
    gesture.a.data.assign(static_cast<std::size_t>(count) * static_cast<std::size_t>(count), 0.0);
    for (int i = 0; i < count; ++i) {
        gesture.b(i, i % 4) = 0.7;
        gesture.a(i, i) = i + 1 < count ? 0.5 : 1.0;
        if (i + 1 < count) gesture.a(i, i + 1) = 0.5;
    }
    return gesture;
}

TEST(ModelDoctorTest, NothingIsFoundInASoundModel) {
    EXPECT_THAT(findingsOf(smallGestures()), IsEmpty());
    const TrainingResult trained = GestureTrainer().train(drawnTraces(1, 3, 4));
    for (const Finding& finding : diagnoseModel(trained.model.get())) ADD_FAILURE() << finding.text;
}

TEST(ModelDoctorTest, EveryPartThatIsNotSoundIsAFindingAndNothingElseIs) {
    const RecognitionModel owner = Vesk::Test::smallModel();
    RecognitionModelHMM model = owner.get();
    model.codebook.clear();
    model.gestures[1]->b(0, 1) = std::numeric_limits<double>::infinity();
    model.rotationAllowed = true;
    const std::vector<Finding> findings = diagnoseModel(model);
    ASSERT_EQ(findings.size(), 2u);
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.kind, FindingKind::UnsoundModel);
        EXPECT_EQ(finding.weight, Weight::Serious);
    }
    EXPECT_EQ(findings[0].text, "model: found no codebook, expected one direction a symbol");
    EXPECT_THAT(findings[1].text, HasSubstr("gesture \"up\": found b(0, 1) = inf"));
    EXPECT_EQ(diagnoseModel(RecognitionModelHMM())[0].weight, Weight::Serious);
}

TEST(ModelDoctorTest, DirectionsThatStandTwiceInTheCodebookAreFound) {
    for (const double direction : {90.0, 450.0, -270.0}) {
        const RecognitionModel owner = Vesk::Test::smallModel(0.6);
        RecognitionModelHMM model = owner.get();
        model.codebook[3] = direction;
        const Finding finding =
            only(diagnoseModel(model, T), FindingKind::DoubledDirections, Weight::Warning);
        EXPECT_THAT(finding.text, HasSubstr("as directions 1 and 3"));
    }
}

TEST(ModelDoctorTest, AllowedRotationIsAdvice) {
    const RecognitionModel owner = Vesk::Test::smallModel(0.6);
    RecognitionModelHMM model = owner.get();
    model.rotationAllowed = true;
    only(diagnoseModel(model, T), FindingKind::RotationAllowed, Weight::Advice);
}

// Three models: R = 3 p / (1 - p) is 1 at p = 1/4.
TEST(ModelDoctorTest, AThresholdThatRejectsNothingOrNearlyAllIsFound) {
    EXPECT_THAT(findingsOf(smallGestures(), 0.2501), IsEmpty());
    for (const double p : {0.0, 0.2499, 1.0}) {
        const Finding finding =
            only(findingsOf(smallGestures(), p), FindingKind::ThresholdWeight, Weight::Warning);
        EXPECT_EQ(finding.found, p);
        EXPECT_EQ(finding.expected, p < 1.0 ? 0.25 : 1.0);
    }
    const std::vector<Finding> strict = findingsOf(smallGestures(), 0.999999);
    ASSERT_FALSE(strict.empty());
    EXPECT_EQ(strict.back().kind, FindingKind::ThresholdWeight);
}

TEST(ModelDoctorTest, RowsThatDoNotSumToOneAreFound) {
    std::vector<LeftRightHMM> gestures = smallGestures();
    gestures[1].a(1, 1) = 0.999;
    std::vector<Finding> findings = findingsOf(gestures);
    // The threshold model inherits no row sum of transitions.
    Finding finding = only(findings, FindingKind::ImproperRows, Weight::Warning);
    EXPECT_EQ(finding.found, 0.999);
    EXPECT_THAT(finding.text, HasSubstr("gesture \"up\": found 1 of 3 rows of pi and a"));
    gestures = smallGestures();
    gestures[1].pi = {0.5, 0.4};
    EXPECT_THAT(only(findingsOf(gestures), FindingKind::ImproperRows, Weight::Warning).gestures,
                ElementsAre("up"));
    gestures = smallGestures();
    gestures[1].pi = {1.1, 0.0};
    EXPECT_EQ(only(findingsOf(gestures), FindingKind::ImproperRows, Weight::Warning).found, 1.1);
    gestures = smallGestures();
    gestures[1].pi = {0.9, 0.0};
    EXPECT_THAT(findingsOf(gestures), IsEmpty()) << "a prior";
    gestures = smallGestures();
    gestures[1].a(1, 1) = 0.99999;
    EXPECT_THAT(findingsOf(gestures), IsEmpty()) << "six digits";
}

TEST(ModelDoctorTest, OddsInPlaceOfEmissionsAreFound) {
    std::vector<LeftRightHMM> gestures = smallGestures();
    for (double& value : gestures[1].b.data) value = value / (1.0 - value);
    const std::vector<Finding> findings = findingsOf(gestures);
    ASSERT_FALSE(findings.empty());
    EXPECT_EQ(findings[0].kind, FindingKind::OddsForProbabilities);
    EXPECT_EQ(findings[0].weight, Weight::Serious);
    EXPECT_THAT(findings[0].gestures, ElementsAre("up"));
    EXPECT_THAT(findings[0].advice, HasSubstr("b / (1 + b)"));
}

TEST(ModelDoctorTest, ZeroEmissionsAreCountedAGesture) {
    std::vector<LeftRightHMM> gestures = smallGestures();
    gestures[0].b.data = {0.7, 0.3, 0.0, 0.0, 0.1, 0.7, 0.1, 0.1};
    gestures[2].b.data = {0.7, 0.1, 0.1, 0.1, 0.2, 0.1, 0.0, 0.7};
    const Finding finding = only(findingsOf(gestures), FindingKind::ZeroEmissions, Weight::Warning);
    EXPECT_THAT(finding.gestures, ElementsAre("right"));
    EXPECT_EQ(finding.found, 3.0);
    EXPECT_THAT(finding.text, HasSubstr("3 of 16 emissions 0"));
}

TEST(ModelDoctorTest, AnEndThatNoSequenceReachesIsFound) {
    EXPECT_THAT(findingsOf({smallGesture("right", 0, 1), chain("long", T)}), IsEmpty());
    Finding finding = only(findingsOf({smallGesture("right", 0, 1), chain("long", T + 1)}),
                           FindingKind::UnreachableEnd, Weight::Serious);
    EXPECT_THAT(finding.gestures, ElementsAre("long"));
    EXPECT_EQ(finding.found, 12.0);
    EXPECT_EQ(finding.expected, 13.0);
    LeftRightHMM broken = chain("broken", 4);
    broken.a(1, 1) = 1.0;
    broken.a(1, 2) = 0.0;
    finding = only(findingsOf({smallGesture("right", 0, 1), broken}), FindingKind::UnreachableEnd,
                   Weight::Serious);
    EXPECT_THAT(finding.text, HasSubstr("found no way to the last of 4 states"));
}

TEST(ModelDoctorTest, StatesThatTakeNoPartAreFound) {
    LeftRightHMM skipping = chain("skipping", 4);
    skipping.a(0, 1) = 0.0;
    skipping.a(0, 2) = 0.5;
    Finding finding = only(findingsOf({smallGesture("right", 0, 1), skipping}),
                           FindingKind::IdleStates, Weight::Warning);
    EXPECT_EQ(finding.found, 1.0);
    EXPECT_THAT(finding.text, HasSubstr("the first is 1"));
    // Nothing leads out of state 1.
    LeftRightHMM trapped = chain("trapped", 4);
    trapped.a.data = {0.5, 0.25, 0.25, 0, 0, 1, 0, 0, 0, 0, 0.5, 0.5, 0, 0, 0, 1};
    finding = only(findingsOf({smallGesture("right", 0, 1), trapped}), FindingKind::IdleStates,
                   Weight::Warning);
    EXPECT_EQ(finding.found, 1.0);
}

TEST(ModelDoctorTest, AGestureThatAnotherOneAlwaysBeatsIsFound) {
    const Finding finding = only(findingsOf({smallGesture("right", 0, 1), smallGesture("up", 1, 2),
                                             smallGesture("twin", 0, 1)},
                                            0.3),
                                 FindingKind::NeverWins, Weight::Serious);
    EXPECT_THAT(finding.gestures, ElementsAre("twin", "right"));
}

TEST(ModelDoctorTest, AGestureThatTheThresholdModelAlwaysBeatsIsFound) {
    LeftRightHMM flat = smallGesture("flat", 0, 1);
    flat.b.data.assign(8, 0.25);
    const Finding finding = only(findingsOf({smallGesture("right", 0, 1), flat}),
                                 FindingKind::NeverWins, Weight::Serious);
    EXPECT_THAT(finding.gestures, testing::Contains("flat"));
}

}  // namespace
}  // namespace Vesk::Kit
