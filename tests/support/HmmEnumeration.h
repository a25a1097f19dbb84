#ifndef VESK_TESTS_SUPPORT_HMMENUMERATION_H
#define VESK_TESTS_SUPPORT_HMMENUMERATION_H

#include <support/HmmReference.h>

#include <vector>

/// What a small model says about a sequence, found by writing down every state path.
namespace Vesk::Test::Enumeration {

using Path = std::vector<int>;

/// All sequences of `length` values in 0 .. values-1, in lexicographic order.
inline std::vector<std::vector<int>> allSequences(int values, int length) {
    std::vector<std::vector<int>> all(1);
    for (int t = 0; t < length; ++t) {
        std::vector<std::vector<int>> longer;
        for (const std::vector<int>& begun : all) {
            for (int value = 0; value < values; ++value) {
                longer.push_back(begun);
                longer.back().push_back(value);
            }
        }
        all = longer;
    }
    return all;
}

/// P(path, o).
inline double pathProbability(const Reference::Model& m, const std::vector<int>& o,
                              const Path& path) {
    double p = 1.0;
    int before = -1;
    for (std::size_t t = 0; t < path.size(); ++t) {
        const Reference::Vector& row = before < 0 ? m.pi : m.a[static_cast<std::size_t>(before)];
        p *= row[static_cast<std::size_t>(path[t])];
        p *= m.b[static_cast<std::size_t>(path[t])][static_cast<std::size_t>(o[t])];
        before = path[t];
    }
    return p;
}

struct Summary {
    double total = 0.0;      ///< P(o)
    double best = -1.0;      ///< P of the best path
    double runnerUp = -1.0;  ///< P of the best of all other paths
    Path bestPath;
    Reference::Table state;                    ///< [i][t]: P(o, state i at t)
    std::vector<Reference::Table> transition;  ///< [t][i][j]: P(o, i at t, j at t + 1)
};

inline Summary enumerate(const Reference::Model& m, const std::vector<int>& o, int T) {
    Summary summary;
    summary.state = Reference::zeros(m.N, T);
    summary.transition.assign(static_cast<std::size_t>(T), Reference::zeros(m.N, m.N));
    for (const Path& path : allSequences(m.N, T)) {
        const double p = pathProbability(m, o, path);
        summary.total += p;
        for (std::size_t t = 0; t < path.size(); ++t) {
            summary.state[static_cast<std::size_t>(path[t])][t] += p;
            if (t + 1 < path.size()) {
                summary.transition[t][static_cast<std::size_t>(path[t])]
                                  [static_cast<std::size_t>(path[t + 1])] += p;
            }
        }
        if (p > summary.best) {
            summary.runnerUp = summary.best;
            summary.best = p;
            summary.bestPath = path;
        } else if (p > summary.runnerUp) {
            summary.runnerUp = p;
        }
    }
    return summary;
}

}  // namespace Vesk::Test::Enumeration

#endif
