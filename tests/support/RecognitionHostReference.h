#ifndef VESK_TESTS_SUPPORT_RECOGNITIONHOSTREFERENCE_H
#define VESK_TESTS_SUPPORT_RECOGNITIONHOSTREFERENCE_H

#include <support/RecognitionReference.h>

#include <cmath>
#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// What a host runs before it composes a recognition model, step by step: quantiser, initial
/// estimate, training, left-right file. It shares nothing with the library.
namespace Vesk::Test::Reference::Recognition {

using Trace = std::vector<std::vector<double>>;

// Quantiser

inline std::vector<double> evenCodebook(int n) {
    const float step = 360.0f / static_cast<float>(n);
    std::vector<double> codebook;
    double value = 0.0;
    for (int i = 0; i < n; ++i) {
        codebook.push_back(value);
        value += static_cast<double>(step);
    }
    return codebook;
}

inline Trace withoutRepeats(const Trace& in) {
    Trace out;
    if (in.size() < 2) return out;
    out.push_back(in[0]);
    for (std::size_t i = 1; i < in.size(); ++i) {
        if (!(in[i] == in[i - 1])) out.push_back(in[i]);
    }
    return out;
}

inline Trace withoutNeighbours(const Trace& in, double threshold) {
    Trace out;
    if (in.size() < 2) return out;
    out.push_back(in[0]);
    for (std::size_t i = 1; i < in.size(); ++i) {
        const std::vector<double>& last = out.back();
        double sum = 0.0;
        for (std::size_t k = 0; k < in[i].size(); ++k) {
            sum += (in[i][k] - last.at(k)) * (in[i][k] - last.at(k));
        }
        if (std::sqrt(sum) >= threshold) out.push_back(in[i]);
    }
    return out;
}

inline std::vector<double> directions(const Trace& trace) {
    if (trace.size() < 2) return {0.0};
    std::vector<double> angles;
    for (std::size_t i = 1; i < trace.size(); ++i) {
        const double previousX = trace[i - 1][0];
        const double previousY = trace[i - 1][1];
        const double x = trace[i][0];
        const double y = trace[i][1];
        double angle = 0.0;
        if (x == previousX) {
            angle = previousY < y ? 90.0 : 270.0;
        } else {
            angle = std::atan((y - previousY) / (x - previousX)) * 57.29577951308232;
            if (previousX > x) angle += 180.0;
            if (angle < 0.0) angle += 360.0;
        }
        angles.push_back(angle);
    }
    return angles;
}

/// The nearest entry on the circle, the lowest index of several.
inline int nearestEntry(const std::vector<double>& codebook, double angle) {
    int nearest = 0;
    double least = 720.0;
    for (std::size_t c = 0; c < codebook.size(); ++c) {
        const double difference = std::fabs(angle - codebook[c]);
        const double distance = difference < 360.0 - difference ? difference : 360.0 - difference;
        if (distance < least) {
            least = distance;
            nearest = static_cast<int>(c);
        }
    }
    return nearest;
}

inline std::vector<int> classify(const Trace& trace, const std::vector<double>& codebook,
                                 float threshold, bool rotationAllowed) {
    const Trace kept = withoutNeighbours(withoutRepeats(trace), static_cast<double>(threshold));
    if (kept.size() <= 1) return {};
    std::vector<int> symbols;
    for (double angle : directions(kept)) symbols.push_back(nearestEntry(codebook, angle));
    if (rotationAllowed) {
        const int base = symbols[0];
        for (int& symbol : symbols) {
            symbol -= base;
            if (symbol < 0) symbol += static_cast<int>(codebook.size());
        }
    }
    return symbols;
}

/// The lines that codebook training writes for one trace.
inline void announceTrace(std::ostream& out, const Trace& trace, float threshold) {
    const Trace distinct = withoutRepeats(trace);
    out << distinct.size() << " positions after eq filter\n";
    out << withoutNeighbours(distinct, static_cast<double>(threshold)).size()
        << " positions after prox filter\n\n";
}

inline std::string codebookText(const std::vector<double>& codebook) {
    std::ostringstream out;
    for (std::size_t i = 0; i < codebook.size(); ++i) {
        if (i > 0) out << '\n';
        out << codebook[i];
    }
    return out.str();
}

// Initial estimate

/// Left-right start and transitions for a delta of at least 0.
inline void estimateTransitions(Model& model) {
    const int N = static_cast<int>(model.numStates);
    for (int i = 0; i < N; ++i) {
        model.pi.at(static_cast<std::size_t>(i)) = i == 0 ? 1.0 : 0.0;
        for (int j = 0; j < N; ++j) {
            double value = 0.0;
            if (j >= i && j <= i + model.delta) {
                value = i + model.delta < N ? 1.0 / static_cast<double>(model.delta + 1)
                                            : 1.0 / static_cast<double>(N - i);
            }
            model.a.at(i, j) = value;
        }
    }
}

/// The segments of one sequence, by the walk over its symbols.
inline std::vector<std::vector<int>> segments(const std::vector<int>& sequence, int N) {
    const int L = static_cast<int>(sequence.size());
    const float segmentLength = std::floor(static_cast<float>(L) / static_cast<float>(N));
    const int rest = static_cast<int>(static_cast<double>(L) -
                                      static_cast<double>(N) * static_cast<double>(segmentLength));
    const int head = rest > 1 ? static_cast<int>(std::floor(static_cast<float>(rest) * 0.5f)) : 0;
    std::vector<std::vector<int>> closed;
    std::vector<int> current;
    int fill = 0;
    int h = 0;
    int m = 0;
    for (int t = 0; t < L; ++t) {
        double limit = static_cast<double>(segmentLength);
        const bool isHead = head > h;
        const bool isTail = !isHead && m >= N - rest;
        if (isHead || isTail) limit += 1.0;
        if (static_cast<double>(fill) < limit) {
            current.push_back(sequence[static_cast<std::size_t>(t)]);
            ++fill;
            if (t == L - 1) closed.push_back(current);
        } else {
            closed.push_back(current);
            if (isHead) {
                ++h;
            } else if (!isTail) {
                ++m;
            }
            current = {sequence[static_cast<std::size_t>(t)]};
            fill = 1;
        }
    }
    return closed;
}

inline void estimateEqualSegments(Model& model, const std::vector<std::vector<int>>& sequences,
                                  std::ostream& out) {
    out << "LeftRightHMM::calcInitialProbs: 2\n\n";
    estimateTransitions(model);
    const int N = static_cast<int>(model.numStates);
    const int M = static_cast<int>(model.vocabSize);
    std::vector<int> perState(model.numStates, 0);
    std::vector<std::vector<int>> counts(model.numStates, std::vector<int>(model.vocabSize, 0));
    for (const std::vector<int>& sequence : sequences) {
        const auto cut = segments(sequence, N);
        for (std::size_t j = 0; j < cut.size(); ++j) {
            for (int v : cut[j]) {
                counts.at(j).at(static_cast<std::size_t>(v)) += 1;
                perState.at(j) += 1;
            }
        }
    }
    for (int i = 0; i < N; ++i) {
        for (int k = 0; k < M; ++k) {
            const auto row = static_cast<std::size_t>(i);
            model.b.at(i, k) = divide(static_cast<double>(counts[row][static_cast<std::size_t>(k)]),
                                      static_cast<double>(perState[row]));
        }
    }
}

// Training

inline Table scaledForward(const Model& model, const std::vector<int>& o,
                           std::vector<double>& scale) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Table alpha;
    alpha.resize(N, T);
    scale.at(0) = 0.0;
    for (int i = 0; i < N; ++i) {
        alpha.at(i, 0) = model.pi.at(static_cast<std::size_t>(i)) * model.b.at(i, o[0]);
        scale[0] += alpha.at(i, 0);
    }
    for (int i = 0; i < N; ++i) alpha.at(i, 0) = divide(alpha.at(i, 0), scale[0]);
    for (int t = 1; t < T; ++t) {
        const auto at = static_cast<std::size_t>(t);
        scale.at(at) = 0.0;
        for (int j = 0; j < N; ++j) {
            double sum = 0.0;
            for (int i = 0; i < N; ++i) sum += alpha.at(i, t - 1) * model.a.at(i, j);
            alpha.at(j, t) = sum * model.b.at(j, o[at]);
            scale[at] += alpha.at(j, t);
        }
        for (int j = 0; j < N; ++j) alpha.at(j, t) = divide(alpha.at(j, t), scale[at]);
    }
    return alpha;
}

inline Table scaledBackward(const Model& model, const std::vector<int>& o,
                            const std::vector<double>& scale) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Table beta;
    beta.resize(N, T);
    for (int i = 0; i < N; ++i) {
        beta.at(i, T - 1) = divide(1.0, scale[static_cast<std::size_t>(T - 1)]);
    }
    for (int t = T - 2; t >= 0; --t) {
        for (int i = 0; i < N; ++i) {
            double sum = 0.0;
            for (int j = 0; j < N; ++j) {
                sum += beta.at(j, t + 1) * model.a.at(i, j) *
                       model.b.at(j, o[static_cast<std::size_t>(t + 1)]);
            }
            beta.at(i, t) = sum / scale[static_cast<std::size_t>(t)];
        }
    }
    return beta;
}

inline double logProbability(const Model& model, const std::vector<int>& o) {
    if (o.empty()) return 0.0;
    std::vector<double> scale(o.size(), 0.0);
    scaledForward(model, o, scale);
    double sum = 0.0;
    for (double factor : scale) sum += std::log(factor);
    return sum;
}

inline double xi(const Model& model, int i, int j, int t, const std::vector<int>& o,
                 const Table& alpha, const Table& beta) {
    const int N = static_cast<int>(model.numStates);
    const int next = o[static_cast<std::size_t>(t + 1)];
    double sum = 0.0;
    for (int k = 0; k < N; ++k) {
        for (int l = 0; l < N; ++l) {
            sum += model.a.at(k, l) * alpha.at(k, t) * model.b.at(l, next) * beta.at(l, t + 1);
        }
    }
    return divide(alpha.at(i, t) * model.a.at(i, j) * model.b.at(j, next) * beta.at(j, t + 1), sum);
}

/// Multi-sequence training; the two tables of every sequence are kept for an iteration.
inline void train(Model& model, const std::vector<std::vector<int>>& sequences, int maxIterations,
                  float convergenceThreshold, std::ostream& out) {
    const int N = static_cast<int>(model.numStates);
    const int M = static_cast<int>(model.vocabSize);
    Table newA;
    Table newB;
    newA.resize(N, N);
    newB.resize(N, M);
    for (int n = 0; n < maxIterations || maxIterations < 0; ++n) {
        std::vector<Table> alphas;
        std::vector<Table> betas;
        for (const std::vector<int>& s : sequences) {
            std::vector<double> scale(s.size(), 0.0);
            alphas.push_back(scaledForward(model, s, scale));
            betas.push_back(scaledBackward(model, s, scale));
        }
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) {
                double numerator = 0.0;
                double denominator = 0.0;
                for (std::size_t s = 0; s < sequences.size(); ++s) {
                    const int L = static_cast<int>(sequences[s].size());
                    for (int t = 0; t <= L - 2; ++t) {
                        numerator += xi(model, i, j, t, sequences[s], alphas[s], betas[s]);
                        denominator += gamma(model, i, t, alphas[s], betas[s]);
                    }
                }
                newA.at(i, j) = divide(numerator, denominator);
            }
        }
        for (int i = 0; i < N; ++i) {
            for (int k = 0; k < M; ++k) {
                double equal = 0.0;
                double unequal = 0.0;
                for (std::size_t s = 0; s < sequences.size(); ++s) {
                    for (std::size_t t = 0; t < sequences[s].size(); ++t) {
                        const double posterior =
                            gamma(model, i, static_cast<int>(t), alphas[s], betas[s]);
                        if (sequences[s][t] == k) {
                            equal += posterior;
                        } else {
                            unequal += posterior;
                        }
                    }
                }
                newB.at(i, k) = divide(equal, unequal);
            }
        }
        double oldLog = 0.0;
        for (const std::vector<int>& s : sequences) oldLog += logProbability(model, s);
        Model candidate = model;
        candidate.a = newA;
        candidate.b = newB;
        double newLog = 0.0;
        for (const std::vector<int>& s : sequences) newLog += logProbability(candidate, s);
        out.setf(std::ios::fixed, std::ios::floatfield);
        out.precision(5);
        out << "log oldProb = " << oldLog << '\n';
        out << "log newProb = " << newLog << '\n';
        out.unsetf(std::ios::fixed);
        const bool accepted = newLog - oldLog >= static_cast<double>(convergenceThreshold);
        if (accepted) {
            model.a = newA;
            model.b = newB;
        }
        out << "------------------------------------\n";
        if (!accepted) return;
    }
}

/// What a left-right model's own `write` leaves in a file.
inline std::string leftRightText(const Model& model, const std::vector<double>& vocabValues) {
    std::ostringstream out;
    out << model.name << '\n';
    out << model.numStates << ' ' << model.vocabSize << ' ' << model.dimension << ' ' << model.delta
        << '\n';
    if (!vocabValues.empty()) Recogniser::list(out, vocabValues);
    Recogniser::tables(out, model);
    std::vector<double> column;
    for (int k = 0; k < static_cast<int>(model.vocabSize); ++k) {
        column.push_back(model.vocab.at(k, 0));
    }
    Recogniser::list(out, column);
    return out.str();
}

}  // namespace Vesk::Test::Reference::Recognition

#endif
