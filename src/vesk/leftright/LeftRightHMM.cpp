#include <vesk/leftright/LeftRightHMM.h>

namespace Vesk::ML {

LeftRightHMM::LeftRightHMM(int states, int symbols, int jump)
    : HMM(states, symbols), delta(jump), convergenceThreshold(0.001F) {
    for (int k = 0; k < symbols; ++k) vocab(k, 0) = k;
}

LeftRightHMM::LeftRightHMM(int states, int symbols, std::vector<std::vector<int>>& sequences,
                           int jump)
    : LeftRightHMM(states, symbols, jump) {
    trainingSequences = sequences;
}

LeftRightHMM::~LeftRightHMM() = default;

}  // namespace Vesk::ML
