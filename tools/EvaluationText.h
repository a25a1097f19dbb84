#ifndef VESK_TOOLS_EVALUATIONTEXT_H
#define VESK_TOOLS_EVALUATIONTEXT_H

#include <veskkit/evaluation/Evaluation.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Vesk::Tool {

/// What became of the test traces when each gesture had so many examples.
struct FewExamples {
    std::size_t examples;
    std::vector<Kit::Outcome> outcomes;
};

/// All that an evaluation found out.
struct EvaluationResult {
    std::vector<Kit::Trace> traces;
    std::string split;  ///< in words: what was trained on and tested in turn
    std::vector<Kit::Fold> folds;
    std::vector<Kit::Outcome> outcomes;
    std::vector<FewExamples> curve;
};

/// Tables for people.
std::string evaluationText(const EvaluationResult& result);

/// The same and every single trace as one JSON object.
std::string evaluationJson(const EvaluationResult& result);

}  // namespace Vesk::Tool

#endif
