#ifndef VESK_TOOLS_EVALUATIONPAGE_H
#define VESK_TOOLS_EVALUATIONPAGE_H

#include "EvaluationTables.h"

#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/report/Page.h>
#include <veskkit/report/StrokePlot.h>

namespace Vesk::Tool {

/// An evaluation's tables and pictures: confusions, examples of the gestures, the trade-off between
/// rejections, mistakes. `recognizer` was trained on all traces; it gives the examples their
/// states.
Kit::Page evaluationPage(const EvaluationResult& result, const Kit::GestureRecognizer& recognizer,
                         const Kit::StrokeStyle& style);

}  // namespace Vesk::Tool

#endif
