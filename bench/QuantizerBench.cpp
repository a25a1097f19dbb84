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

/// An iteration that looks at every centre for every angle; `x` and `y` are their unit vectors.
double iterateDirectly(const std::vector<double>& centres, const std::vector<double>& angles,
                       const std::vector<double>& x, const std::vector<double>& y) {
    std::vector<double> sumX(centres.size());
    std::vector<double> sumY(centres.size());
    for (std::size_t i = 0; i < angles.size(); ++i) {
        std::size_t nearest = 0;
        double least = 720.0;
        for (std::size_t k = 0; k < centres.size(); ++k) {
            const double d = std::fabs(angles[i] - centres[k]);
            const double distance = d < 360.0 - d ? d : 360.0 - d;
            if (distance < least) {
                least = distance;
                nearest = k;
            }
        }
        sumX[nearest] += x[i];
        sumY[nearest] += y[i];
    }
    return sumX[0] + sumY[0];
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
    const int iterations = 100;
    ours("learn 16 centres, 1,000,000 angles", [=] {
        ML::KMeansMotionVec clusterer(centres, *angles);
        clusterer.learn(iterations, 0.0);
        return clusterer.centres[0];
    });
    plain("learn 16 centres, 1,000,000 angles", [=] {
        std::vector<double> x;
        std::vector<double> y;
        for (const double angle : (*angles)[0]) {
            x.push_back(std::cos(angle * 0.017453292519943295));
            y.push_back(std::sin(angle * 0.017453292519943295));
        }
        double sum = 0.0;
        for (int i = 0; i < iterations; ++i) sum += iterateDirectly(centres, (*angles)[0], x, y);
        return sum;
    });
}

}  // namespace Vesk::Bench
