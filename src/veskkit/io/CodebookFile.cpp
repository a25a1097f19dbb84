#include <veskkit/io/CodebookFile.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/internal/LineReader.h>
#include <veskkit/io/internal/Number.h>

#include <algorithm>
#include <cstddef>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

constexpr std::size_t fewestDirections = 2;
constexpr std::size_t mostDirections = 360;

}  // namespace

std::string codebookText(const std::vector<double>& codebook) {
    std::string text;
    for (const double direction : codebook) {
        if (!text.empty()) text += '\n';
        text += joined(direction);
    }
    return text;
}

std::vector<double> loadCodebook(const std::string& path) {
    internal::LineReader lines(path);
    std::vector<double> codebook;
    std::string blank;  // the place of a blank line that nothing has followed so far
    while (lines.next()) {
        if (internal::isBlank(lines.line())) {
            if (blank.empty()) blank = lines.place();
            continue;
        }
        double direction = 0.0;
        const bool valid = blank.empty() && internal::readNumber(lines.line(), direction) &&
                           direction >= 0.0 && direction < 360.0;
        if (!valid) {
            throw InputError(joined(blank.empty() ? lines.place() : blank, ": found ",
                                    blank.empty() ? quoted(lines.line()) : "a blank line",
                                    ", expected a direction from 0 to less than 360"));
        }
        if (std::find(codebook.begin(), codebook.end(), direction) != codebook.end()) {
            throw InputError(joined(lines.place(), ": found the direction ", direction,
                                    " again, expected another one"));
        }
        if (codebook.size() == mostDirections) {
            throw InputError(joined(lines.place(), ": found more than ", mostDirections,
                                    " directions, expected no more"));
        }
        codebook.push_back(direction);
    }
    if (codebook.size() < fewestDirections) {
        throw InputError(joined(path, ": found ", codebook.size(),
                                " directions, expected at least ", fewestDirections));
    }
    return codebook;
}

}  // namespace Vesk::Kit
