#include <vesk/quantizer/VectorQuantizer2D.h>

#include <vesk/base/internal/KeptForever.h>
#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/internal/Directions.h>
#include <vesk/quantizer/internal/TraceFilters.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <new>
#include <utility>

namespace Vesk::ML {
namespace {

using Traces = std::list<internal::Trace>;

/// The threshold below which the clusterer stops, in degrees.
constexpr double largestMovement = 1.0;

/// Tells standard output what the fixed operation tells.
void reportEvent(CodebookTrainingEvent event, std::size_t count) {
    switch (event) {
        case CodebookTrainingEvent::AfterEqFilter:
            std::cout << count << " positions after eq filter" << std::endl;
            return;
        case CodebookTrainingEvent::AfterProxFilter:
            std::cout << count << " positions after prox filter" << std::endl;
            return;
        case CodebookTrainingEvent::EndOfTrace: std::cout << std::endl; return;
    }
}

/// One row of directions a trace.
std::vector<std::vector<double>> directionRows(const Traces& traces, float proxFilterThreshold,
                                               const CodebookTrainingObserver& observer) {
    std::vector<std::vector<double>> rows;
    for (const internal::Trace& trace : traces) {
        const internal::Positions eq = internal::eqFiltered(trace);
        if (observer) observer(CodebookTrainingEvent::AfterEqFilter, eq.size());
        const internal::Positions prox = internal::proximityFiltered(eq, proxFilterThreshold);
        if (observer) observer(CodebookTrainingEvent::AfterProxFilter, prox.size());
        // One direction fewer than positions; none of no positions is more than memory holds.
        if (prox.empty()) throw std::bad_alloc();
        std::vector<double> angles = internal::directionsOf(prox);
        angles.resize(prox.size() - 1);
        rows.push_back(std::move(angles));
        if (observer) observer(CodebookTrainingEvent::EndOfTrace, 0);
    }
    return rows;
}

/// What both trainers share. The clusterer is left to the caller.
void train(VectorQuantizer2D& quantizer, const Traces& traces, float proxFilterThreshold,
           const CodebookTrainingObserver& observer, std::unique_ptr<KMeansMotionVec>& clusterer) {
    if (!quantizer.codebookReady) quantizer.initializeCodebook(quantizer.codebookSize);
    std::vector<std::vector<double>> rows = directionRows(traces, proxFilterThreshold, observer);
    clusterer = std::make_unique<KMeansMotionVec>(quantizer.codebook, rows);
    clusterer->learn(-1, largestMovement);
}

}  // namespace

std::vector<double> VectorQuantizer2D::trainCodebook(
    std::list<std::vector<std::vector<double>>>& traces, float proxFilterThreshold) {
    std::unique_ptr<KMeansMotionVec> clusterer;
    train(*this, traces, proxFilterThreshold, reportEvent, clusterer);
    // Part of the interface: a call leaves its clusterer allocated, though nobody may use it.
    codebook = internal::keepForever(std::move(clusterer))->centres;
    return codebook;
}

std::vector<double> VectorQuantizer2D::learnCodebook(
    const std::list<std::vector<std::vector<double>>>& traces, float proxFilterThreshold,
    const CodebookTrainingObserver& observer) {
    std::unique_ptr<KMeansMotionVec> clusterer;
    train(*this, traces, proxFilterThreshold, observer, clusterer);
    codebook = std::move(clusterer->centres);
    return codebook;
}

}  // namespace Vesk::ML
