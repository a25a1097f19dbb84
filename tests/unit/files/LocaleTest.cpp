// A host may set any locale: files stay as they are, lines follow the stream that they go to.

#include "Subjects.h"

#include <support/Capture.h>
#include <support/GlobalLocale.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <locale>
#include <string>

namespace Vesk::Test {
namespace {

/// Decimal commas, groups of two digits, and other words for truth.
class Elsewhere : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\2"; }
    std::string do_truename() const override { return "wahr"; }
};

std::locale elsewhere() { return {std::locale::classic(), new Elsewhere}; }

TEST(Locale, OfTheHostChangesNoFile) {
    Subjects subjects;
    const TemporaryFolder folder;
    for (const Kind kind : allKinds) {
        SCOPED_TRACE(static_cast<int>(kind));
        ASSERT_TRUE(save(subjects, kind, folder.path("classic")));
        const std::string classic = readFile(folder.path("classic"));
        const GlobalLocale there(elsewhere());
        EXPECT_TRUE(save(subjects, kind, folder.path("saved")));
        EXPECT_EQ(readFile(folder.path("saved")), classic);
        write(subjects, kind, folder.path("written"));
        EXPECT_EQ(readFile(folder.path("written")), classic);
        if (kind == Kind::Node) continue;
        copyThroughReader(kind, folder.path("classic"), folder.path("copy"));
        EXPECT_EQ(readFile(folder.path("copy")), classic);
    }
}

TEST(Locale, OfAStreamIsItsLines) {
    Subjects subjects;
    const GlobalLocale there(elsewhere());
    const Capture capture;
    const std::locale commas = elsewhere();
    const std::locale before = std::cout.imbue(commas);
    subjects.general.pi = {0.25, 1234.5};
    subjects.general.print();
    subjects.recognition.check({0, 1});
    EXPECT_TRUE(std::cout.imbue(before) == commas);
    EXPECT_THAT(capture.text(), testing::HasSubstr("\n0,25 1,23e+03 \n"));
    EXPECT_THAT(capture.text(), testing::ContainsRegex("threshold = 0,0[0-9]+\n"));
}

TEST(Locale, OfAStreamThatIsHandedOverStaysItsOwn) {
    Subjects subjects;
    std::stringstream classic;
    subjects.recognition.writeToStream(classic, nullptr);
    std::stringstream out;
    out.imbue(elsewhere());
    subjects.recognition.writeToStream(out, nullptr);
    EXPECT_EQ(out.str(), classic.str());
    out << 0.5;
    EXPECT_THAT(out.str(), testing::EndsWith("0,5"));
}

}  // namespace
}  // namespace Vesk::Test
