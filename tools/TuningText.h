#ifndef VESK_TOOLS_TUNINGTEXT_H
#define VESK_TOOLS_TUNINGTEXT_H

#include <veskkit/evaluation/Tuning.h>

#include <string>
#include <vector>

namespace Vesk::Tool {

/// All that a tuning found out.
struct TuningFindings {
    std::vector<Kit::Trace> traces;
    std::string split;   ///< in words: what was trained on and tested in turn
    double falseAccept;  ///< share asked for
    Kit::TuningResult result;
};

/// Tables for people.
std::string tuningText(const TuningFindings& findings);

/// The same, with all of the trade-off curve, as one JSON object.
std::string tuningJson(const TuningFindings& findings);

/// Where the best setting accepts more unknown gestures than asked for: one line that says so and
/// which are taken for which; else empty.
std::string tuningWarning(const TuningFindings& findings);

}  // namespace Vesk::Tool

#endif
