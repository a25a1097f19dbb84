#ifndef VESK_TOOLS_EVALUATIONTABLES_H
#define VESK_TOOLS_EVALUATIONTABLES_H

#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/evaluation/TradeOff.h>
#include <veskkit/report/Page.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Vesk::Tool {

/// What became of the test traces when each gesture had so many examples.
struct FewExamples {
    std::size_t examples;
    std::size_t draws;  ///< of the examples, after each of which all was tested
    std::vector<Kit::Outcome> outcomes;
};

/// All that an evaluation found out.
struct EvaluationResult {
    std::vector<Kit::Trace> traces;
    std::string split;  ///< in words: what was trained on and tested in turn
    std::vector<Kit::Fold> folds;
    std::size_t draws = 1;  ///< of which the folds are: those of a draw behind those of another
    std::vector<Kit::Outcome> outcomes;
    std::vector<FewExamples> curve;
};

/// One of the rates, for people and for programs.
struct RateRow {
    const char* name;
    const char* key;
    Kit::Share Kit::Rates::*share;
};

inline constexpr RateRow rateRows[] = {
    {"arg-max", "argMax", &Kit::Rates::argMax},
    {"correct", "correct", &Kit::Rates::correct},
    {"wrong", "wrong", &Kit::Rates::wrong},
    {"rejected", "rejected", &Kit::Rates::rejected},
    {"unknown accepted", "unknownAccepted", &Kit::Rates::unknownAccepted},
};

/// "36 traces of 3 gestures by 3 users: each user left out of training in turn"
std::string subjectOf(const EvaluationResult& result);

Kit::Table ratesTable(const EvaluationResult& result);
Kit::Table gesturesTable(const EvaluationResult& result);
Kit::Table foldsTable(const EvaluationResult& result);
Kit::Table curveTable(const EvaluationResult& result);
Kit::Table tradeOffTable(const std::vector<Kit::TradeOffPoint>& points);

}  // namespace Vesk::Tool

#endif
