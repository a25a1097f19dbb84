// Symmetries of the plane that whole coordinates keep exactly, with traces that shrink.

#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

using Vesk::ML::VectorQuantizer2D;
using Vesk::Test::Reference::Trace;
using Points = std::vector<std::pair<short, short>>;

// The same cases in every run; a host's own RC_PARAMS wins.
[[maybe_unused]] const int seeded = setenv("RC_PARAMS", "seed=20261120 max_success=1000", 0);

Trace toTrace(const Points& points) {
    Trace trace;
    for (const auto& [x, y] : points) {
        trace.push_back({static_cast<double>(x), static_cast<double>(y)});
    }
    return trace;
}

// Half way between two of the eight directions lie odd multiples of 22.5 degrees, whose tangents
// are irrational: no step between whole coordinates ever ties.
VectorQuantizer2D eightDirections() {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    return quantizer;
}

RC_GTEST_PROP(QuantizerSymmetryTest, MovingATraceKeepsItsSymbols, (const Points& points)) {
    const int dx = *rc::gen::inRange(-1000, 1001);
    const int dy = *rc::gen::inRange(-1000, 1001);
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    Trace moved = trace;
    for (std::vector<double>& position : moved) {
        position[0] += dx;
        position[1] += dy;
    }
    RC_ASSERT(quantizer.quantize(trace, 3.0f, false) == quantizer.quantize(moved, 3.0f, false));
}

RC_GTEST_PROP(QuantizerSymmetryTest, ScalingATraceAndTheThresholdKeepsItsSymbols,
              (const Points& points)) {
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    Trace scaled = trace;
    for (std::vector<double>& position : scaled) {
        for (double& coordinate : position) coordinate *= 8.0;
    }
    RC_ASSERT(quantizer.quantize(trace, 3.0f, false) == quantizer.quantize(scaled, 24.0f, false));
}

RC_GTEST_PROP(QuantizerSymmetryTest, QuarterTurnAddsTwoToEverySymbol, (const Points& points)) {
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    Trace turned;
    for (const std::vector<double>& position : trace) turned.push_back({-position[1], position[0]});
    std::vector<int> expected = quantizer.quantize(trace, 3.0f, false);
    for (int& symbol : expected) symbol = (symbol + 2) % 8;
    RC_ASSERT(expected == quantizer.quantize(turned, 3.0f, false));
}

RC_GTEST_PROP(QuantizerSymmetryTest, RelativeSymbolsDoNotSeeAQuarterTurn, (const Points& points)) {
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    Trace turned;
    for (const std::vector<double>& position : trace) turned.push_back({-position[1], position[0]});
    const std::vector<int> symbols = quantizer.quantize(trace, 3.0f, true);
    RC_ASSERT(symbols == quantizer.quantize(turned, 3.0f, true));
    RC_ASSERT((symbols.empty() || symbols[0] == 0));
}

RC_GTEST_PROP(QuantizerSymmetryTest, ReversedTraceGivesOppositeSymbolsBackwards,
              (const Points& points)) {
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    const Trace reversed(trace.rbegin(), trace.rend());
    std::vector<int> expected = quantizer.quantize(trace, 0.0f, false);
    std::reverse(expected.begin(), expected.end());
    for (int& symbol : expected) symbol = (symbol + 4) % 8;
    RC_ASSERT(expected == quantizer.quantize(reversed, 0.0f, false));
}

RC_GTEST_PROP(QuantizerSymmetryTest, MirroringAtTheXAxisNegatesSymbols, (const Points& points)) {
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    Trace mirrored = trace;
    for (std::vector<double>& position : mirrored) position[1] = -position[1];
    std::vector<int> expected = quantizer.quantize(trace, 3.0f, false);
    for (int& symbol : expected) symbol = (8 - symbol) % 8;
    RC_ASSERT(expected == quantizer.quantize(mirrored, 3.0f, false));
}

RC_GTEST_PROP(QuantizerSymmetryTest, RepeatingPositionsChangesNothing, (const Points& points)) {
    const VectorQuantizer2D quantizer = eightDirections();
    const Trace trace = toTrace(points);
    Trace repeated;
    for (const std::vector<double>& position : trace) {
        const int count = *rc::gen::inRange(1, 4);
        // A single position is dropped whether it is repeated or not.
        for (int i = 0; i < count; ++i) repeated.push_back(position);
    }
    RC_ASSERT(quantizer.quantize(trace, 3.0f, true) == quantizer.quantize(repeated, 3.0f, true));
}

RC_GTEST_PROP(QuantizerSymmetryTest, CollapsedSymbolsAreTheSymbolsWithoutRuns,
              (const Points& points)) {
    VectorQuantizer2D quantizer = eightDirections();
    Trace trace = toTrace(points);
    std::vector<int> expected = quantizer.quantize(trace, 3.0f, false);
    if (expected.size() < 2) {
        expected.clear();
    } else {
        expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
    }
    RC_ASSERT(expected == quantizer.classifyAndFilter(trace, 3.0f));
}

RC_GTEST_PROP(QuantizerSymmetryTest, ConcatenationAtASharedPositionConcatenatesSymbols,
              (const Points& first, const Points& second)) {
    const VectorQuantizer2D quantizer = eightDirections();
    Trace head = toTrace(first);
    Trace tail = toTrace(second);
    head.push_back({5.0, 7.0});
    tail.insert(tail.begin(), {5.0, 7.0});
    std::vector<int> expected = quantizer.quantize(head, 0.0f, false);
    const std::vector<int> more = quantizer.quantize(tail, 0.0f, false);
    expected.insert(expected.end(), more.begin(), more.end());
    Trace whole = head;
    whole.insert(whole.end(), tail.begin(), tail.end());
    RC_ASSERT(expected == quantizer.quantize(whole, 0.0f, false));
}

}  // namespace
