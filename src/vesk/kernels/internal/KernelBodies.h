// The kernels, once for every width: a source file defines VESK_LANES, the number of values in a
// vector, and VESK_KERNELS, the name of the set that it makes.
#include <vesk/kernels/internal/Kernels.h>
#include <vesk/kernels/internal/PassKernels.h>
#include <vesk/kernels/internal/ReestimationKernels.h>
#include <vesk/kernels/internal/ShortKernel.h>
#include <vesk/kernels/internal/StructureKernels.h>
#include <vesk/kernels/internal/ViterbiKernel.h>

namespace Vesk::Kernels {

extern const Set VESK_KERNELS;
const Set VESK_KERNELS = {
    .diagonals = diagonals,
    .rowsAreEven = rowsAreEven,
    .gather = gather,
    .transposeTable = transposeTable,
    .forward = forward,
    .backward = backward,
    .forwardBand = forwardBand,
    .backwardBand = backwardBand,
    .forwardShort = forwardShort,
    .forwardEven = forwardEven,
    .multiply = multiply,
    .divide = divide,
    .normalise = normalise,
    .transpose = transpose,
    .posteriorSums = posteriorSums,
    .jointSums = jointSums,
    .posteriors = posteriors,
    .addJoint = addJoint,
    .addJointBand = addJointBand,
    .addColumns = addColumns,
    .addToOwn = addToOwn,
    .addToOthers = addToOthers,
    .viterbi = viterbi,
};

}  // namespace Vesk::Kernels
