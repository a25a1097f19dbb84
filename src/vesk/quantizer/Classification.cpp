#include <vesk/quantizer/VectorQuantizer2D.h>

#include <vesk/base/internal/KeptForever.h>
#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/internal/Directions.h>
#include <vesk/quantizer/internal/TraceFilters.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>

namespace Vesk::ML {
namespace {

using Clusterer = std::unique_ptr<KMeansMotionVec>;

/// What `classify` and `quantize` share. The clusterer, if one was needed, is left to the caller.
std::vector<int> symbolsOf(const VectorQuantizer2D& quantizer, const internal::Trace& trace,
                           float proxFilterThreshold, bool rotationAllowed, Clusterer& clusterer) {
    if (quantizer.codebookSize < 1) return {};
    const internal::Positions positions = internal::filtered(trace, proxFilterThreshold);
    if (positions.size() < 2) return {};
    std::vector<std::vector<double>> angles;
    angles.push_back(internal::directionsOf(positions));
    clusterer = std::make_unique<KMeansMotionVec>(quantizer.codebook, angles);
    std::vector<std::vector<int>> rows = clusterer->classify();
    if (rows.empty()) return {};
    std::vector<int>& symbols = rows[0];
    if (rotationAllowed) {
        if (symbols.empty()) throw std::out_of_range("vector::_M_range_check");
        const int base = symbols[0];
        for (int& symbol : symbols) {
            symbol -= base;
            if (symbol < 0) symbol += quantizer.codebookSize;
        }
    }
    return std::move(symbols);
}

}  // namespace

std::vector<int> VectorQuantizer2D::classify(std::vector<std::vector<double>>& trace,
                                             float proxFilterThreshold, bool rotationAllowed) {
    Clusterer clusterer;
    std::vector<int> symbols =
        symbolsOf(*this, trace, proxFilterThreshold, rotationAllowed, clusterer);
    // Part of the interface: a call leaves its clusterer allocated, though nobody may use it.
    if (clusterer) internal::keepForever(std::move(clusterer));
    return symbols;
}

std::vector<int> VectorQuantizer2D::quantize(const std::vector<std::vector<double>>& trace,
                                             float proxFilterThreshold,
                                             bool rotationAllowed) const {
    Clusterer clusterer;
    return symbolsOf(*this, trace, proxFilterThreshold, rotationAllowed, clusterer);
}

std::vector<int> VectorQuantizer2D::classifyAndFilter(std::vector<std::vector<double>>& trace,
                                                      float proxFilterThreshold) {
    if (codebookSize < 1) return {};
    const std::vector<int> symbols = classify(trace, proxFilterThreshold, false);
    if (symbols.size() < 2) return {};
    std::vector<int> runs{symbols[0]};
    for (std::size_t i = 1; i < symbols.size(); ++i) {
        if (symbols[i] != symbols[i - 1]) runs.push_back(symbols[i]);
    }
    return runs;
}

}  // namespace Vesk::ML
