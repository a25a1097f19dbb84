#ifndef VESK_TESTS_SUPPORT_LEFTRIGHTREFERENCE_H
#define VESK_TESTS_SUPPORT_LEFTRIGHTREFERENCE_H

#include <support/HmmReference.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

/// The left-right model, procedure by procedure, written for checking and for nothing else: every
/// sum in its stated order, every pass run again wherever it is needed, nothing shared with the
/// library. Letters as in HmmReference.h, K sequences, L the length of one of them.
namespace Vesk::Test::Reference {

/// A general model with what a left-right one adds.
struct LeftRightModel : Model {
    Vector vocabValues;
    std::vector<Symbols> stateSymbols;
    int delta = 0;
    float convergenceThreshold = 0.001f;
};

/// What construction makes; the symbols' own values are counted with the argument.
inline LeftRightModel makeLeftRight(int N, int M, int delta) {
    LeftRightModel model;
    static_cast<Model&>(model) = makeModel(N, M);
    for (int k = 0; k < M; ++k) model.vocab[at(k)][0] = static_cast<double>(k);
    model.delta = delta;
    return model;
}

// Initial estimate

inline std::string announcement(int type) {
    return "LeftRightHMM::calcInitialProbs: " + std::to_string(type) + "\n\n";
}

inline void setStartAndTransitions(LeftRightModel& model, int i) {
    const auto N = static_cast<std::uint32_t>(model.N);
    const auto state = static_cast<std::uint32_t>(i);
    const std::uint32_t reach = state + static_cast<std::uint32_t>(model.delta);
    model.pi[at(i)] = i == 0 ? 1.0 : 0.0;
    for (std::uint32_t j = 0; j < N; ++j) {
        double probability = 0.0;
        if (j >= state && j <= reach) {
            if (reach < N) {
                probability = 1.0 / (static_cast<double>(model.delta) + 1.0);
            } else {
                probability = 1.0 / static_cast<double>(model.N - i);
            }
        }
        model.a[at(i)][j] = probability;
    }
}

inline void estimateFromStateSymbols(LeftRightModel& model) {
    if (!(model.N > 0 && model.stateSymbols.size() == at(model.N))) return;
    for (int i = 0; i < model.N; ++i) {
        setStartAndTransitions(model, i);
        if (model.M == 0) continue;
        double floorSum = 0.0;
        std::vector<int> allowed;
        for (int k = 0; k < model.M; ++k) {
            bool found = false;
            for (const int entry : model.stateSymbols.at(at(i))) {
                if (static_cast<double>(entry) == model.vocab[at(k)][0]) {
                    found = true;
                    break;
                }
            }
            if (found) {
                allowed.push_back(k);
            } else {
                model.b[at(i)][at(k)] = 0.001;
                floorSum = floorSum + 0.001;
            }
        }
        for (const int k : allowed) {
            model.b[at(i)][at(k)] = (1.0 - floorSum) / static_cast<double>(allowed.size());
        }
    }
}

/// The consecutive cuts of one sequence, one per state, in the order in which they were closed.
inline std::vector<Symbols> segments(const Symbols& s, int N) {
    std::vector<Symbols> closed;
    const int L = static_cast<int>(s.size());
    const float segLen = std::floor(static_cast<float>(L) / static_cast<float>(N));
    const int rem = static_cast<int>(static_cast<double>(L) -
                                     static_cast<double>(N) * static_cast<double>(segLen));
    const int head = rem > 1 ? static_cast<int>(std::floor(static_cast<float>(rem) * 0.5f)) : 0;

    enum class Kind { Head, Normal, Tail };
    Symbols current;
    double fill = 0.0;
    int h = 0;
    int m = 0;
    for (int t = 0; t < L; ++t) {
        Kind kind = Kind::Normal;
        double limit = static_cast<double>(segLen);
        if (head > h) {
            kind = Kind::Head;
            limit = static_cast<double>(segLen) + 1.0;
        } else if (m >= N - rem) {
            kind = Kind::Tail;
            limit = static_cast<double>(segLen) + 1.0;
        }
        if (fill < limit) {
            current.push_back(s[at(t)]);
            fill = fill + 1.0;
            if (t == L - 1) closed.push_back(current);
        } else {
            closed.push_back(current);
            if (kind == Kind::Head) ++h;
            if (kind == Kind::Normal) ++m;
            current = Symbols{s[at(t)]};
            fill = 1.0;
        }
    }
    return closed;
}

inline void estimateFromEqualSegments(LeftRightModel& model,
                                      const std::vector<Symbols>& sequences) {
    for (int i = 0; i < model.N; ++i) setStartAndTransitions(model, i);
    std::vector<int> stateCount(at(model.N), 0);
    std::vector<std::vector<int>> symbolCount(at(model.N), std::vector<int>(at(model.M), 0));
    for (const Symbols& s : sequences) {
        const std::vector<Symbols> cuts = segments(s, model.N);
        for (std::size_t j = 0; j < cuts.size(); ++j) {
            for (const int v : cuts[j]) {
                symbolCount.at(j).at(at(v)) += 1;
                stateCount.at(j) += 1;
            }
        }
    }
    for (int i = 0; i < model.N; ++i) {
        for (int k = 0; k < model.M; ++k) {
            model.b[at(i)][at(k)] = divide(static_cast<double>(symbolCount[at(i)][at(k)]),
                                           static_cast<double>(stateCount[at(i)]));
        }
    }
}

inline void calcInitialProbs(LeftRightModel& model, int type,
                             const std::vector<Symbols>& sequences) {
    if (type == 1) estimateFromStateSymbols(model);
    if (type == 2) estimateFromEqualSegments(model, sequences);
}

// Scaled passes. T below 1 gives N empty rows.

inline Table forwardProcWithScale(const Symbols& O, int T, Vector& scale, int N, const Vector& pi,
                                  const Table& a, const Table& b) {
    Table alpha = zeros(N, T < 1 ? 0 : T);
    if (T < 1) return alpha;
    scale[0] = 0.0;
    for (int i = 0; i < N; ++i) {
        alpha[at(i)][0] = pi[at(i)] * b[at(i)][at(O[0])];
        scale[0] = scale[0] + alpha[at(i)][0];
    }
    for (int i = 0; i < N; ++i) alpha[at(i)][0] = divide(alpha[at(i)][0], scale[0]);
    for (int t = 1; t < T; ++t) {
        scale[at(t)] = 0.0;
        for (int j = 0; j < N; ++j) {
            double sum = 0.0;
            for (int i = 0; i < N; ++i) sum = sum + alpha[at(i)][at(t - 1)] * a[at(i)][at(j)];
            alpha[at(j)][at(t)] = sum * b[at(j)][at(O[at(t)])];
            scale[at(t)] = scale[at(t)] + alpha[at(j)][at(t)];
        }
        for (int j = 0; j < N; ++j) {
            alpha[at(j)][at(t)] = divide(alpha[at(j)][at(t)], scale[at(t)]);
        }
    }
    return alpha;
}

inline Table backwardProcWithScale(const Symbols& O, int T, const Vector& scale, int N,
                                   const Table& a, const Table& b) {
    Table beta = zeros(N, T < 1 ? 0 : T);
    if (T < 1) return beta;
    for (int i = 0; i < N; ++i) beta[at(i)][at(T - 1)] = divide(1.0, scale[at(T - 1)]);
    for (int t = T - 2; t >= 0; --t) {
        for (int i = 0; i < N; ++i) {
            double sum = 0.0;
            for (int j = 0; j < N; ++j) {
                sum = sum + beta[at(j)][at(t + 1)] * a[at(i)][at(j)] * b[at(j)][at(O[at(t + 1)])];
            }
            beta[at(i)][at(t)] = sum / scale[at(t)];
        }
    }
    return beta;
}

inline double forwardProbabilityWithScale(const Symbols& O, int T, Vector& scale, int N,
                                          const Vector& pi, const Table& a, const Table& b) {
    if (T < 1) return 0.0;
    forwardProcWithScale(O, T, scale, N, pi, a, b);
    double sum = 0.0;
    for (int t = 0; t < T; ++t) sum = sum + std::log(scale[at(t)]);
    return sum;
}

// The same on a model's own parameters.

inline Table forwardProcWithScale(const Model& m, const Symbols& O, int T, Vector& scale) {
    return forwardProcWithScale(O, T, scale, m.N, m.pi, m.a, m.b);
}
inline Table backwardProcWithScale(const Model& m, const Symbols& O, int T, const Vector& scale) {
    return backwardProcWithScale(O, T, scale, m.N, m.a, m.b);
}
inline double forwardProbabilityWithScale(const Model& m, const Symbols& O, int T, Vector& scale) {
    return forwardProbabilityWithScale(O, T, scale, m.N, m.pi, m.a, m.b);
}
inline double logLikelihood(const Model& m, const Symbols& O) {
    Vector scale(O.size(), 0.0);
    return forwardProbabilityWithScale(m, O, static_cast<int>(O.size()), scale);
}

// Training

/// Returns how many candidates were adopted.
inline int baumWelch(LeftRightModel& m, const Symbols& O, int T, int maxIterations) {
    int n = 0;
    if (T < 1) return n;
    Table newA = zeros(m.N, m.N);
    Table newB = zeros(m.N, m.M);
    while (!(n >= maxIterations && maxIterations >= 0)) {
        const Table alpha = forwardProc(m, O, T);
        const Table beta = backwardProc(m, O, T);
        for (int i = 0; i < m.N; ++i) {
            for (int j = 0; j < m.N; ++j) {
                double numerator = 0.0;
                double denominator = 0.0;
                for (int t = 0; t <= T - 2; ++t) {
                    numerator = numerator + xi(i, j, t, O, m.N, m.a, m.b, alpha, beta);
                    denominator = denominator + gamma(i, t, m.N, alpha, beta);
                }
                newA[at(i)][at(j)] = divide(numerator, denominator);
            }
        }
        for (int i = 0; i < m.N; ++i) {
            for (int k = 0; k < m.M; ++k) {
                double equal = 0.0;
                double different = 0.0;
                for (int t = 0; t <= T - 1; ++t) {
                    if (O[at(t)] == k) {
                        equal = equal + gamma(i, t, m.N, alpha, beta);
                    } else {
                        different = different + gamma(i, t, m.N, alpha, beta);
                    }
                }
                newB[at(i)][at(k)] = divide(equal, different);
            }
        }
        double oldProb = 0.0;
        for (int i = 0; i < m.N; ++i) oldProb = oldProb + alpha[at(i)][at(T - 1)];
        const double newProb = forwardProbability(O, T, m.N, m.pi, newA, newB);
        if (!(newProb > oldProb)) break;
        m.a = newA;
        m.b = newB;
        ++n;
    }
    return n;
}

/// What one iteration over several sequences came to.
struct Step {
    double oldLog = 0.0;
    double newLog = 0.0;
    bool accepted = false;
    LeftRightModel after;  ///< the model when the iteration was over
};

inline Step iterateMultiple(LeftRightModel& m, const std::vector<Symbols>& sequences) {
    Table newA = zeros(m.N, m.N);
    Table newB = zeros(m.N, m.M);
    for (int i = 0; i < m.N; ++i) {
        for (int j = 0; j < m.N; ++j) {
            double numerator = 0.0;
            double denominator = 0.0;
            for (const Symbols& s : sequences) {
                const int L = static_cast<int>(s.size());
                if (L == 0) continue;
                Vector scale(at(L), 0.0);
                const Table alpha = forwardProcWithScale(m, s, L, scale);
                const Table beta = backwardProcWithScale(m, s, L, scale);
                for (int t = 0; t <= L - 2; ++t) {
                    numerator = numerator + xi(i, j, t, s, m.N, m.a, m.b, alpha, beta);
                    denominator = denominator + gamma(i, t, m.N, alpha, beta);
                }
            }
            newA[at(i)][at(j)] = divide(numerator, denominator);
        }
    }
    for (int i = 0; i < m.N; ++i) {
        for (int k = 0; k < m.M; ++k) {
            double equal = 0.0;
            double different = 0.0;
            for (const Symbols& s : sequences) {
                const int L = static_cast<int>(s.size());
                if (L == 0) continue;
                Vector scale(at(L), 0.0);
                const Table alpha = forwardProcWithScale(m, s, L, scale);
                const Table beta = backwardProcWithScale(m, s, L, scale);
                for (int t = 0; t <= L - 1; ++t) {
                    if (s[at(t)] == k) {
                        equal = equal + gamma(i, t, m.N, alpha, beta);
                    } else {
                        different = different + gamma(i, t, m.N, alpha, beta);
                    }
                }
            }
            newB[at(i)][at(k)] = divide(equal, different);
        }
    }
    Step step;
    for (const Symbols& s : sequences) {
        const int L = static_cast<int>(s.size());
        Vector scale(at(L), 0.0);
        step.oldLog = step.oldLog + forwardProbabilityWithScale(m, s, L, scale);
    }
    for (const Symbols& s : sequences) {
        const int L = static_cast<int>(s.size());
        Vector scale(at(L), 0.0);
        step.newLog = step.newLog + forwardProbabilityWithScale(s, L, scale, m.N, m.pi, newA, newB);
    }
    step.accepted = step.newLog - step.oldLog >= static_cast<double>(m.convergenceThreshold);
    if (step.accepted) {
        m.a = newA;
        m.b = newB;
    }
    step.after = m;
    return step;
}

inline std::vector<Step> baumWelchMultiple(LeftRightModel& m, const std::vector<Symbols>& sequences,
                                           int maxIterations) {
    std::vector<Step> steps;
    int n = 0;
    while (!(n >= maxIterations && maxIterations >= 0)) {
        steps.push_back(iterateMultiple(m, sequences));
        ++n;
        if (!steps.back().accepted) break;
    }
    return steps;
}

/// What training on several sequences writes to standard output.
inline std::string report(const std::vector<Step>& steps) {
    std::ostringstream out;
    for (const Step& step : steps) {
        out << std::fixed << std::setprecision(5);
        out << "log oldProb = " << step.oldLog << "\n";
        out << "log newProb = " << step.newLog << "\n";
        out << "------------------------------------\n";
    }
    return out.str();
}

// Text

inline std::string fileText(const LeftRightModel& m) {
    std::ostringstream out;
    const auto line = [&out](const Vector& values) {
        for (std::size_t i = 0; i < values.size(); ++i) out << (i == 0 ? "" : " ") << values[i];
        out << "\n";
    };
    const auto flat = [](const Table& table) {
        Vector values;
        for (const Vector& row : table) values.insert(values.end(), row.begin(), row.end());
        return values;
    };
    out << m.name << "\n" << m.N << " " << m.M << " " << m.D << " " << m.delta << "\n";
    if (!m.vocabValues.empty()) line(m.vocabValues);
    line(m.pi);
    line(flat(m.a));
    line(flat(m.b));
    Vector firstColumn;
    for (int k = 0; k < m.M; ++k) firstColumn.push_back(m.vocab[at(k)][0]);
    line(firstColumn);
    return out.str();
}

/// The model that a text file with these bytes loads as.
inline LeftRightModel parseLeftRight(const std::string& text) {
    std::istringstream in(text);
    std::string name;
    int N = 0;
    int M = 0;
    int D = 0;
    int delta = 0;
    in >> name >> N >> M >> D >> delta;
    Vector vocabValues;
    double value = 0.0;
    for (int k = 0; k < M; ++k) {
        in >> value;
        vocabValues.push_back(value);
    }
    LeftRightModel m = makeLeftRight(N, M, delta);
    m.name = name;
    m.vocabValues = vocabValues;
    if (N >= 1) {
        for (int i = 0; i < N; ++i) in >> m.pi[at(i)];
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) in >> m.a[at(i)][at(j)];
        }
        for (int i = 0; i < N; ++i) {
            for (int k = 0; k < M; ++k) in >> m.b[at(i)][at(k)];
        }
    }
    return m;
}

// Enumeration: every path through the states, one after the other.

/// Calls `visit` with each of the N^T state paths.
inline void forEachPath(int N, int T, const std::function<void(const std::vector<int>&)>& visit) {
    std::vector<int> path(at(T), 0);
    for (;;) {
        visit(path);
        int t = T - 1;
        while (t >= 0 && path[at(t)] == N - 1) path[at(t--)] = 0;
        if (t < 0) return;
        ++path[at(t)];
    }
}

/// P(the path and O | the model).
inline double pathProbability(const Model& m, const Symbols& O, const std::vector<int>& path) {
    double p = m.pi[at(path[0])] * m.b[at(path[0])][at(O[0])];
    for (std::size_t t = 1; t < path.size(); ++t) {
        p *= m.a[at(path[t - 1])][at(path[t])] * m.b[at(path[t])][at(O[t])];
    }
    return p;
}

/// P(O[0..T-1] | the model) as the sum over all paths.
inline double enumeratedProbability(const Model& m, const Symbols& O, int T) {
    double total = 0.0;
    forEachPath(m.N, T,
                [&](const std::vector<int>& path) { total += pathProbability(m, O, path); });
    return total;
}

}  // namespace Vesk::Test::Reference

#endif
