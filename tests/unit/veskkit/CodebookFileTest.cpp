#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/CodebookFile.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

class CodebookFileTest : public testing::Test {
protected:
    std::vector<double> loaded(const std::string& content) {
        Vesk::Test::writeFile(path, content);
        return loadCodebook(path);
    }

    void expectRefused(const std::string& content, const std::string& message) {
        EXPECT_EQ(textOf<InputError>([&] { loaded(content); }), path + message) << content;
    }

    Vesk::Test::TemporaryFolder folder;
    std::string path = folder.path("codebook");
};

TEST_F(CodebookFileTest, TextIsTheLibrarysFile) {
    const std::vector<double> codebook{0.0, 33.333333333, 90.0, 123.456789, 359.99};
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.setCodebook(codebook);
    ASSERT_TRUE(quantizer.save(path));
    EXPECT_EQ(codebookText(codebook), Vesk::Test::readFile(path));
    EXPECT_EQ(codebookText({}), "");
}

TEST_F(CodebookFileTest, WhatIsWrittenIsReadBack) {
    const std::vector<double> codebook{0.0, 33.3333, 90.0, 123.457, 359.99};
    EXPECT_EQ(loaded(codebookText(codebook)), codebook);
}

TEST_F(CodebookFileTest, WhiteSpaceAroundNumbersAndBlankLinesAtTheEndDoNotCount) {
    EXPECT_EQ(loaded(" 0 \r\n90\t\r\n\n \n"), (std::vector<double>{0.0, 90.0}));
}

TEST_F(CodebookFileTest, RefusesWhatIsNoCodebook) {
    expectRefused("", ": found 0 directions, expected at least 2");
    expectRefused("7", ": found 1 directions, expected at least 2");
    expectRefused("0\nx\n", ":2: found \"x\", expected a direction from 0 to less than 360");
    expectRefused("0\n90 180\n",
                  ":2: found \"90 180\", expected a direction from 0 to less than 360");
    expectRefused("0\n360\n", ":2: found \"360\", expected a direction from 0 to less than 360");
    expectRefused("-1\n0\n", ":1: found \"-1\", expected a direction from 0 to less than 360");
    expectRefused("0\nnan\n", ":2: found \"nan\", expected a direction from 0 to less than 360");
    expectRefused("0\n\n90\n",
                  ":2: found a blank line, expected a direction from 0 to less than 360");
    expectRefused("0\n90\n90.0\n", ":3: found the direction 90 again, expected another one");
    std::string many;
    for (int k = 0; k < 361; ++k) many += std::to_string(k * 0.5) + "\n";
    expectRefused(many, ":361: found more than 360 directions, expected no more");
}

TEST_F(CodebookFileTest, RefusesWhatCannotBeRead) {
    EXPECT_NE(textOf<InputError>([&] { loadCodebook(folder.path("none")); }).find("none: "),
              std::string::npos);
    EXPECT_NE(textOf<InputError>([&] { loadCodebook(folder.path("")); }).find(": "),
              std::string::npos);
}

}  // namespace
}  // namespace Vesk::Kit
