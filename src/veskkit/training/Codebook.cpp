#include <veskkit/training/Codebook.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using Vesk::ML::VectorQuantizer2D;

namespace {

/// The traces as a quantiser takes them, those without a direction left out.
std::list<Points> prepared(const std::vector<Trace>& traces, const Preparation& preparation) {
    const Resampler resampler(preparation);
    const VectorQuantizer2D quantizer = [] {
        VectorQuantizer2D any;
        any.initializeCodebook(1);
        return any;
    }();
    std::list<Points> result;
    for (const Trace& trace : traces) {
        Points points = resampler.resample(trace);
        if (!quantizer.quantize(points, 0.0f, false).empty()) result.push_back(std::move(points));
    }
    return result;
}

double distance(double x, double y) {
    const double difference = std::fabs(x - y);
    return std::min(difference, 360.0 - difference);
}

CodebookUse useOf(std::vector<double> directions, const std::list<Points>& traces) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook(directions);
    CodebookUse use{directions, std::vector<std::size_t>(directions.size()), 0.0};
    std::size_t steps = 0;
    double sum = 0.0;
    for (Points points : traces) {
        const std::vector<int> symbols = quantizer.quantize(points, 0.0f, false);
        // The filter for repeated positions has nothing left to do where there is a step a symbol.
        points.erase(std::unique(points.begin(), points.end()), points.end());
        const std::vector<double> angles = quantizer.convertSequence(points);
        for (std::size_t t = 0; t < std::min(symbols.size(), angles.size()); ++t) {
            const auto symbol = static_cast<std::size_t>(symbols[t]);
            ++use.steps[symbol];
            sum += distance(angles[t], directions[symbol]);
            ++steps;
        }
    }
    if (steps > 0) use.meanDistance = sum / static_cast<double>(steps);
    return use;
}

VectorQuantizer2D evenQuantizer(int symbols) {
    if (symbols < 1 || symbols > 360) {
        throw InputError(joined("found ", symbols, " for symbols, expected 1 to 360"));
    }
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(symbols);
    quantizer.codebookReady = true;
    return quantizer;
}

}  // namespace

CodebookUse evenCodebook(const std::vector<Trace>& traces, int symbols,
                         const Preparation& preparation) {
    return useOf(evenQuantizer(symbols).codebook, prepared(traces, preparation));
}

CodebookUse learntCodebook(const std::vector<Trace>& traces, int symbols,
                           const Preparation& preparation) {
    VectorQuantizer2D quantizer = evenQuantizer(symbols);
    const std::list<Points> steps = prepared(traces, preparation);
    if (!steps.empty()) quantizer.learnCodebook(steps, 0.0f);
    std::vector<double> directions;
    for (const double direction : quantizer.codebook) {
        const double stored = internal::storedValue(direction);
        directions.push_back(stored < 360.0 ? stored : 0.0);
    }
    std::sort(directions.begin(), directions.end());
    directions.erase(std::unique(directions.begin(), directions.end()), directions.end());
    return useOf(std::move(directions), steps);
}

}  // namespace Vesk::Kit
