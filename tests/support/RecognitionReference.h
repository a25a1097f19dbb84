#ifndef VESK_TESTS_SUPPORT_RECOGNITIONREFERENCE_H
#define VESK_TESTS_SUPPORT_RECOGNITIONREFERENCE_H

#include <cstddef>
#include <cstdint>
#include <ios>
#include <new>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

/// A slow recognition model without any cleverness: every procedure loop by loop, every sum in its
/// stated order, every table position checked. It shares nothing with the library.
namespace Vesk::Test::Reference::Recognition {

/// Row-major; element (r, c) at flat position cols * r + c, whatever the shape says.
struct Table {
    std::vector<double> flat;
    int rows = 0;
    int cols = 0;

    void resize(int r, int c) {
        if (rows == r && cols == c) return;
        rows = r;
        cols = c;
        flat.resize(static_cast<std::size_t>(r) * static_cast<std::size_t>(c), 0.0);
    }
    /// std::out_of_range outside the storage.
    double& at(int r, int c) { return flat.at(static_cast<std::size_t>(cols * r + c)); }
    double at(int r, int c) const { return flat.at(static_cast<std::size_t>(cols * r + c)); }
};

/// A gesture model or the combined one.
struct Model {
    std::string name;
    unsigned int numStates = 1;
    unsigned int vocabSize = 1;
    int dimension = 1;
    Table vocab;
    std::vector<double> pi;
    Table a;
    Table b;
    int delta = 0;
};

inline Model generalModel(int numStates, int vocabSize) {
    Model model;
    model.numStates = static_cast<unsigned int>(numStates < 1 ? 1 : numStates);
    model.vocabSize = static_cast<unsigned int>(vocabSize < 1 ? 1 : vocabSize);
    const int N = static_cast<int>(model.numStates);
    const int M = static_cast<int>(model.vocabSize);
    model.pi.assign(model.numStates, 0.0);
    model.a.resize(N, N);
    model.b.resize(N, M);
    model.vocab.resize(M, 1);
    return model;
}

inline Model leftRightModel(int numStates, int vocabSize, int delta) {
    Model model = generalModel(numStates, vocabSize);
    for (int k = 0; k < vocabSize; ++k) model.vocab.at(k, 0) = static_cast<double>(k);
    model.delta = delta;
    return model;
}

// Evaluation

inline double divide(double x, double y) {
    if (x == 0.0) return 0.0;
    return x / y;
}

inline Table forwardTable(const Model& model, const std::vector<int>& o) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Table alpha;
    alpha.resize(N, T);
    for (int i = 0; i < N; ++i) {
        alpha.at(i, 0) = model.pi.at(static_cast<std::size_t>(i)) * model.b.at(i, o[0]);
    }
    for (int t = 1; t < T; ++t) {
        for (int j = 0; j < N; ++j) {
            double s = 0.0;
            for (int i = 0; i < N; ++i) s = s + alpha.at(i, t - 1) * model.a.at(i, j);
            alpha.at(j, t) = s * model.b.at(j, o[static_cast<std::size_t>(t)]);
        }
    }
    return alpha;
}

inline Table backwardTable(const Model& model, const std::vector<int>& o) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Table beta;
    beta.resize(N, T);
    for (int i = 0; i < N; ++i) beta.at(i, T - 1) = 1.0;
    for (int t = T - 2; t >= 0; --t) {
        for (int i = 0; i < N; ++i) {
            double s = 0.0;
            for (int j = 0; j < N; ++j) {
                s = s + beta.at(j, t + 1) * model.a.at(i, j) *
                            model.b.at(j, o[static_cast<std::size_t>(t + 1)]);
            }
            beta.at(i, t) = s;
        }
    }
    return beta;
}

inline double forwardProbability(const Model& model, const std::vector<int>& o) {
    if (o.empty()) return 0.0;
    const Table alpha = forwardTable(model, o);
    double sum = 0.0;
    for (int i = 0; i < static_cast<int>(model.numStates); ++i) {
        sum = sum + alpha.at(i, static_cast<int>(o.size()) - 1);
    }
    return sum;
}

inline double gamma(const Model& model, int i, int t, const Table& alpha, const Table& beta) {
    double sum = 0.0;
    for (int k = 0; k < static_cast<int>(model.numStates); ++k) {
        sum = sum + alpha.at(k, t) * beta.at(k, t);
    }
    return divide(alpha.at(i, t) * beta.at(i, t), sum);
}

/// P(o) as the sum over every state path: N ^ T products.
inline double probabilityByEnumeration(const Model& model, const std::vector<int>& o) {
    const std::size_t N = model.numStates;
    std::size_t paths = 1;
    for (std::size_t t = 0; t < o.size(); ++t) paths *= N;
    double sum = 0.0;
    for (std::size_t path = 0; path < paths; ++path) {
        std::size_t rest = path;
        int previous = static_cast<int>(rest % N);
        double p = model.pi.at(static_cast<std::size_t>(previous)) * model.b.at(previous, o[0]);
        for (std::size_t t = 1; t < o.size(); ++t) {
            rest /= N;
            const int state = static_cast<int>(rest % N);
            p *= model.a.at(previous, state) * model.b.at(state, o[t]);
            previous = state;
        }
        sum += p;
    }
    return sum;
}

// The recognition model

struct Score {
    double probability = 0.0;
    double weightedProbability = 0.0;
    double weightedGamma = 0.0;
    bool accepted = false;
};

struct Decision {
    bool longEnough = false;
    double threshold = 0.0;
    std::vector<Score> scores;
    int winner = -1;
    std::string name;
};

struct Recogniser {
    bool fromParameters = false;
    double gestureTransitionProb = 1.0;
    double modelTransitionProb = 1.0;
    std::string name;
    unsigned int numStates = 0;
    unsigned int vocabSize = 0;
    Table vocab;
    std::vector<double> pi;
    Table a;
    Table b;
    std::vector<Model> gestures;
    std::vector<double> codebook;
    float proxFilterThreshold = 1.0f;
    bool rotationAllowed = true;
    std::optional<Model> combined;

    Recogniser() = default;
    Recogniser(std::vector<Model> models, double p) : gestures(std::move(models)) {
        setModelTransitionProb(p);
    }

    void setModelTransitionProb(double p) {
        modelTransitionProb = p;
        if (p == 1.0) {
            gestureTransitionProb = 1.0;
        } else {
            gestureTransitionProb = divide(1.0 - p, static_cast<double>(gestures.size()));
        }
    }

    void setName(const std::string& n) {
        name = n;
        if (combined) combined->name = n;
    }

    // Composition. std::out_of_range where a table would be left; the object is then spoilt.

    bool initialize() {
        if (fromParameters) return false;
        if (gestures.empty()) return false;
        vocabSize = 0;
        unsigned int sum = 0;
        bool first = true;
        for (const Model& gesture : gestures) {
            sum += gesture.numStates;
            numStates = sum;
            if (first) {
                vocabSize = gesture.vocabSize;
                vocab = gesture.vocab;
                first = false;
            }
        }
        pi.resize(numStates, 0.0);
        const int N = static_cast<int>(numStates);
        const int M = static_cast<int>(vocabSize);
        if (a.rows != N || a.cols != N) a.resize(N, N);
        if (b.rows != N || b.cols != M) b.resize(N, M);
        return setParameters();
    }

    bool setParameters() {
        combined = generalModel(static_cast<int>(numStates), static_cast<int>(vocabSize));
        for (unsigned int i = 0; i < numStates; ++i) {
            pi.at(i) = divide(1.0, static_cast<double>(numStates));
        }
        int s = 0;
        for (const Model& g : gestures) {
            for (int k = 0; k < g.a.rows; ++k) {
                const double d = g.a.at(k, k);
                a.at(s, s) = d;
                const unsigned int others = numStates - 1;
                const double o = divide(1.0 - d, static_cast<double>(others));
                for (int j = 0; j < static_cast<int>(numStates); ++j) {
                    if (j != s) a.at(s, j) = o;
                }
                s = s + 1;
            }
        }
        int r = 0;
        for (const Model& g : gestures) {
            for (int i = 0; i < g.b.rows; ++i) {
                for (int k = 0; k < g.b.cols; ++k) b.at(r + i, k) = g.b.at(i, k);
            }
            r = r + g.b.rows;
        }
        copyStagingToCombined();
        return true;
    }

    bool createRecognitionHMMfromParameters() {
        combined = generalModel(static_cast<int>(numStates), static_cast<int>(vocabSize));
        copyStagingToCombined();
        fromParameters = true;
        return true;
    }

    /// What `print` writes on a stream.
    void print(std::ostream& out) const {
        if (!combined) return;
        const int N = static_cast<int>(combined->numStates);
        const int M = static_cast<int>(combined->vocabSize);
        out.precision(3);
        out << "name: " << combined->name << '\n';
        out << "numStates: " << combined->numStates << '\n';
        out << "vocabSize: " << combined->vocabSize << '\n';
        out << "Initial probs pi:" << '\n';
        for (int i = 0; i < N; ++i) out << combined->pi.at(static_cast<std::size_t>(i)) << ' ';
        out << '\n' << '\n';
        out << "Transition probs a:" << '\n';
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) out << combined->a.at(i, j) << ' ';
            out << '\n';
        }
        out << '\n';
        out << "Emission probs b:" << '\n';
        for (int i = 0; i < N; ++i) {
            for (int k = 0; k < M; ++k) out << combined->b.at(i, k) << ' ';
            out << '\n' << '\n';
        }
    }

    // Recognition

    double forwardProb(const std::vector<int>& sequence) const {
        if (!combined) return 0.0;
        return forwardProbability(*combined, sequence);
    }

    /// Decides and writes the trace on `out`, whose formatting is taken as it is.
    Decision check(const std::vector<int>& sequence, std::ostream& out) const {
        Decision decision;
        const int T = static_cast<int>(sequence.size());
        if (T < 2) return decision;
        decision.longEnough = true;
        const double P0 = forwardProb(sequence);
        decision.threshold = P0 * modelTransitionProb;
        out << "threshold = " << decision.threshold << '\n';
        if (gestures.empty()) return decision;
        double best = 0.0;
        for (std::size_t i = 0; i < gestures.size(); ++i) {
            const Model& g = gestures[i];
            Score score;
            score.probability = forwardProbability(g, sequence);
            score.weightedProbability = score.probability * gestureTransitionProb;
            out << "prob[" << i << "] = " << score.weightedProbability << '\n';
            const Table alpha = forwardTable(g, sequence);
            const Table beta = backwardTable(g, sequence);
            const double G = gamma(g, alpha.rows - 1, alpha.cols - 1, alpha, beta);
            score.weightedGamma = G * gestureTransitionProb;
            out << "gamma = " << score.weightedGamma << '\n';
            if (score.probability > best) {
                if (score.probability * gestureTransitionProb > P0 * modelTransitionProb) {
                    if (gestureTransitionProb * G > P0 * modelTransitionProb) {
                        score.accepted = true;
                        decision.name = g.name;
                        decision.winner = static_cast<int>(i);
                        best = score.probability;
                    }
                }
            }
            decision.scores.push_back(score);
        }
        return decision;
    }

    // Model file

    static void list(std::ostream& out, const std::vector<double>& values) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i > 0) out << ' ';
            out << values[i];
        }
        out << '\n';
    }

    static void tables(std::ostream& out, const Model& model) {
        const int N = static_cast<int>(model.numStates);
        const int M = static_cast<int>(model.vocabSize);
        std::vector<double> values;
        for (int i = 0; i < N; ++i) values.push_back(model.pi.at(static_cast<std::size_t>(i)));
        list(out, values);
        values.clear();
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) values.push_back(model.a.at(i, j));
        }
        list(out, values);
        values.clear();
        for (int i = 0; i < N; ++i) {
            for (int k = 0; k < M; ++k) values.push_back(model.b.at(i, k));
        }
        list(out, values);
    }

    void headerBlock(std::ostream& out) const {
        out << static_cast<double>(proxFilterThreshold) << ' ' << (rotationAllowed ? 1 : 0) << ' '
            << codebook.size() << '\n';
        list(out, codebook);
        out << '\n';
        out << name << '\n';
        out << numStates << ' ' << vocabSize << ' ' << combined.value().dimension << ' '
            << modelTransitionProb << '\n';
        tables(out, *combined);
        std::vector<double> values;
        for (int k = 0; k < static_cast<int>(combined->vocabSize); ++k) {
            values.push_back(combined->vocab.at(k, 0));
        }
        list(out, values);
    }

    static void gestureBlock(std::ostream& out, const Model& gesture) {
        out << gesture.name << '\n';
        out << gesture.numStates << ' ' << gesture.vocabSize << ' ' << gesture.dimension << ' '
            << gesture.delta << '\n';
        tables(out, gesture);
    }

    /// What `write` leaves in the file; combined model needed.
    std::string fileText() const {
        std::ostringstream out;
        headerBlock(out);
        out << '\n';
        for (const Model& gesture : gestures) {
            gestureBlock(out, gesture);
            out << '\n';
        }
        return upToNul(out.str());
    }

    /// Reads the text of a file, announcing on `out`. std::bad_alloc where a table is refused.
    bool load(const std::string& text, std::ostream& out) {
        std::istringstream in(text);
        int rotation = 0;
        int dropped = 0;
        unsigned int entries = 0;
        in >> proxFilterThreshold;
        in >> rotation;
        rotationAllowed = rotation == 1;
        in >> entries;
        refuse(entries, 1, text);
        double value = 0.0;  // an entry that cannot be read repeats what this holds
        for (unsigned int i = 0; i < entries; ++i) {
            in >> value;
            codebook.push_back(value);
        }
        in >> name;
        in >> numStates;
        in >> vocabSize;
        in >> dropped;
        in >> modelTransitionProb;
        refuse(vocabSize, 1, text);
        refuse(numStates, 1, text);
        refuse(numStates, numStates, text);
        refuse(numStates, vocabSize, text);
        const int N = static_cast<int>(numStates);
        const int M = static_cast<int>(vocabSize);
        vocab.resize(M, 1);
        pi.resize(numStates, 0.0);
        a.resize(N, N);
        b.resize(N, M);
        for (int i = 0; i < N; ++i) in >> pi.at(static_cast<std::size_t>(i));
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) in >> a.at(i, j);
        }
        for (int i = 0; i < N; ++i) {
            for (int k = 0; k < M; ++k) in >> b.at(i, k);
        }
        for (int k = 0; k < M; ++k) in >> vocab.at(k, 0);
        for (;;) {
            std::string word;
            in >> word;
            if (in.fail() || in.bad()) break;
            out << "loading gesture '" << word << "'" << '\n';
            unsigned int Ng = 0;
            unsigned int Mg = 0;
            int delta = 0;
            in >> Ng >> Mg >> dropped >> delta;
            refuse(Ng, 1, text);
            refuse(Ng, Ng, text);
            refuse(Ng, Mg, text);
            refuse(Mg, 1, text);
            const int rows = static_cast<int>(Ng);
            const int cols = static_cast<int>(Mg);
            std::vector<double> piRead(Ng, 0.0);
            Table aRead;
            Table bRead;
            aRead.resize(rows, rows);
            bRead.resize(rows, cols);
            for (int i = 0; i < rows; ++i) in >> piRead.at(static_cast<std::size_t>(i));
            for (int i = 0; i < rows; ++i) {
                for (int j = 0; j < rows; ++j) in >> aRead.at(i, j);
            }
            for (int i = 0; i < rows; ++i) {
                for (int k = 0; k < cols; ++k) in >> bRead.at(i, k);
            }
            Model gesture = leftRightModel(rows, cols, delta);
            gesture.name = word;
            gesture.vocab = vocab;
            gesture.pi = piRead;
            gesture.a = aRead;
            gesture.b = bRead;
            gestures.push_back(gesture);
        }
        if (modelTransitionProb == 1.0) {
            gestureTransitionProb = 1.0;
        } else {
            gestureTransitionProb =
                divide(1.0 - modelTransitionProb, static_cast<double>(gestures.size()));
        }
        return createRecognitionHMMfromParameters();
    }

    // Scene node

    /// What `exportNode` leaves in the file.
    std::string sceneText() const {
        std::ostringstream out;
        const int N = static_cast<int>(numStates);
        const int M = static_cast<int>(vocabSize);
        out << "#VRML V2.0 utf8\n";
        out << "\n";
        out << "RecognitionModel {\n";
        out << "\tname \"" << name << "\"\n";
        out << "\tnumStates " << numStates << "\n";
        out << "\tvocabSize " << vocabSize << "\n";
        out << "\tdimension 1 \n";
        out << "\tdelta -1 \n";
        out << "\tmodelTransitionProb " << modelTransitionProb << "\n";
        sceneTables(out, "\t", N, M, pi, a, b);
        out << "\tvocab [ ";
        for (int i = 0; i < M; ++i) out << vocab.at(i, 0) << ' ';
        out << "]\n";
        out << "\tcodebook [ ";
        for (double entry : codebook) out << entry << ' ';
        out << "]\n";
        out << "\tproxFilterThreshold " << static_cast<double>(proxFilterThreshold) << "\n";
        out << "\trotationAllowed " << (rotationAllowed ? "TRUE" : "FALSE") << "\n";
        out << "\tgestures [ \n";
        for (const Model& g : gestures) {
            out << "\t\tGesture {\n";
            out << "\t\t\tmodelname \"" << g.name << "\"\n";
            out << "\t\t\tnumStates " << g.numStates << "\n";
            out << "\t\t\tvocabSize " << g.vocabSize << "\n";
            out << "\t\t\tdimension " << g.dimension << "\n";
            out << "\t\t\tdelta " << g.delta << "\n";
            sceneTables(out, "\t\t\t", static_cast<int>(g.numStates), static_cast<int>(g.vocabSize),
                        g.pi, g.a, g.b);
            out << "\t\t}\n";
        }
        out << "\t]\n";
        out << "}\n";
        return upToNul(out.str());
    }

private:
    void copyStagingToCombined() {
        combined->name = name;
        combined->vocab = vocab;
        combined->pi = pi;
        combined->a = a;
        combined->b = b;
    }

    static void sceneTables(std::ostream& out, const char* indent, int N, int M,
                            const std::vector<double>& initial, const Table& transitions,
                            const Table& emissions) {
        out << indent << "initialStateProbs [ ";
        for (int i = 0; i < N; ++i) out << initial.at(static_cast<std::size_t>(i)) << ' ';
        out << "]\n" << indent << "transitionProbs [ ";
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) out << transitions.at(i, j) << ' ';
        }
        out << "]\n" << indent << "emissionProbs [ ";
        for (int i = 0; i < N; ++i) {
            for (int k = 0; k < M; ++k) out << emissions.at(i, k) << ' ';
        }
        out << "]\n";
    }

    static std::string upToNul(const std::string& text) { return text.c_str(); }

    /// What a file may declare: rows * cols values within max(2^20, its bytes).
    static void refuse(std::uint64_t rows, std::uint64_t cols, const std::string& text) {
        const std::uint64_t least = std::uint64_t{1} << 20;
        const std::uint64_t limit = text.size() > least ? text.size() : least;
        if (rows != 0 && cols > limit / rows) throw std::bad_alloc();
    }
};

/// "-nan" as "nan": the sign of a NaN is free.
inline std::string withoutNanSigns(std::string text) {
    for (std::size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan", at)) {
        text.erase(at, 1);
    }
    return text;
}

}  // namespace Vesk::Test::Reference::Recognition

#endif
