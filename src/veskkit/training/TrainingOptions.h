#ifndef VESK_VESKKIT_TRAINING_TRAININGOPTIONS_H
#define VESK_VESKKIT_TRAINING_TRAININGOPTIONS_H

#include <veskkit/traces/Resampler.h>

#include <optional>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// Where the first estimate of the emissions comes from.
enum class FirstEstimate {
    EvenCut,       ///< symbols counted over the even cut: time t of T goes to state floor(t N / T)
    EqualSegments  ///< the library's equal segments, whose surplus goes to both ends
};

/// How a gesture set becomes a recognition model. The defaults are the settings that did best on
/// recorded gestures of people the model had not seen.
struct TrainingOptions {
    std::string name = "gestures";  ///< of the recognition model; one word
    Preparation preparation;        ///< of every trace; recognise with the same

    int symbols = 32;  ///< evenly spaced directions, 2 to 360

    /// Directions in degrees, 2 to 360 of at least 0 and less than 360, instead of the evenly
    /// spaced ones. Empty: those.
    std::vector<double> codebook;

    int states = 40;  ///< per gesture model, 2 to 200: about 0.8 times the symbols of a trace
    int delta = 1;    ///< largest forward jump, 1 to `states` - 1

    /// Most sub-models a gesture, 1 to 16: one a way of drawing it, as many as its traces differ in
    /// shape (KMedoids.h). Unset: 1 below 20 traces of the gesture, else 6.
    std::optional<int> subModels;
    int smallestSubModel = 5;  ///< traces that a sub-model is made from at least, 1 to 1,000,000

    FirstEstimate firstEstimate = FirstEstimate::EvenCut;
    int iterations = 3;           ///< most training iterations a model, 0 to 1000
    double emissionFloor = 1e-3;  ///< least emission before a row is normalised, 1e-12 to 0.1

    /// Width in degrees of the circular Gaussian that smooths emissions, 0 (none) to 180. Unset:
    /// 22, or 28 for gestures with five traces or fewer.
    std::optional<double> smoothing;

    /// Rounds in which the gestures' models learn to tell each other's traces apart (B.-H. Juang,
    /// S. Katagiri, "Discriminative learning for minimum error classification", IEEE Trans. Signal
    /// Processing 40(12), 1992: docs/numerics.md), 0 to 1000.
    int discrimination = 24;

    /// Copies of every model of a gesture with 20 traces or more, to either side, 0 to 4: the first
    /// turned by 22.5 degrees and weighed with 0.01, the next by 45 and with 0.0001, and so on.
    /// Unset: 2 where calibration leaves users out, unless clearly fewer of their traces have the
    /// right gesture as the likeliest with them; else 0.
    std::optional<int> turns;

    int thresholdStates = 4;           ///< per gesture in the threshold model, 2 to 200
    double thresholdSmoothing = 30.0;  ///< degrees, of the threshold model's emissions, 0 to 180

    /// R: how much likelier than the threshold model a gesture has to be, 1e-6 to 1e12; single
    /// gestures more, see `calibrate`. Unset: as calibrated, or without calibration 1e3 with one
    /// sub-model a gesture and 1e4 with more. The transition probability in a file holds up to 1e5;
    /// what is beyond lowers all pi.
    std::optional<double> acceptanceRatio;

    /// Whether ratios are calibrated. With traces of three or more users each of them (of more than
    /// six: each of six groups of them) is left out of a training in turn and recognised with its
    /// result; R, where unset, is what all but `falseRejection` of the traces reach whose likeliest
    /// gesture is the right one, and half of every single gesture's; where no gesture has 50 such
    /// traces, 1e5 at most. A gesture that has, and of whose own traces all but that share reach
    /// more than the calibrated R, is asked for as many times more, whatever R is, but no more than
    /// all but that share lead the likeliest other gesture by: its pi is lowered. The same
    /// trainings decide unset `turns`. With fewer users every fourth trace is left out in turn,
    /// which can only lower an unset R from what it is without calibration: a straight line differs
    /// little from the threshold model. Costs a training of at most two iterations for each user,
    /// group or fourth, and the recognition of up to 4000 traces, of two models where `turns` is
    /// open.
    bool calibrate = true;
    double falseRejection = 0.02;  ///< share of correct traces that calibration gives up, 0 to 0.5

    /// Threads that gestures are trained on; 0: one for each processor. The same model at any
    /// number.
    unsigned threads = 0;

    /// Leave out traces that have no direction (all positions in one place), and say so in the
    /// report, rather than refuse them.
    bool skipBad = false;
};

}  // namespace Vesk::Kit

#endif
