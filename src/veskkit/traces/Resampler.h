#ifndef VESK_VESKKIT_TRACES_RESAMPLER_H
#define VESK_VESKKIT_TRACES_RESAMPLER_H

#include <veskkit/traces/Trace.h>

#include <cstddef>

namespace Vesk::Kit {

/// How a trace is prepared before its directions are taken.
struct Preparation {
    static constexpr int asDrawn = 0;  ///< for `points`: as many as were drawn

    int points = 41;     ///< positions after resampling, 2 to 100,000; `asDrawn`: no resampling
    bool flipY = false;  ///< negate y: for traces whose y axis points the other way
    int bearings = 8;    ///< steps behind the resampled ones that tell where these lie, 0 to 1000

    /// How many symbols a trace has that repeats no position; 0 with `asDrawn`, which does not say.
    std::size_t symbols() const {
        return points == asDrawn ? 0 : static_cast<std::size_t>(points - 1 + bearings);
    }
};

/// Turns a trace of any number of positions, size and speed into P positions at equal distances
/// along its path.
///
/// A model only knows directions, one a step, so with P fixed its sequences have P - 1 symbols
/// whatever the device's rate. The step is path length / (P - 1); positions are interpolated
/// linearly, the first is kept, and the last one is repeated where rounding leaves one short (J. O.
/// Wobbrock, A. D. Wilson, Y. Li, "Gestures without libraries, toolkits or training", UIST 2007,
/// step 1).
///
/// Directions tell little of proportions: the two arms of a check mark are those of a v. So B more
/// steps of the same length follow, whose directions are bearings: from the mean of the P positions
/// to the first of them, the last, and those between at equal distances (k (P - 1) / (B - 1),
/// rounded down; for B = 1 the last). A position in the mean itself, which has no bearing, repeats
/// the one before (the first: along x); so do all where the mean is beyond the numbers. A sequence
/// then has P - 1 + B symbols.
///
/// A host that recognises with a model trained here has to prepare its traces the same way.
///
/// Immutable; const calls from any number of threads.
class Resampler {
public:
    /// InputError for fewer than 2 positions or more than 100,000, `asDrawn` apart, and for fewer
    /// than 0 bearings or more than 1000.
    explicit Resampler(Preparation preparation = {});

    /// How it prepares traces.
    const Preparation& preparation() const { return settings; }

    /// The prepared positions, x and y alone: P of the path, B of the bearings. Empty for a path of
    /// length zero (or so short or long that its steps cannot be told), which has no direction.
    /// With `asDrawn` only y is flipped and further coordinates are dropped. Positions must be
    /// usable as `requireUsablePoints` has it. O(positions + P).
    Points resample(const Points& points) const;

    /// The same for a trace from outside: InputError, naming it, for unusable positions.
    Points resample(const Trace& trace) const;

    /// The positions of the path alone: as `resample` without bearings.
    Points path(const Points& points) const;

private:
    Points prepared(const Points& points, int bearings) const;

    Preparation settings;
};

}  // namespace Vesk::Kit

#endif
