#ifndef VESK_TOOLS_DOCTORPAGE_H
#define VESK_TOOLS_DOCTORPAGE_H

#include <veskkit/diagnosis/Finding.h>
#include <veskkit/report/Page.h>
#include <veskkit/report/StrokePlot.h>

#include <string>
#include <vector>

namespace Vesk::Tool {

/// Findings as tables, with the strokes that they are about and the means of confusable gestures
/// over one another. `summary` is the first paragraph; the findings are sorted and their places
/// those in `traces`.
Kit::Page doctorPage(const std::string& summary, const std::vector<Kit::Finding>& findings,
                     const std::vector<Kit::Trace>& traces, const Kit::StrokeStyle& style);

}  // namespace Vesk::Tool

#endif
