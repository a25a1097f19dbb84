#include "Program.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace {

using namespace Vesk::Test;
using testing::HasSubstr;

class OnATerminal : public WithTraces {};

/// A terminal's two ends.
class Terminal {
public:
    Terminal() : master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return;
        slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~Terminal() {
        if (slave >= 0) close(slave);
        if (master >= 0) close(master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool usable() const { return slave >= 0; }
    int end() const { return slave; }

    /// What the program wrote, once it has ended.
    std::string text() {
        close(slave);
        slave = -1;
        std::string result;
        char buffer[4096];
        for (ssize_t count; (count = read(master, buffer, sizeof buffer)) > 0;) {
            result.append(buffer, static_cast<std::size_t>(count));
        }
        return result;
    }

private:
    int master;
    int slave = -1;
};

TEST_F(OnATerminal, TrainShowsAProgressBarThatGoesAway) {
    for (const bool coloured : {true, false}) {
        SCOPED_TRACE(coloured);
        Terminal terminal;
        if (!terminal.usable()) GTEST_SKIP() << "no pseudo-terminal";
        const int status = await(start(joined({"train", traces, "-o", path("m.txt")}, smallModel()),
                                       {-1, -1, terminal.end()},
                                       {"TERM=xterm", coloured ? "NO_COLOR=" : "NO_COLOR=1"}));
        const std::string text = terminal.text();

        EXPECT_EQ(status, 0);
        EXPECT_THAT(text, HasSubstr("\rtraining "));
        EXPECT_THAT(text, HasSubstr("100 %"));
        EXPECT_THAT(text, testing::EndsWith("\r\033[K"));
        EXPECT_EQ(text.find("\033[36m") != std::string::npos, coloured);
    }
}

TEST_F(OnATerminal, NoProgressBarIsShownQuietly) {
    Terminal terminal;
    if (!terminal.usable()) GTEST_SKIP() << "no pseudo-terminal";
    const int status =
        await(start(joined({"train", traces, "-o", path("m.txt"), "--quiet"}, smallModel()),
                    {-1, -1, terminal.end()}, {"TERM=xterm"}));

    EXPECT_EQ(status, 0);
    EXPECT_EQ(terminal.text(), "");
}

// Long enough that there is something to tell; what instruments memory takes a multiple of it.
TEST_F(OnATerminal, TrainShowsHowFastItGoesAndHowLongItWillTake) {
    Terminal terminal;
    if (!terminal.usable()) GTEST_SKIP() << "no pseudo-terminal";
#ifdef __SANITIZE_ADDRESS__
    const char* const states = "50";
#else
    const char* const states = "200";
#endif
    const int status = await(start({"train", traces, "-o", path("m.txt"), "--states", states,
                                    "--symbols", "360", "--iterations", "20", "--threads", "1"},
                                   {-1, -1, terminal.end()}, {"TERM=xterm", "NO_COLOR=1"}));

    EXPECT_EQ(status, 0);
    EXPECT_THAT(terminal.text(),
                testing::ContainsRegex(" [0-9]+ %  [0-9.]+ steps/s  [0-9]+:[0-9][0-9] left"));
}

TEST_F(OnATerminal, NoProgressBarIsShownWhereNothingCanBeErased) {
    Terminal terminal;
    if (!terminal.usable()) GTEST_SKIP() << "no pseudo-terminal";
    const int status = await(start(joined({"train", traces, "-o", path("m.txt")}, smallModel()),
                                   {-1, -1, terminal.end()}, {"TERM=dumb"}));

    EXPECT_EQ(status, 0);
    EXPECT_EQ(terminal.text(), "");
}

TEST_F(OnATerminal, ResultsStandWhereTheProgressBarWasErased) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {joined({"train", traces, "-o", path("m.txt")}, smallModel()), "36 traces of"},
        {joined({"evaluate", traces, "--no-unknown"}, smallModel()), "36 traces of"},
        {{"doctor", traces}, ""}};
    for (const auto& [arguments, result] : cases) {
        SCOPED_TRACE(arguments.front());
        Terminal terminal;
        if (!terminal.usable()) GTEST_SKIP() << "no pseudo-terminal";
        const auto program = start(arguments, {-1, terminal.end(), terminal.end()}, {"TERM=xterm"});
        const std::string text = terminal.text();
        await(program);

        const std::size_t erased = text.rfind("\r\033[K");
        ASSERT_NE(erased, std::string::npos);
        EXPECT_THAT(text.substr(erased), testing::StartsWith("\r\033[K" + result));
        EXPECT_THAT(text.substr(erased), HasSubstr("\n"));
    }
}

}  // namespace
