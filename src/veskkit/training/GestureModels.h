#ifndef VESK_VESKKIT_TRAINING_GESTUREMODELS_H
#define VESK_VESKKIT_TRAINING_GESTUREMODELS_H

#include <vesk/leftright/LeftRightHMM.h>
#include <veskkit/training/TrainingReport.h>

#include <vector>

namespace Vesk::Kit {

/// The models of one gesture.
struct GestureModels {
    std::vector<Vesk::ML::LeftRightHMM> fine;  ///< one a way of drawing it
    Vesk::ML::LeftRightHMM coarse;             ///< its part of the threshold model
    GestureReport report;                      ///< how they came about
    /// Whether there are turned copies of them, where any gesture has some: 20 traces or more, with
    /// those that a calibration leaves out.
    bool mayBeTurned = false;
};

}  // namespace Vesk::Kit

#endif
