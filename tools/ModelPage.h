#ifndef VESK_TOOLS_MODELPAGE_H
#define VESK_TOOLS_MODELPAGE_H

#include <veskkit/recognition/StatePath.h>
#include <veskkit/report/Page.h>
#include <veskkit/report/StrokePlot.h>

#include <optional>
#include <string>
#include <vector>

namespace Vesk::Tool {

/// What a model consists of besides its gestures, a row each.
Kit::Table modelTable(const Kit::RecognitionModel& model);

/// A row for each gesture model.
Kit::Table gestureModelsTable(const Kit::RecognitionModel& model);

/// Who drew a trace and where it is, without folders: "u02, traces.jsonl:17"
std::string originOf(const Kit::Trace& trace);

/// The example of a gesture model as a small figure. `traces` are those it was chosen from.
Kit::Figure exampleFigure(const Vesk::ML::LeftRightHMM& model, const Kit::Example& example,
                          const std::vector<Kit::Trace>& traces, const Kit::StrokeStyle& style);

/// A model as pictures: its codebook, and every gesture model's transitions and emissions and its
/// best example among the traces, where there is one.
Kit::Page modelPage(const Kit::GestureRecognizer& recognizer, const std::vector<Kit::Trace>& traces,
                    const Kit::StrokeStyle& style);

}  // namespace Vesk::Tool

#endif
