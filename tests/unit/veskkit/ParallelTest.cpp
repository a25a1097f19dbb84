#include <veskkit/internal/Parallel.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <pthread.h>

namespace Vesk::Kit::internal {
namespace {

TEST(ParallelTest, EveryTaskRunsOnceAtAnyNumberOfThreads) {
    for (const unsigned threads : {0U, 1U, 2U, 7U, 64U}) {
        for (const std::size_t count : {0U, 1U, 2U, 100U}) {
            std::vector<int> runs(count);
            parallelFor(count, threads, [&](std::size_t i) { ++runs[i]; });
            EXPECT_EQ(runs, std::vector<int>(count, 1)) << threads << " threads";
        }
    }
}

TEST(ParallelTest, TheExceptionOfTheLowestTaskIsThrown) {
    for (const unsigned threads : {1U, 2U, 8U}) {
        for (int repetition = 0; repetition < 200; ++repetition) {
            std::string thrown;
            try {
                parallelFor(50, threads, [](std::size_t i) {
                    if (i % 7 == 3) throw std::runtime_error(std::to_string(i));
                });
            } catch (const std::runtime_error& failure) {
                thrown = failure.what();
            }
            ASSERT_EQ(thrown, "3") << threads << " threads";
        }
    }
}

/// While it lives, no thread can be started: its stack would not fit into the address space.
class NoMoreThreads {
public:
    NoMoreThreads() {
        EXPECT_EQ(::pthread_getattr_default_np(&usual), 0);
        pthread_attr_t attributes = usual;
        EXPECT_EQ(::pthread_attr_setstacksize(&attributes, std::size_t{1} << 50), 0);
        EXPECT_EQ(::pthread_setattr_default_np(&attributes), 0);
    }
    ~NoMoreThreads() { EXPECT_EQ(::pthread_setattr_default_np(&usual), 0); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t usual = {};
};

TEST(ParallelTest, ThisThreadDoesAllWhereTheSystemGivesNoOther) {
    std::vector<std::thread::id> runs(20);
    {
        const NoMoreThreads none;
        EXPECT_THROW(std::thread([] {}).join(), std::system_error);
        parallelFor(runs.size(), 4, [&](std::size_t i) { runs[i] = std::this_thread::get_id(); });
    }
    EXPECT_EQ(runs, std::vector<std::thread::id>(20, std::this_thread::get_id()));
}

TEST(ParallelTest, NothingBeginsOnceATaskHasThrown) {
    std::size_t begun = 0;
    EXPECT_THROW(parallelFor(100, 1,
                             [&](std::size_t i) {
                                 ++begun;
                                 if (i == 4) throw std::runtime_error("enough");
                             }),
                 std::runtime_error);
    EXPECT_EQ(begun, 5U);
}

TEST(ParallelTest, ZeroThreadsAreOneForEachProcessor) {
    EXPECT_GE(threadsFor(0), 1U);
    EXPECT_EQ(threadsFor(3), 3U);
}

}  // namespace
}  // namespace Vesk::Kit::internal
