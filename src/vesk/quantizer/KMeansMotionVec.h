#ifndef VESK_QUANTIZER_KMEANSMOTIONVEC_H
#define VESK_QUANTIZER_KMEANSMOTIONVEC_H

#include <vesk/Export.h>

#include <vector>

namespace Vesk::ML {

/// K-means clustering of directions: angles in degrees on the circle, k centres.
///
/// The distance of two angles is min(d, 360 - d), d their absolute difference after each was
/// reduced to [0, 360). Angles may have any finite value. A non-finite centre is nearest to nothing
/// unless all centres are.
///
/// Deterministic. `data` is referred to, not copied: it must outlive the last call.
class VESK_API KMeansMotionVec {
public:
    std::vector<double> centres;  ///< k centres, degrees; in the order given, also after `learn`

    /// Starts from k centres, degrees; `data` holds rows of angles, degrees.
    KMeansMotionVec(std::vector<double> centres, std::vector<std::vector<double>>& data);

    /// Moves every centre to the circular mean of the angles nearest to it, and repeats
    /// (S. P. Lloyd, "Least squares quantization in PCM", IEEE Trans. IT 28(2), 1982).
    ///
    /// Stops when no centre moved by `threshold` degrees or more, when no angle changed its
    /// centre, when the fit no longer improves, or after `maxIterations` (negative: no bound). It
    /// always ends. A centre with no angles, or whose angles cancel out (mean resultant length
    /// below 1e-12), stays where it is; one that moves ends in [0, 360). Non-finite angles are
    /// ignored. Sums run in the order of the angles, not of the data. Does nothing without centres.
    /// O(angles log angles), and O(angles + k (log k + log angles)) an iteration; O(angles + k)
    /// memory.
    void learn(int maxIterations, double threshold);

    /// For every row of data a row of the same length: the index of the nearest centre of each
    /// angle. Ties go to the lowest index, non-finite angles to index 0. std::invalid_argument
    /// without centres. O(k log k + angles log k).
    std::vector<std::vector<int>> classify();

private:
    std::vector<std::vector<double>>* data;
};

}  // namespace Vesk::ML

#endif
