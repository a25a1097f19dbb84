#ifndef VESK_TOOLS_EVALUATIONTEXT_H
#define VESK_TOOLS_EVALUATIONTEXT_H

#include "EvaluationTables.h"

#include <string>

namespace Vesk::Tool {

/// Tables for people.
std::string evaluationText(const EvaluationResult& result);

/// The same and every single trace as one JSON object.
std::string evaluationJson(const EvaluationResult& result);

}  // namespace Vesk::Tool

#endif
