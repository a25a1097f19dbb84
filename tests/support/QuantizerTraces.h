#ifndef VESK_TESTS_SUPPORT_QUANTIZERTRACES_H
#define VESK_TESTS_SUPPORT_QUANTIZERTRACES_H

#include <support/QuantizerReference.h>
#include <support/Random.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {

/// What kind of positions a random trace holds.
enum class Traces {
    Grid,     ///< small whole numbers: repeats, vertical steps, distances that equal a threshold
    Smooth,   ///< a random walk: no two directions alike
    Decimal,  ///< tenths: distances next to a single-precision threshold
    Odd,      ///< NaN, infinities, zeros of both signs, huge and subnormal numbers among others
    Ragged    ///< two to four coordinates a position, some of them odd
};

inline constexpr Traces allTraceKinds[] = {Traces::Grid, Traces::Smooth, Traces::Decimal,
                                           Traces::Odd, Traces::Ragged};

inline double oddNumber(Random& random) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double odd[] = {
        0.0,   -0.0,   infinity, -infinity, std::numeric_limits<double>::quiet_NaN(),
        1e300, -1e300, 1e-300,   5e-324,    -5e-324,
        1.0,   -1.0,   1e-20,    -1e-20,    0x1p53,
        360.0, -360.0};
    return odd[random.integer(0, static_cast<int>(std::size(odd)) - 1)];
}

inline double randomCoordinate(Random& random, Traces kind) {
    switch (kind) {
        case Traces::Grid: return random.integer(-2, 2);
        case Traces::Smooth: return random.unit() * 20.0 - 10.0;
        case Traces::Decimal: return random.integer(-20, 20) / 10.0;
        case Traces::Odd: return random.chance(0.25) ? oddNumber(random) : random.integer(-3, 3);
        case Traces::Ragged: return random.chance(0.05) ? oddNumber(random) : random.integer(-1, 1);
    }
    return 0.0;
}

/// A trace of `length` positions of the kind; about one in five repeats its predecessor.
inline Reference::Trace randomTrace(Random& random, int length, Traces kind) {
    Reference::Trace trace;
    // Mostly one count of coordinates a trace: else nearly every ragged trace is refused.
    int dimensions = kind == Traces::Ragged ? random.integer(2, 4) : 2;
    for (int p = 0; p < length; ++p) {
        if (!trace.empty() && random.chance(0.2)) {
            trace.push_back(Reference::Position(trace.back()));
            continue;
        }
        if (kind == Traces::Ragged && random.chance(0.1)) dimensions = random.integer(2, 4);
        Reference::Position position;
        for (int k = 0; k < dimensions; ++k) position.push_back(randomCoordinate(random, kind));
        if (kind == Traces::Smooth && !trace.empty()) {
            position[0] = trace.back()[0] + position[0] * 0.1;
            position[1] = trace.back()[1] + position[1] * 0.1;
        }
        trace.push_back(position);
    }
    return trace;
}

/// A proximity threshold that some of the kind's distances equal or pass.
inline float randomThreshold(Random& random, Traces kind) {
    const float thresholds[] = {0.0f, 0.1f, 0.5f, 1.0f, 1.4142135f, 2.0f, 3.0f, -1.0f};
    if (kind == Traces::Odd && random.chance(0.1)) {
        return random.chance(0.5) ? std::numeric_limits<float>::infinity()
                                  : std::numeric_limits<float>::quiet_NaN();
    }
    return thresholds[random.integer(0, static_cast<int>(std::size(thresholds)) - 1)];
}

/// What kind of directions a random codebook holds.
enum class Centres {
    Even,       ///< evenly spaced whole fractions of the circle, as generated
    Scattered,  ///< anywhere in [0, 360), unsorted
    Whole,      ///< whole tens of degrees with repeats: many ties
    Wound,      ///< several turns off in both directions
    Close,      ///< next to one another and to 0, 90, 180, 270 and 360 down to the last bit
    Odd         ///< NaN, infinities, huge and subnormal numbers among others
};

inline constexpr Centres allCentreKinds[] = {Centres::Even,  Centres::Scattered, Centres::Whole,
                                             Centres::Wound, Centres::Close,     Centres::Odd};

inline double closeAngle(Random& random) {
    double angle = 90.0 * random.integer(-1, 5);
    switch (random.integer(0, 4)) {
        case 0: break;
        case 1: angle += random.chance(0.5) ? 1e-17 : -1e-17; break;
        case 2:
            for (int i = random.integer(1, 3); i > 0; --i) angle = std::nextafter(angle, 1000.0);
            break;
        case 3:
            for (int i = random.integer(1, 3); i > 0; --i) angle = std::nextafter(angle, -1000.0);
            break;
        default:
            angle += (random.chance(0.5) ? 1.0 : -1.0) * std::ldexp(1.0, -random.integer(40, 60));
    }
    return angle;
}

inline std::vector<double> randomCentres(Random& random, int count, Centres kind) {
    std::vector<double> centres;
    for (int i = 0; i < count; ++i) {
        switch (kind) {
            case Centres::Even: centres.push_back(i * (360.0 / count)); break;
            case Centres::Scattered: centres.push_back(random.unit() * 360.0); break;
            case Centres::Whole: centres.push_back(10.0 * random.integer(0, 36)); break;
            case Centres::Wound: centres.push_back((random.unit() - 0.5) * 7200.0); break;
            case Centres::Close: centres.push_back(closeAngle(random)); break;
            case Centres::Odd:
                centres.push_back(random.chance(0.5) ? oddNumber(random) : random.unit() * 360.0);
                break;
        }
    }
    return centres;
}

/// What came of a call: its symbols, or how it failed.
struct Outcome {
    std::string failure;
    std::vector<int> symbols;

    bool operator==(const Outcome& other) const {
        return failure == other.failure && symbols == other.symbols;
    }
    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
        return out << (outcome.failure.empty() ? std::string("no failure") : outcome.failure) << ' '
                   << testing::PrintToString(outcome.symbols);
    }
};

template <typename Call>
Outcome outcomeOf(const Call& call) {
    try {
        return {"", call()};
    } catch (const std::out_of_range& failure) {
        return {std::string("std::out_of_range ") + failure.what(), {}};
    } catch (const std::invalid_argument&) {
        return {"std::invalid_argument", {}};
    } catch (const std::bad_alloc&) {
        return {"std::bad_alloc", {}};
    }
}

/// The library's quantiser in the state of the reference's.
inline Vesk::ML::VectorQuantizer2D libraryQuantizer(const Reference::Quantizer& reference) {
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.codebookReady = reference.codebookReady;
    quantizer.codebookSize = reference.codebookSize;
    quantizer.codebook = reference.codebook;
    return quantizer;
}

/// Directions that are the same up to 1e-9 degrees around the circle.
inline testing::AssertionResult sameDirections(const std::vector<double>& expected,
                                               const std::vector<double>& actual) {
    if (expected.size() != actual.size()) {
        return testing::AssertionFailure()
               << "expected " << expected.size() << " directions, got " << actual.size();
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const bool finite = std::isfinite(expected[i]) && std::isfinite(actual[i]);
        const bool same =
            finite ? Reference::circularDistance(expected[i], actual[i]) <= 1e-9
                   : (std::isnan(expected[i]) && std::isnan(actual[i])) || expected[i] == actual[i];
        if (!same) {
            return testing::AssertionFailure()
                   << "direction " << i << ": expected " << testing::PrintToString(expected[i])
                   << ", got " << testing::PrintToString(actual[i]);
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace Vesk::Test

#endif
