#ifndef VESK_VESKKIT_RECOGNITION_TURNEDCOPIES_H
#define VESK_VESKKIT_RECOGNITION_TURNEDCOPIES_H

#include <veskkit/recognition/RecognitionModel.h>

#include <cstddef>
#include <vector>

namespace Vesk::Kit {

/// Per gesture model the place of the one that it is a turned copy of (TrainingOptions::turns), its
/// own place where it is none. A file does not tell; a copy has its original's name and
/// transitions, comes behind it and has the smaller sum of pi. O(K^2 N^2) at worst, K models of N
/// states.
std::vector<std::size_t> originalsOf(const RecognitionModel& model);

}  // namespace Vesk::Kit

#endif
