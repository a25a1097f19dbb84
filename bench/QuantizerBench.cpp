#include "Pair.h"
#include "Workload.h"

#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <cmath>

namespace Vesk::Bench {
namespace {

using Trace = std::vector<std::vector<double>>;

Trace walk(Workload& random, int points) {
    Trace trace;
    double x = 0.0;
    double y = 0.0;
    for (int i = 0; i < points; ++i) {
        x += random.uniform() - 0.4;
        y += random.uniform() - 0.5;
        trace.push_back({x, y});
    }
    return trace;
}

/// The index of the nearest centre, looking at every centre for every angle.
double assignDirectly(const std::vector<double>& centres, const std::vector<double>& angles) {
    double sum = 0.0;
    for (const double angle : angles) {
        int nearest = 0;
        double least = 720.0;
        for (std::size_t k = 0; k < centres.size(); ++k) {
            const double d = std::fabs(angle - centres[k]);
            const double distance = d < 360.0 - d ? d : 360.0 - d;
            if (distance < least) {
                least = distance;
                nearest = static_cast<int>(k);
            }
        }
        sum += nearest;
    }
    return sum;
}

}  // namespace

void registerQuantizer() {
    Workload random(4);
    const auto quantizer = std::make_shared<ML::VectorQuantizer2D>();
    quantizer->initializeCodebook(16);
    const auto trace = std::make_shared<Trace>(walk(random, 1000));
    ours("classify 1000 points", [=] { return quantizer->quantize(*trace, 0.0F, false).size(); });
    plain("classify 1000 points", [=] { return quantizer->convertSequence(*trace).size(); });

    const auto angles = std::make_shared<std::vector<std::vector<double>>>(1);
    for (int i = 0; i < 1000000; ++i) (*angles)[0].push_back(360.0 * random.uniform());
    std::vector<double> centres;
    for (int k = 0; k < 16; ++k) centres.push_back(360.0 * random.uniform());
    const int iterations = 10;
    ours("learn 16 centres, 1,000,000 angles", [=] {
        ML::KMeansMotionVec clusterer(centres, *angles);
        clusterer.learn(iterations, 0.0);
        return clusterer.centres[0];
    });
    plain("learn 16 centres, 1,000,000 angles", [=] {
        double sum = 0.0;
        for (int i = 0; i < iterations; ++i) sum += assignDirectly(centres, (*angles)[0]);
        return sum;
    });
}

}  // namespace Vesk::Bench
