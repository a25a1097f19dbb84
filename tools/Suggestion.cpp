#include "Suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Vesk::Tool {

namespace {

/// The distance of Damerau and Levenshtein between words of which no part is changed twice.
std::size_t distance(const std::string& x, const std::string& y) {
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(y.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= x.size(); ++i) {
        std::vector<std::size_t> row(y.size() + 1);
        row[0] = i;
        for (std::size_t j = 1; j <= y.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (x[i - 1] == y[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && x[i - 1] == y[j - 2] && x[i - 2] == y[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast = std::move(last);
        last = std::move(row);
    }
    return last.back();
}

}  // namespace

std::string nearestWord(const std::string& mistyped, const std::vector<std::string>& words) {
    // What is longer than any word is mistyped by more than a third of it.
    constexpr std::size_t longest = 100;
    if (mistyped.size() > longest) return {};
    std::size_t least = std::max<std::size_t>(mistyped.size() / 3, 1) + 1;
    std::string nearest;
    for (const std::string& word : words) {
        const std::size_t d = distance(mistyped, word);
        if (d >= least) continue;
        least = d;
        nearest = word;
    }
    return nearest;
}

std::string suggestion(const std::string& mistyped, const std::vector<std::string>& words) {
    const std::string nearest = nearestWord(mistyped, words);
    return nearest.empty() ? "" : ", did you mean " + nearest + "?";
}

std::string notOneOf(const std::string& found, const std::vector<std::string>& words) {
    std::string text = "found " + found + ", expected one of ";
    for (const std::string& word : words) text += (&word == &words.front() ? "" : "|") + word;
    return text + suggestion(found, words);
}

}  // namespace Vesk::Tool
