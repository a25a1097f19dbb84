#ifndef VESK_TESTS_SUPPORT_HMMREFERENCE_H
#define VESK_TESTS_SUPPORT_HMMREFERENCE_H

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <new>
#include <sstream>
#include <string>
#include <vector>

/// The general model, procedure by procedure, written for checking and for nothing else: every
/// sum in its stated order, nothing cached, nothing shared with the library. N states, M symbols,
/// T steps; o is the observed sequence.
namespace Vesk::Test::Reference {

using Vector = std::vector<double>;
using Table = std::vector<std::vector<double>>;  ///< [row][column]
using Symbols = std::vector<int>;

inline std::size_t at(int index) { return static_cast<std::size_t>(index); }

inline Table zeros(int rows, int cols) { return Table(at(rows), Vector(at(cols), 0.0)); }

/// The parameters of a general model.
struct Model {
    std::string name;
    int N = 1;
    int M = 1;
    int D = 1;
    Table vocab;  ///< M x D
    Vector pi;    ///< N
    Table a;      ///< N x N
    Table b;      ///< N x M
};

/// What construction makes: sizes below 1 raised to 1, every parameter 0.0.
inline Model makeModel(int N, int M, int D = 1) {
    Model model;
    model.N = N >= 1 ? N : 1;
    model.M = M >= 1 ? M : 1;
    model.D = D >= 1 ? D : 1;
    model.pi = Vector(at(model.N), 0.0);
    model.a = zeros(model.N, model.N);
    model.b = zeros(model.N, model.M);
    model.vocab = zeros(model.M, model.D);
    return model;
}

/// The uniform estimate in unsigned integer arithmetic: 1 / 2 is 0.
inline void calcInitialProbs(Model& model) {
    const unsigned int statesQuotient = 1U / static_cast<unsigned int>(model.N);
    const unsigned int symbolsQuotient = 1U / static_cast<unsigned int>(model.M);
    const double u = statesQuotient;
    const double v = symbolsQuotient;
    for (int i = 0; i < model.N; ++i) {
        for (int j = 0; j < model.N; ++j) model.a[at(i)][at(j)] = u;
        for (int k = 0; k < model.M; ++k) model.b[at(i)][at(k)] = v;
        model.pi[at(i)] = u;
    }
}

// Sampling

/// One draw of the C library's generator as it is, unseeded.
inline double randD(double max) {
    return static_cast<double>(std::rand()) * 4.656612873077393e-10 * max;
}

/// The sequence, and the path that led to it: path[t] emitted symbol t, one more state at the end.
struct Sample {
    Symbols symbols;
    Symbols path;
};

/// `draw` gives the numbers that `randD(1.0)` would, in order.
inline Sample sample(const Model& model, int length, const std::function<double()>& draw) {
    Sample result;
    if (length < 0) throw std::bad_alloc();
    result.symbols = Symbols(at(length), 0);
    if (length == 0) return result;

    int q = 0;
    {
        const double r = draw();
        double sum = model.pi[0];
        if (!(model.N < 2 || sum >= r)) {
            for (int i = 1; i < model.N; ++i) {
                const double prev = sum;
                sum = sum + model.pi[at(i)];
                if (r > prev && sum >= r) {
                    q = i;
                    break;
                }
            }
        }
    }
    result.path.push_back(q);
    for (int t = 0; t < length; ++t) {
        {
            const double r = draw();
            double sum = model.b[at(q)][0];
            if (sum >= r) {
                result.symbols[at(t)] = 0;
            } else if (model.M >= 2) {
                for (int k = 1; k < model.M; ++k) {
                    const double prev = sum;
                    sum = sum + model.b[at(q)][at(k)];
                    if (r > prev && sum >= r) {
                        result.symbols[at(t)] = k;
                        break;
                    }
                }
            }
        }
        {
            const double r = draw();
            int next = q;
            double sum = model.a[at(q)][0];
            if (sum >= r) {
                next = 0;
            } else if (model.N >= 2) {
                for (int j = 1; j < model.N; ++j) {
                    const double prev = sum;
                    sum = sum + model.a[at(q)][at(j)];
                    if (r > prev && sum >= r) {
                        next = j;
                        break;
                    }
                }
            }
            q = next;
        }
        result.path.push_back(q);
    }
    return result;
}

/// The sequence that the C library's generator, as it is seeded now, makes of the model.
inline Symbols genSeq(const Model& model, int length) {
    return sample(model, length, [] { return randD(1.0); }).symbols;
}

// Evaluation. N rows and T columns; T below 1 gives N empty rows.

inline double divide(double x, double y) {
    if (x == 0.0) return 0.0;
    return x / y;
}

inline Table forwardProc(const Symbols& o, int T, int N, const Vector& pi, const Table& a,
                         const Table& b) {
    Table alpha = zeros(N, T < 1 ? 0 : T);
    if (T < 1) return alpha;
    for (int i = 0; i < N; ++i) alpha[at(i)][0] = pi[at(i)] * b[at(i)][at(o[0])];
    for (int t = 1; t < T; ++t) {
        for (int j = 0; j < N; ++j) {
            double s = 0.0;
            for (int i = 0; i < N; ++i) s = s + alpha[at(i)][at(t - 1)] * a[at(i)][at(j)];
            alpha[at(j)][at(t)] = s * b[at(j)][at(o[at(t)])];
        }
    }
    return alpha;
}

inline Table backwardProc(const Symbols& o, int T, int N, const Table& a, const Table& b) {
    Table beta = zeros(N, T < 1 ? 0 : T);
    if (T < 1) return beta;
    for (int i = 0; i < N; ++i) beta[at(i)][at(T - 1)] = 1.0;
    for (int t = T - 2; t >= 0; --t) {
        for (int i = 0; i < N; ++i) {
            double s = 0.0;
            for (int j = 0; j < N; ++j) {
                s = s + beta[at(j)][at(t + 1)] * a[at(i)][at(j)] * b[at(j)][at(o[at(t + 1)])];
            }
            beta[at(i)][at(t)] = s;
        }
    }
    return beta;
}

inline double forwardProbability(const Symbols& o, int T, int N, const Vector& pi, const Table& a,
                                 const Table& b) {
    if (T < 1) return 0.0;
    const Table alpha = forwardProc(o, T, N, pi, a, b);
    double s = 0.0;
    for (int i = 0; i < N; ++i) s = s + alpha[at(i)][at(T - 1)];
    return s;
}

inline double backwardProbability(const Symbols& o, int T, int N, const Vector& pi, const Table& a,
                                  const Table& b) {
    if (T < 1) return 0.0;
    const Table beta = backwardProc(o, T, N, a, b);
    double s = 0.0;
    for (int i = 0; i < N; ++i) s = s + pi[at(i)] * b[at(i)][at(o[0])] * beta[at(i)][0];
    return s;
}

inline double gamma(int i, int t, int N, const Table& alpha, const Table& beta) {
    double denominator = 0.0;
    for (int k = 0; k < N; ++k) {
        denominator = denominator + alpha[at(k)][at(t)] * beta[at(k)][at(t)];
    }
    return divide(alpha[at(i)][at(t)] * beta[at(i)][at(t)], denominator);
}

inline double xi(int i, int j, int t, const Symbols& o, int N, const Table& a, const Table& b,
                 const Table& alpha, const Table& beta) {
    double denominator = 0.0;
    for (int k = 0; k < N; ++k) {
        for (int l = 0; l < N; ++l) {
            denominator = denominator + a[at(k)][at(l)] * alpha[at(k)][at(t)] *
                                            b[at(l)][at(o[at(t + 1)])] * beta[at(l)][at(t + 1)];
        }
    }
    return divide(
        alpha[at(i)][at(t)] * a[at(i)][at(j)] * b[at(j)][at(o[at(t + 1)])] * beta[at(j)][at(t + 1)],
        denominator);
}

/// 2 x T: (0, 0) the path's probability, (1, t) the state at t.
inline Table viterbi(const Symbols& o, int T, int N, const Vector& pi, const Table& a,
                     const Table& b) {
    Table result = zeros(2, T < 1 ? 0 : T);
    if (T < 1) return result;
    Table score = zeros(N, T);
    std::vector<std::vector<int>> psi(at(N), std::vector<int>(at(T), 0));
    for (int i = 0; i < N; ++i) {
        score[at(i)][0] = -std::log(pi[at(i)]) - std::log(b[at(i)][at(o[0])]);
        psi[at(i)][0] = 0;
    }
    for (int t = 1; t < T; ++t) {
        for (int j = 0; j < N; ++j) {
            double best = score[0][at(t - 1)] - std::log(a[0][at(j)]);
            int arg = 0;
            for (int i = 1; i < N; ++i) {
                const double cost = score[at(i)][at(t - 1)] - std::log(a[at(i)][at(j)]);
                if (best > cost) {
                    best = cost;
                    arg = i;
                }
            }
            score[at(j)][at(t)] = best - std::log(b[at(j)][at(o[at(t)])]);
            psi[at(j)][at(t)] = arg;
        }
    }
    double best = score[0][at(T - 1)];
    int state = 0;
    for (int i = 1; i < N; ++i) {
        if (best > score[at(i)][at(T - 1)]) {
            best = score[at(i)][at(T - 1)];
            state = i;
        }
    }
    std::vector<int> path(at(T), 0);
    path[at(T - 1)] = state;
    for (int t = T - 1; t >= 1; --t) path[at(t - 1)] = psi[at(path[at(t)])][at(t)];
    result[0][0] = std::exp(-best);
    for (int t = 0; t < T; ++t) result[1][at(t)] = static_cast<double>(path[at(t)]);
    return result;
}

// The same on a model's own parameters.

inline Table forwardProc(const Model& m, const Symbols& o, int T) {
    return forwardProc(o, T, m.N, m.pi, m.a, m.b);
}
inline Table backwardProc(const Model& m, const Symbols& o, int T) {
    return backwardProc(o, T, m.N, m.a, m.b);
}
inline double forwardProbability(const Model& m, const Symbols& o, int T) {
    return forwardProbability(o, T, m.N, m.pi, m.a, m.b);
}
inline double backwardProbability(const Model& m, const Symbols& o, int T) {
    return backwardProbability(o, T, m.N, m.pi, m.a, m.b);
}
inline Table viterbi(const Model& m, const Symbols& o, int T) {
    return viterbi(o, T, m.N, m.pi, m.a, m.b);
}

// Training

/// One iteration's candidate, and the two values that decide whether it is adopted.
struct Candidate {
    Vector pi;
    Table a;
    Table b;
    double previous = 0.0;
    double likelihood = 0.0;
};

inline Candidate reestimate(const Model& m, const Symbols& o, int T) {
    const int N = m.N;
    const int M = m.M;
    Candidate next;
    next.pi = Vector(at(N), 0.0);
    next.a = zeros(N, N);
    next.b = zeros(N, M);
    const Table alpha = forwardProc(m, o, T);
    const Table beta = backwardProc(m, o, T);
    for (int i = 0; i < N; ++i) next.pi[at(i)] = gamma(i, 0, N, alpha, beta);
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; ++j) {
            double numerator = 0.0;
            double denominator = 0.0;
            for (int t = 0; t <= T - 2; ++t) {
                numerator = numerator + xi(i, j, t, o, N, m.a, m.b, alpha, beta);
                denominator = denominator + gamma(i, t, N, alpha, beta);
            }
            next.a[at(i)][at(j)] = divide(numerator, denominator);
        }
    }
    for (int i = 0; i < N; ++i) {
        for (int k = 0; k < M; ++k) {
            double numerator = 0.0;
            double denominator = 0.0;
            for (int t = 0; t <= T - 1; ++t) {
                if (o[at(t)] == k) {
                    numerator = numerator + gamma(i, t, N, alpha, beta);
                } else {
                    denominator = denominator + gamma(i, t, N, alpha, beta);
                }
            }
            next.b[at(i)][at(k)] = divide(numerator, denominator);
        }
    }
    // Flat position i * T + T of an N x T table is (i + 1, 0); the last one lies past the end.
    for (int i = 0; i < N; ++i) {
        next.previous = next.previous + (i < N - 1 ? alpha[at(i + 1)][0] : 0.0);
    }
    next.likelihood = forwardProbability(o, T, N, next.pi, next.a, next.b);
    return next;
}

/// Returns how many re-estimations were adopted.
inline int baumWelch(Model& m, const Symbols& o, int T, int maxIterations) {
    int counter = 0;
    if (T < 1) return counter;
    while (counter < maxIterations || maxIterations < 0) {
        const Candidate next = reestimate(m, o, T);
        if (!(next.likelihood > next.previous)) break;
        m.pi = next.pi;
        m.a = next.a;
        m.b = next.b;
        ++counter;
    }
    return counter;
}

// Text

inline std::string fileText(const Model& m) {
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
    out << m.name << "\n" << m.N << " " << m.M << " " << m.D << "\n";
    line(m.pi);
    line(flat(m.a));
    line(flat(m.b));
    Vector firstColumn;
    for (int k = 0; k < m.M; ++k) firstColumn.push_back(m.vocab[at(k)][0]);
    line(firstColumn);
    return out.str();
}

inline std::string dumpText(const Model& m) {
    std::ostringstream out;
    out << std::setprecision(3);
    out << "name: " << m.name << "\n";
    out << "numStates: " << m.N << "\n";
    out << "vocabSize: " << m.M << "\n";
    out << "Initial probs pi:\n";
    for (int i = 0; i < m.N; ++i) out << m.pi[at(i)] << " ";
    out << "\n\n";
    out << "Transition probs a:\n";
    for (int i = 0; i < m.N; ++i) {
        for (int j = 0; j < m.N; ++j) out << m.a[at(i)][at(j)] << " ";
        out << "\n";
    }
    out << "\n";
    out << "Emission probs b:\n";
    for (int i = 0; i < m.N; ++i) {
        for (int k = 0; k < m.M; ++k) out << m.b[at(i)][at(k)] << " ";
        out << "\n\n";
    }
    return out.str();
}

/// The model that a text file with these bytes loads as. The file's own sizes say how much is
/// read; one that is no int is refused.
inline Model parse(const std::string& text) {
    std::istringstream in(text);
    std::string name;
    unsigned int N = 0;
    unsigned int M = 0;
    int D = 1;
    in >> name >> N >> M >> D;
    if (N > 2147483647U || M > 2147483647U) throw std::bad_alloc();
    const int states = static_cast<int>(N);
    const int symbols = static_cast<int>(M);
    Model m = D != -1 ? makeModel(states, symbols, D) : makeModel(states, symbols);
    m.name = name;
    for (int i = 0; i < states; ++i) in >> m.pi[at(i)];
    for (int i = 0; i < states; ++i) {
        for (int j = 0; j < states; ++j) in >> m.a[at(i)][at(j)];
    }
    for (int i = 0; i < states; ++i) {
        for (int k = 0; k < symbols; ++k) in >> m.b[at(i)][at(k)];
    }
    if (D > 1) {
        for (int k = 0; k < symbols; ++k) {
            for (int d = 0; d < D; ++d) in >> m.vocab[at(k)][at(d)];
        }
    }
    return m;
}

}  // namespace Vesk::Test::Reference

#endif
