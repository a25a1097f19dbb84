#include <support/BitEqual.h>
#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::VectorQuantizer2D;

TEST(QuantizerCodebookTest, FourDirectionsAreTheAxes) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 90.0, 180.0, 270.0}, quantizer.codebook));
    EXPECT_EQ(quantizer.codebookSize, 4);
    EXPECT_TRUE(quantizer.codebookReady);
}

TEST(QuantizerCodebookTest, GeneratingTwiceLeavesBothCodebooksAndTheSizeOfOne) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    quantizer.initializeCodebook(4);
    EXPECT_EQ(quantizer.codebook,
              (std::vector<double>{0.0, 90.0, 180.0, 270.0, 0.0, 90.0, 180.0, 270.0}));
    EXPECT_EQ(quantizer.codebookSize, 4);
}

TEST(QuantizerCodebookTest, GeneratedEntriesStandBehindThoseThatAreThere) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({7.0, 8.0, 9.0});
    quantizer.initializeCodebook(2);
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{7.0, 8.0, 9.0, 0.0, 180.0}));
    EXPECT_EQ(quantizer.codebookSize, 2);
}

TEST(QuantizerCodebookTest, OneDirectionIsZero) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, quantizer.codebook));
    EXPECT_EQ(quantizer.codebookSize, 1);
}

TEST(QuantizerCodebookTest, NoOrNegativeCountAppendsNothingAndIsReady) {
    for (const int n : {0, -1, -7, INT_MIN}) {
        SCOPED_TRACE(n);
        VectorQuantizer2D quantizer;
        quantizer.codebook = {5.0};
        quantizer.initializeCodebook(n);
        EXPECT_EQ(quantizer.codebook, std::vector<double>{5.0});
        EXPECT_EQ(quantizer.codebookSize, n);
        EXPECT_TRUE(quantizer.codebookReady);
    }
}

TEST(QuantizerCodebookTest, StepIsSinglePrecision) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(7);
    const double step = 51.428569793701171875;
    ASSERT_EQ(quantizer.codebook.size(), 7u);
    EXPECT_TRUE(bitEqual(step, quantizer.codebook[1]));
    EXPECT_NE(quantizer.codebook[1], 360.0 / 7.0);
}

TEST(QuantizerCodebookTest, EntriesOfAllSizesAreTheAccumulatedStep) {
    for (int n = 1; n <= 300; ++n) {
        SCOPED_TRACE(n);
        VectorQuantizer2D quantizer;
        quantizer.initializeCodebook(n);
        Reference::Quantizer reference;
        Reference::initializeCodebook(reference, n);
        ASSERT_TRUE(bitEqual(reference.codebook, quantizer.codebook));
        ASSERT_EQ(quantizer.codebookSize, n);
    }
}

TEST(QuantizerCodebookTest, LargeCodebookAccumulatesToTheLastEntry) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(100003);
    Reference::Quantizer reference;
    Reference::initializeCodebook(reference, 100003);
    EXPECT_TRUE(bitEqual(reference.codebook, quantizer.codebook));
}

TEST(QuantizerCodebookTest, SettingReplacesTheCodebookAndItsSize) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<double> odd = {370.0, -0.0, nan, infinity, 5e-324};
    quantizer.setCodebook(odd);
    EXPECT_TRUE(bitEqual(odd, quantizer.codebook));
    EXPECT_EQ(quantizer.codebookSize, 5);
    EXPECT_TRUE(quantizer.codebookReady);
}

TEST(QuantizerCodebookTest, SettingAnEmptyCodebookIsReadyWithSizeZero) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({});
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebookSize, 0);
    EXPECT_TRUE(quantizer.codebook.empty());
}

TEST(QuantizerCodebookTest, SettingLeavesTheArgumentAlone) {
    VectorQuantizer2D quantizer;
    const std::vector<double> mine = {1.0, 2.0};
    quantizer.setCodebook(mine);
    quantizer.codebook[0] = 99.0;
    EXPECT_EQ(mine, (std::vector<double>{1.0, 2.0}));
}

TEST(QuantizerCodebookTest, SettingTheOwnCodebookKeepsIt) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    quantizer.initializeCodebook(4);
    quantizer.setCodebook(quantizer.codebook);
    EXPECT_EQ(quantizer.codebook.size(), 8u);
    EXPECT_EQ(quantizer.codebookSize, 8);
}

TEST(QuantizerCodebookTest, NothingTakesReadinessBack) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    quantizer.setCodebook({});
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_FALSE(quantizer.loadCodebook("/nonexistent/codebook"));
    EXPECT_TRUE(quantizer.codebookReady);
}

TEST(QuantizerCodebookTest, FreshCodebookAfterAFailedLoadIsTheGeneratedOneAlone) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(5);
    EXPECT_FALSE(quantizer.loadCodebook("/nonexistent/codebook"));
    quantizer.initializeCodebook(4);
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{0.0, 90.0, 180.0, 270.0}));
}

}  // namespace
