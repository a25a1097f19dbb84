#ifndef VESK_VESKKIT_TRAINING_CALIBRATIONANSWERS_H
#define VESK_VESKKIT_TRAINING_CALIBRATIONANSWERS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// Per gesture natural logarithms of the ratio of two probabilities, one for each trace.
using LogRatios = std::map<std::string, std::vector<double>>;

/// What models say of traces that they were not trained on, with each of some numbers of turned
/// copies beside them.
struct CalibrationAnswers {
    /// P(gesture) / P(threshold model) of those whose likeliest gesture is the right one; one for
    /// each number of copies.
    std::vector<LogRatios> ratios;
    /// Of the same traces: P(gesture) / P(likeliest other gesture).
    std::vector<LogRatios> leads;
    std::size_t gained = 0;  ///< traces whose likeliest gesture is right only with the last number
    std::size_t lost = 0;    ///< traces whose likeliest gesture is right only with the first
};

}  // namespace Vesk::Kit

#endif
