#include <vesk/base/internal/InputFile.h>

#include <support/BitEqual.h>
#include <support/Files.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

// Numbers are read as a stream of the standard library reads them: the same values, failures and
// text left over.

namespace {

using namespace Vesk::Test;
using Vesk::ML::internal::InputFile;

/// What a file's characters are read in: the text of a token may be cut there.
constexpr std::size_t bufferSize = 8191;

enum class Read { Number, Whole, Word, Line };

/// The same file, read in two ways side by side.
class BothWays {
public:
    explicit BothWays(const std::string& path) : file(path.c_str()), stream(path) {
        stream.imbue(std::locale::classic());
    }

    testing::AssertionResult areSame(Read what) {
        switch (what) {
            case Read::Number: return sameNumber();
            case Read::Whole: return sameWhole();
            case Read::Word: return sameWord();
            case Read::Line: return sameLine();
        }
        return testing::AssertionFailure() << "not a way to read";
    }

    bool good() const { return stream.good(); }

private:
    testing::AssertionResult sameNumber() {
        double expected = 7.5;
        double actual = 7.5;
        const bool going = static_cast<bool>(stream >> expected);
        const bool goes = file.read(actual);
        if (const auto same = bitEqual(expected, actual); !same) return same;
        return sameState(going, goes) << " after " << expected;
    }

    testing::AssertionResult sameWhole() {
        int expected = 75;
        int actual = 75;
        const bool going = static_cast<bool>(stream >> expected);
        const bool goes = file.read(actual);
        if (expected != actual) {
            return testing::AssertionFailure() << "expected " << expected << ", got " << actual;
        }
        return sameState(going, goes) << " after " << expected;
    }

    testing::AssertionResult sameWord() {
        std::string expected = "before";
        std::string actual = "before";
        const bool going = static_cast<bool>(stream >> expected);
        const bool goes = file.readWord(actual);
        return sameText(expected, actual, going, goes);
    }

    testing::AssertionResult sameLine() {
        std::string expected = "before";
        std::string actual = "before";
        std::getline(stream, expected);
        // Returns whether the file can be read at all.
        const bool readable = file.readLine(actual);
        return sameText(expected, actual, true, readable);
    }

    testing::AssertionResult sameText(const std::string& expected, const std::string& actual,
                                      bool going, bool goes) {
        if (expected != actual) {
            return testing::AssertionFailure()
                   << "expected \"" << expected << "\", got \"" << actual << '"';
        }
        return sameState(going, goes) << " after \"" << expected << '"';
    }

    testing::AssertionResult sameState(bool going, bool goes) {
        if (going != goes) {
            return testing::AssertionFailure() << "expected " << going << ", got " << goes;
        }
        if (stream.eof() != file.atEnd()) {
            return testing::AssertionFailure() << "expected atEnd() = " << stream.eof();
        }
        return testing::AssertionSuccess();
    }

    InputFile file;
    std::ifstream stream;
};

class NumberReadingTest : public testing::Test {
protected:
    /// Reads `numbers` numbers, fewer where one fails, and the lines that are left.
    testing::AssertionResult readsAlike(std::size_t numbers) {
        BothWays both(path);
        for (std::size_t n = 0; n < numbers && both.good(); ++n) {
            if (const auto same = both.areSame(Read::Number); !same) {
                return testing::AssertionFailure() << "number " << n << ": " << same.message();
            }
        }
        // After a failure there is nothing more to be had.
        do {
            if (const auto same = both.areSame(Read::Line); !same) {
                return testing::AssertionFailure() << "line left: " << same.message();
            }
        } while (both.good());
        if (const auto same = both.areSame(Read::Number); !same) {
            return testing::AssertionFailure() << "beyond the end: " << same.message();
        }
        return testing::AssertionSuccess();
    }

    /// The same after every count of numbers up to `most`.
    testing::AssertionResult allReadAlike(const std::string& text, std::size_t most) {
        writeFile(path, text);
        for (std::size_t numbers = 0; numbers <= most; ++numbers) {
            const auto same = readsAlike(numbers);
            if (!same) return testing::AssertionFailure() << numbers << " of " << same.message();
        }
        return testing::AssertionSuccess();
    }

    const TemporaryFolder folder;
    const std::string path = folder.path("numbers");
};

/// Texts that are numbers, or nearly.
const std::vector<std::string> tokens = [] {
    std::istringstream words(
        "0 1 12 -1 -0 +1 +0.5 --1 +-1 -+1 - + . -. .5 -.5 +.5 5. -5. 5.e3 .5e3 .e3 0.1 -0.1 00012 "
        "-007.50 1e5 1E5 1e+5 1e-5 1E-05 1e 1e+ 1e- 1e5.5 1e5e5 e5 -e5 1.2.3 1..2 1-2 1+2 1,2 "
        "1,234.5 1'000 1; 12abc abc -abc 1a 1f 1.5f 1L 1d5 inf -inf +inf INF infinity nan -nan NAN "
        "nan(1) 0x10 0X1p4 -0x1 0x 0b1 1p4 1/2 1:2 1% $1 1_000 1e400 -1e400 1e308 2e308 -2e308 "
        "1.7976931348623157e308 1.7976931348623158e308 1.7976931348623159e308 1e-400 -1e-400 "
        "5e-324 -5e-324 4.9406564584124654e-324 2.4703282292062327e-324 2.4703282292062328e-324 "
        "2e-324 2.2250738585072014e-308 2.2250738585072011e-308 1e-310 0e999999999 0e-999999999 "
        "1e99999999999999999999 1e-99999999999999999999 0.30000000000000004 9007199254740993 "
        "9007199254740992.99999999999999999 123456789012345678901234567890 "
        "0.1000000000000000055511151231257827021181583404541015625");
    std::vector<std::string> all(std::istream_iterator<std::string>(words), {});
    const std::string sevens(400, '7');
    const std::string zeros(400, '0');
    all.insert(all.end(),
               {"- 1", sevens, "-" + sevens, "0." + sevens, sevens + "." + sevens, sevens + "e-400",
                "0." + zeros + "1", zeros + "1", zeros + "." + zeros, "1" + zeros + "e-400"});
    // What other locales or encodings may take for a digit or a blank.
    all.insert(all.end(), {std::string("1\0002", 3), std::string(1, '\0'), "\xa0", "\xa0 1",
                           "1\xa0", "\x85", "1\x1c", "\x1c", "\x1c 1", "\xef\xbb\xbf", "\xd9\xa1"});
    return all;
}();

const std::string spaces[] = {" ", "\t", "\n", "\v", "\f", "\r", "\r\n", " \t\n\v\f\r ", "\n\n"};

TEST_F(NumberReadingTest, EveryTextIsReadAsByAStream) {
    for (const std::string& token : tokens) {
        SCOPED_TRACE(testing::PrintToString(token));
        for (const std::string& space : spaces) {
            SCOPED_TRACE(testing::PrintToString(space));
            ASSERT_TRUE(allReadAlike(token, 2)) << "alone";
            ASSERT_TRUE(allReadAlike(token + space, 2)) << "before space";
            ASSERT_TRUE(allReadAlike(space + token + space, 2)) << "between spaces";
            ASSERT_TRUE(allReadAlike(token + space + token + space + "8.25" + space, 4)) << "twice";
            ASSERT_TRUE(allReadAlike("1.5" + space + token + space + "2.5 rest", 4)) << "between";
        }
    }
}

TEST_F(NumberReadingTest, WithoutNumbersThereIsNothingToRead) {
    ASSERT_TRUE(allReadAlike("", 2));
    for (const std::string& space : spaces) {
        SCOPED_TRACE(testing::PrintToString(space));
        ASSERT_TRUE(allReadAlike(space, 2));
    }
}

TEST_F(NumberReadingTest, AFailedConversionStoresWhatAStreamStores) {
    const auto stored = [this](const std::string& text, bool expected) {
        // What is read first has to be fetched: the stream alone would see to it.
        writeFile(path, "6.5 " + text);
        InputFile file(path.c_str());
        double value = 0.0;
        EXPECT_TRUE(file.read(value));
        value = 7.5;
        EXPECT_EQ(file.read(value), expected) << text;
        return value;
    };
    EXPECT_TRUE(bitEqual(0.0, stored("abc 1\n", false)));
    EXPECT_TRUE(bitEqual(0.0, stored("1e 1\n", false)));
    EXPECT_TRUE(bitEqual(0.0, stored("nan 1\n", false)));
    EXPECT_TRUE(bitEqual(0.0, stored("inf 1\n", false)));
    EXPECT_TRUE(bitEqual(0.0, stored("0x10\n", true)));
    EXPECT_TRUE(bitEqual(12.0, stored("12abc\n", true)));
    EXPECT_TRUE(bitEqual(1.7976931348623157e308, stored("1e400 1\n", false)));
    EXPECT_TRUE(bitEqual(-1.7976931348623157e308, stored("-1e400 1\n", false)));
    EXPECT_TRUE(bitEqual(0.0, stored("1e-400 1\n", true)));
    EXPECT_TRUE(bitEqual(-0.0, stored("-0 1\n", true)));
    EXPECT_TRUE(bitEqual(7.5, stored("", false)));
}

TEST_F(NumberReadingTest, TokensAreReadAcrossTheEndOfTheBuffer) {
    const std::string crossing[] = {"1",      "-12.5",   "3.25e-5", "-4.9406564584124654e-324",
                                    "1e+400", "12abc",   "1.2.3",   "0x10",
                                    "1e",     "+17.125", "-",       "123456789.123456789"};
    for (const std::string& token : crossing) {
        for (const std::size_t buffers : {1, 2}) {
            for (std::size_t before = 0; before <= token.size() + 2; ++before) {
                SCOPED_TRACE(token + ", " + std::to_string(before) + " characters before the end");
                const std::size_t begin = buffers * bufferSize - before;
                for (const char* behind : {"", "\n", " \n", "\n\n 6.5\n7", " x"}) {
                    const std::string spaced(begin, ' ');
                    ASSERT_TRUE(allReadAlike(spaced + token + behind, 3)) << "after spaces";
                }
                std::string numbers(begin - 100, ' ');
                while (numbers.size() + 2 <= begin) numbers += "3\n";
                numbers.append(begin - numbers.size(), ' ');
                writeFile(path, numbers + token + "\n6.5\n7");
                const std::size_t count = 50;
                for (std::size_t more = 0; more <= 3; ++more) {
                    ASSERT_TRUE(readsAlike(count + more)) << "after numbers, " << more;
                }
            }
        }
    }
}

TEST_F(NumberReadingTest, SpacesAreSkippedAcrossTheEndOfTheBuffer) {
    for (std::size_t length = bufferSize - 4; length <= bufferSize + 4; ++length) {
        for (const char* space : {"\n", "\t ", "\r\n"}) {
            SCOPED_TRACE(std::to_string(length) + testing::PrintToString(space));
            std::string text = "2.5";
            while (text.size() < length) text += space;
            ASSERT_TRUE(allReadAlike(text + "-3.5\n4", 4));
        }
    }
}

/// A number as programs write it, or nearly one.
std::string randomToken(Random& random, double odd) {
    if (random.chance(odd)) {
        return tokens[static_cast<std::size_t>(
            random.integer(0, static_cast<int>(tokens.size()) - 1))];
    }
    const auto digits = [&random](int most) {
        std::string result;
        for (int n = random.integer(1, most); n > 0; --n) {
            result += static_cast<char>('0' + random.integer(0, 9));
        }
        return result;
    };
    std::string token = random.chance(0.3) ? "-" : "";
    token += digits(random.chance(0.1) ? 25 : 4);
    if (random.chance(0.7)) token += "." + digits(random.chance(0.5) ? 20 : 6);
    if (random.chance(0.3)) {
        token += random.chance(0.8) ? "e" : "E";
        if (random.chance(0.7)) token += random.chance(0.7) ? "-" : "+";
        token += digits(random.chance(0.05) ? 4 : 2);
    }
    if (random.chance(odd)) {
        const std::string letters = "+-.eExXpnaif0 \n,_";
        const auto letter = letters[static_cast<std::size_t>(
            random.integer(0, static_cast<int>(letters.size()) - 1))];
        token.insert(static_cast<std::size_t>(random.integer(0, static_cast<int>(token.size()))), 1,
                     letter);
    }
    return token;
}

std::string randomText(Random& random, int count, double odd) {
    std::string text;
    for (int n = 0; n < count; ++n) {
        text += randomToken(random, odd);
        text += random.chance(0.7) ? " " : spaces[random.integer(0, 8)];
    }
    // Every other text ends with its last number.
    if (!text.empty() && random.chance(0.5)) text.pop_back();
    return text;
}

TEST_F(NumberReadingTest, RandomTextsAreReadAsByAStream) {
    for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const double odd = random.chance(0.5) ? 0.0 : 0.1;
        const int count = random.chance(0.05) ? 3000 : random.integer(0, 30);
        writeFile(path, randomText(random, count, odd));
        ASSERT_TRUE(readsAlike(static_cast<std::size_t>(count) + 2));
        ASSERT_TRUE(readsAlike(static_cast<std::size_t>(random.integer(0, count + 1))));
    }
}

TEST_F(NumberReadingTest, NumbersAmongWordsAndLinesAreReadAsByAStream) {
    for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int count = random.chance(0.05) ? 3000 : random.integer(0, 30);
        writeFile(path, randomText(random, count, random.chance(0.5) ? 0.02 : 0.2));
        BothWays both(path);
        for (int n = 0; n < count + 3; ++n) {
            constexpr Read ways[] = {Read::Number, Read::Number, Read::Number,
                                     Read::Whole,  Read::Word,   Read::Line};
            const Read way = ways[random.integer(0, 5)];
            ASSERT_TRUE(both.areSame(way)) << n << ", in way " << static_cast<int>(way);
        }
    }
}

TEST_F(NumberReadingTest, WholeTablesAreReadAsByAStream) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int count = random.integer(0, 4000);
        writeFile(path, randomText(random, count, random.chance(0.7) ? 0.0 : 0.001));
        std::vector<double> expected(static_cast<std::size_t>(count) + 3, 7.5);
        std::vector<double> actual = expected;
        std::ifstream stream(path);
        stream.imbue(std::locale::classic());
        for (double& value : expected) {
            if (!(stream >> value)) break;
        }
        InputFile file(path.c_str());
        file.readValues(actual.data(), actual.size());
        ASSERT_TRUE(bitEqual(expected, actual));
        ASSERT_EQ(stream.eof(), file.atEnd());
    }
}

}  // namespace
