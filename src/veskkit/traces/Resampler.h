#ifndef VESK_VESKKIT_TRACES_RESAMPLER_H
#define VESK_VESKKIT_TRACES_RESAMPLER_H

#include <veskkit/traces/Trace.h>

namespace Vesk::Kit {

/// How a trace is prepared before its directions are taken.
struct Preparation {
    static constexpr int asDrawn = 0;  ///< for `points`: as many as were drawn

    int points = 41;     ///< positions after resampling, 2 to 100,000; `asDrawn`: no resampling
    bool flipY = false;  ///< negate y: for traces whose y axis points the other way
};

/// Turns a trace of any number of positions, size and speed into P positions at equal distances
/// along its path.
///
/// A model only knows directions, one a step, so with P fixed its sequences have P - 1 symbols
/// whatever the device's rate. The step is path length / (P - 1); positions are interpolated
/// linearly, the first is kept, and the last one is repeated where rounding leaves one short (J. O.
/// Wobbrock, A. D. Wilson, Y. Li, "Gestures without libraries, toolkits or training", UIST 2007,
/// step 1).
/// A host that recognises with a model trained here has to prepare its traces the same way.
///
/// Immutable; const calls from any number of threads.
class Resampler {
public:
    /// InputError for fewer than 2 positions or more than 100,000, `asDrawn` apart.
    explicit Resampler(Preparation preparation = {});

    /// How it prepares traces.
    const Preparation& preparation() const { return settings; }

    /// The prepared positions, x and y alone. Empty for a path of length zero (or so short or long
    /// that its steps cannot be told), which has no direction. With `asDrawn` only y is flipped and
    /// further coordinates are dropped. Positions must be usable as `requireUsablePoints` has it.
    /// O(positions + P).
    Points resample(const Points& points) const;

    /// The same for a trace from outside: InputError, naming it, for unusable positions.
    Points resample(const Trace& trace) const;

private:
    Preparation settings;
};

}  // namespace Vesk::Kit

#endif
