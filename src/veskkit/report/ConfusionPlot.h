#ifndef VESK_VESKKIT_REPORT_CONFUSIONPLOT_H
#define VESK_VESKKIT_REPORT_CONFUSIONPLOT_H

#include <veskkit/evaluation/Evaluation.h>

#include <string>

namespace Vesk::Kit {

/// How often each gesture (a row) got each answer (a column; rejections in the last, apart), the
/// more opaque the larger its share of the row; right answers in one colour, all others in
/// another. What StrokePlot.h says of plots is true of it; k gestures are (k + 1) k cells.
std::string confusionPlot(const std::string& title, const Confusion& confusion);

}  // namespace Vesk::Kit

#endif
