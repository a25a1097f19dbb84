#ifndef VESK_VESKKIT_RECOGNITION_TURNEDCOPIES_H
#define VESK_VESKKIT_RECOGNITION_TURNEDCOPIES_H

#include <vesk/leftright/LeftRightHMM.h>
#include <veskkit/recognition/RecognitionModel.h>

#include <cstddef>
#include <vector>

namespace Vesk::Kit {

/// Most copies to either side of a model.
inline constexpr int mostTurns = 4;

/// The model as it would be of traces that are turned: by -22.5 and 22.5 degrees, -45 and 45, and
/// so on, `turns` to either side, 0 to 4. A direction of `codebook` (degrees, one a symbol) is as
/// likely as the direction that it is turned from, interpolated between the two beside that; rows
/// are normalised. pi is multiplied by 0.01 for every 22.5 degrees. O(turns * states * M + M^2).
std::vector<Vesk::ML::LeftRightHMM> turnedCopies(const Vesk::ML::LeftRightHMM& model,
                                                 const std::vector<double>& codebook, int turns);

/// For each gesture model of a recognition model the place of the one that it is a turned copy of,
/// or its own: a copy has the name and the transitions of an earlier model, and the pi and the
/// emissions of a copy of it, to the six digits of a file.
std::vector<std::size_t> originalsOf(const RecognitionModel& model);

}  // namespace Vesk::Kit

#endif
