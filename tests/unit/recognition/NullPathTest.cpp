#include <vesk/hmm/HMM.h>
#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

// A null path is one that cannot be opened.

namespace {

char* const nowhere = nullptr;

TEST(NullPath, ReadersFindNothing) {
    EXPECT_EQ(Vesk::ML::load(nowhere), nullptr);
    EXPECT_EQ(Vesk::ML::loadLR(nowhere), nullptr);
    Vesk::ML::RecognitionModelHMM model;
    EXPECT_FALSE(model.load(nowhere));
    EXPECT_EQ(model.recognitionHMM, nullptr);
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    EXPECT_FALSE(quantizer.loadCodebook(nowhere));
    EXPECT_TRUE(quantizer.codebook.empty());
}

TEST(NullPath, WritersAreSilent) {
    Vesk::ML::LeftRightHMM gesture(1, 1, 1);
    EXPECT_NO_THROW(gesture.write(nowhere));
    EXPECT_NO_THROW(gesture.HMM::write(nowhere));
    Vesk::ML::RecognitionModelHMM model({&gesture}, 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_NO_THROW(model.write(nowhere));
    EXPECT_NO_THROW(model.exportNode(nowhere));
    Vesk::ML::VectorQuantizer2D quantizer;
    EXPECT_FALSE(quantizer.printCodebook(nowhere));
}

}  // namespace
