#include "Gestures.h"

#include <support/BitEqual.h>
#include <veskkit/traces/Resampler.h>
#include <veskkit/training/internal/Discrimination.h>
#include <veskkit/training/internal/TrainedSet.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Vesk::Kit::internal {
namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::Test::bitEqual;
using Vesk::Test::drawnTraces;

TrainingOptions quick(int rounds) {
    TrainingOptions options;
    options.symbols = 16;
    options.states = 10;
    options.thresholdStates = 4;
    options.subModels = 2;
    options.preparation.points = 17;
    options.acceptanceRatio = 1.0;
    options.discrimination = rounds;
    return options;
}

std::vector<const Trace*> pointersTo(const std::vector<Trace>& traces) {
    std::vector<const Trace*> pointers;
    pointers.reserve(traces.size());
    for (const Trace& trace : traces) pointers.push_back(&trace);
    return pointers;
}

TrainedSet setOf(const std::vector<Trace>& traces, const TrainingOptions& options) {
    TrainingSteps unwatched;
    return trainSet(pointersTo(traces), options, unwatched);
}

/// Gestures trained each by itself, and then told apart.
struct Both {
    TrainedSet set;
    std::vector<GestureModels> apart;
};

Both trained(const std::vector<Trace>& traces, const TrainingOptions& options) {
    Both result{setOf(traces, options), {}};
    result.apart = result.set.gestures;
    std::vector<const GestureSamples*> samples;
    for (const GestureSamples& gesture : result.set.samples) samples.push_back(&gesture);
    discriminate(result.apart, samples, result.set.codebook, options);
    return result;
}

bool sameEmissions(const std::vector<GestureModels>& x, const std::vector<GestureModels>& y) {
    for (std::size_t g = 0; g < x.size(); ++g) {
        for (std::size_t m = 0; m < x[g].fine.size(); ++m) {
            if (!bitEqual(x[g].fine[m].b, y[g].fine[m].b)) return false;
        }
    }
    return true;
}

/// Per trace, how much likelier its gesture's models find it than the others' do, ln.
std::vector<double> leads(const std::vector<GestureModels>& models, const TrainedSet& set) {
    std::vector<double> result;
    for (std::size_t g = 0; g < models.size(); ++g) {
        for (const Sample& sample : set.samples[g].samples) {
            double own = -1e300;
            double other = -1e300;
            for (std::size_t h = 0; h < models.size(); ++h) {
                for (const LeftRightHMM& model : models[h].fine) {
                    double& side = h == g ? own : other;
                    side = std::max(side, model.logLikelihood(sample.symbols));
                }
            }
            result.push_back(own - other);
        }
    }
    return result;
}

/// What training lowers: a trace counts the more, the less it leads.
double loss(const std::vector<double>& leads) {
    double sum = 0.0;
    for (const double lead : leads) sum += 1.0 / (1.0 + std::exp((lead - 10.0) / 2.0));
    return sum;
}

/// Corners and squares of which some lack their last edge but a stub: hard to tell apart.
std::vector<Trace> alike(std::uint64_t seed) {
    Vesk::Test::Random random(seed);
    std::vector<Trace> traces;
    for (int i = 0; i < 60; ++i) {
        Trace trace;
        trace.gesture = i % 2 == 0 ? "corner" : "hook";
        trace.user = "u";
        const double stub = 0.5 * random.unit();
        Points shape{{0, 1}, {0, 0}, {1, 0}};
        if (i % 2 != 0) shape.push_back({1, 0.05 + stub});
        trace.points = Vesk::Test::drawn(shape, random, 0.04);
        traces.push_back(trace);
    }
    return traces;
}

TEST(DiscriminationTest, NothingChangesWithoutRounds) {
    const Both both = trained(alike(1), quick(0));
    EXPECT_TRUE(sameEmissions(both.set.gestures, both.apart));
}

TEST(DiscriminationTest, NothingChangesForASingleGesture) {
    std::vector<Trace> traces = alike(1);
    for (Trace& trace : traces) trace.gesture = "one";
    const Both both = trained(traces, quick(8));
    EXPECT_TRUE(sameEmissions(both.set.gestures, both.apart));
}

TEST(DiscriminationTest, NothingChangesWhereGesturesAreFarApart) {
    std::vector<Trace> traces;
    for (const Trace& trace : drawnTraces(1, 1, 20)) {
        if (trace.gesture == "square" || trace.gesture == "check") traces.push_back(trace);
    }
    TrainingOptions options = quick(8);
    options.preparation.points = 61;
    const Both both = trained(traces, options);
    const std::vector<double> before = leads(both.set.gestures, both.set);
    ASSERT_GT(*std::min_element(before.begin(), before.end()), 30.0);
    EXPECT_TRUE(sameEmissions(both.set.gestures, both.apart));
}

TEST(DiscriminationTest, TracesLeadByMore) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        SCOPED_TRACE(seed);
        const Both both = trained(alike(seed), quick(24));
        EXPECT_LT(loss(leads(both.apart, both.set)),
                  0.8 * loss(leads(both.set.gestures, both.set)));
    }
}

TEST(DiscriminationTest, EmissionsStayFlooredAndProper) {
    const TrainingOptions options = quick(24);
    const Both both = trained(alike(2), options);
    EXPECT_FALSE(sameEmissions(both.set.gestures, both.apart));
    for (std::size_t g = 0; g < both.apart.size(); ++g) {
        for (std::size_t m = 0; m < both.apart[g].fine.size(); ++m) {
            const LeftRightHMM& model = both.apart[g].fine[m];
            EXPECT_TRUE(bitEqual(model.a, both.set.gestures[g].fine[m].a));
            for (int i = 0; i < model.b.rows; ++i) {
                double sum = 0.0;
                for (int k = 0; k < model.b.cols; ++k) {
                    EXPECT_GE(model.b(i, k), options.emissionFloor / (1.0 + 16 * 1e-3));
                    sum += model.b(i, k);
                }
                EXPECT_NEAR(sum, 1.0, 1e-12);
            }
        }
    }
}

TEST(DiscriminationTest, AnyNumberOfThreadsGivesTheSameBits) {
    TrainingOptions options = quick(12);
    options.threads = 1;
    const Both alone = trained(alike(3), options);
    for (const unsigned threads : {2U, 5U}) {
        options.threads = threads;
        EXPECT_TRUE(sameEmissions(alone.apart, trained(alike(3), options).apart));
    }
}

TEST(DiscriminationTest, LongTracesAreToldApartToo) {
    TrainingOptions options = quick(8);
    options.preparation.points = 500;  // their plain probability is 0.0
    const Both both = trained(alike(4), options);
    for (const GestureModels& gesture : both.apart) {
        for (const LeftRightHMM& model : gesture.fine) {
            for (const double value : model.b.data) ASSERT_TRUE(value > 0.0 && value <= 1.0);
        }
    }
    EXPECT_FALSE(sameEmissions(both.set.gestures, both.apart));
}

TEST(DiscriminationTest, AGestureThatIsUnknownWasNoRival) {
    std::vector<Trace> all = alike(5);
    for (const Trace& trace : drawnTraces(1, 1, 20)) {
        if (trace.gesture == "caret") all.push_back(trace);
    }
    std::vector<Trace> others;
    for (const Trace& trace : all) {
        if (trace.gesture != "hook") others.push_back(trace);
    }
    const TrainingOptions options = quick(8);
    const RecognitionModel without = setOf(all, options).composeWithout("hook");
    const RecognitionModel never = setOf(others, options).compose();
    ASSERT_EQ(without.gestures().size(), never.gestures().size());
    for (std::size_t m = 0; m < never.gestures().size(); ++m) {
        EXPECT_TRUE(bitEqual(without.gestures()[m]->b, never.gestures()[m]->b));
    }
}

}  // namespace
}  // namespace Vesk::Kit::internal
