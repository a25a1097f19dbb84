#include <vesk/leftright/LeftRightHMM.h>

namespace Vesk::ML {

LeftRightHMM::LeftRightHMM(int numStates, int vocabSize, int delta)
    : HMM(numStates, vocabSize), delta(delta), convergenceThreshold(0.001F) {
    for (int k = 0; k < vocabSize; ++k) vocab(k, 0) = k;
}

LeftRightHMM::LeftRightHMM(int numStates, int vocabSize, std::vector<std::vector<int>>& sequences,
                           int delta)
    : LeftRightHMM(numStates, vocabSize, delta) {
    trainingSequences = sequences;
}

LeftRightHMM::~LeftRightHMM() = default;

}  // namespace Vesk::ML
