#ifndef VESK_VESKKIT_REPORT_TRADEOFFPLOT_H
#define VESK_VESKKIT_REPORT_TRADEOFFPLOT_H

#include <veskkit/evaluation/Evaluation.h>

#include <string>
#include <vector>

namespace Vesk::Kit {

/// The share of unknown gestures accepted over the share of known ones rejected: a line of the
/// models at any acceptance ratio, a dot of them as measured, and one of the template matcher where
/// it was asked. Rejections up to 30 % are shown. Empty where no trace was taken for unknown. What
/// StrokePlot.h says of plots is true of it.
std::string tradeOffPlot(const std::string& title, const std::vector<Outcome>& outcomes);

}  // namespace Vesk::Kit

#endif
