#ifndef VESK_TOOLS_RECOGNITIONTABLE_H
#define VESK_TOOLS_RECOGNITIONTABLE_H

#include <veskkit/recognition/GestureRecognizer.h>

#include <cstddef>
#include <map>
#include <string>

namespace Vesk::Tool {

/// Counts how labelled traces were recognised, gesture by gesture.
class RecognitionTable {
public:
    /// Counts one trace; `expected` is the name that the model has for its gesture.
    void add(const std::string& expected, const Kit::Result& result);

    /// The table: a line a gesture in the order of their names, then the sums and their shares.
    /// "arg-max" counts the traces whose likeliest gesture is the right one, rejected or not.
    std::string text() const;

private:
    struct Row {
        std::size_t traces = 0;
        std::size_t correct = 0;
        std::size_t wrong = 0;
        std::size_t rejected = 0;
        std::size_t likeliest = 0;
    };

    std::map<std::string, Row> rows;
};

}  // namespace Vesk::Tool

#endif
