// A recogniser that answers trace after trace in one process, in the memory that it began with.
// VESK_SOAK_TRACES says how many, 300,000 where it says nothing.

#include "../veskkit/Gestures.h"

#include <support/FailingAllocator.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/GestureTrainer.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace Vesk::Kit {
namespace {

long tracesToAnswer() {
    const char* const chosen = std::getenv("VESK_SOAK_TRACES");
    return chosen != nullptr ? std::atol(chosen) : 300000;
}

/// Bytes of the process that lie in memory.
long residentBytes() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

TEST(RecognizerSoak, MemoryStaysFlat) {
    TrainingOptions options;
    options.states = 8;
    options.subModels = 1;
    const std::vector<Trace> traces = Vesk::Test::drawnTraces(1, 3, 4);
    const GestureRecognizer recognizer(GestureTrainer(options).train(traces).model);
    const long count = tracesToAnswer();
    long recognized = 0;
    const auto answer = [&](long first, long end) {
        for (long i = first; i < end; ++i) {
            const Trace& trace = traces[static_cast<std::size_t>(i) % traces.size()];
            if (recognizer.recognize(trace).recognized()) ++recognized;
        }
    };
    const long warm = count / 10;
    answer(0, warm);
    const long blocks = Vesk::Test::blocksHeld();
    const long bytes = residentBytes();
    answer(warm, count);
    EXPECT_EQ(Vesk::Test::blocksHeld(), blocks);
    EXPECT_LT(residentBytes() - bytes, 1 << 20);
    EXPECT_GT(recognized, count / 2);
    std::cout << count << " traces, " << recognized << " recognised, " << residentBytes() / 1024
              << " KiB in memory, " << (residentBytes() - bytes) / 1024 << " more than after "
              << warm << '\n';
}

TEST(RecognizerSoak, FixedClassificationKeepsItsClusterers) {
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    Points points{{0, 0}, {1, 0}, {1, 1}};
    const long before = Vesk::Test::blocksHeld();
    for (int i = 0; i < 1000; ++i) quantizer.classify(points, 0.0F, false);
    EXPECT_GE(Vesk::Test::blocksHeld(), before + 1000);
    const long after = Vesk::Test::blocksHeld();
    for (int i = 0; i < 1000; ++i) quantizer.quantize(points, 0.0F, false);
    EXPECT_EQ(Vesk::Test::blocksHeld(), after);
}

}  // namespace
}  // namespace Vesk::Kit
