#include <vesk/leftright/LeftRightHMM.h>

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Passes.h>
#include <vesk/hmm/internal/Reestimation.h>
#include <vesk/hmm/internal/SingleTraining.h>
#include <vesk/leftright/internal/ScaledPasses.h>

#include <algorithm>
#include <cstdint>
#include <iostream>

namespace Vesk::ML {
namespace {

using Vesk::Math::MatrixT;

/// P(O) of the model that a plain alpha belongs to.
double likelihoodOf(const internal::Columns& alpha, int N, int T) {
    return internal::orderedSum(alpha[T - 1], N);
}

/// Tells standard output what the fixed operation tells: the likelihoods before a candidate is
/// adopted, the line that closes the iteration afterwards.
struct Printing {
    void onLikelihoods(double oldLog, double newLog) {
        std::cout.setf(std::ios_base::fixed, std::ios_base::floatfield);
        std::cout.precision(5);  // stays, as hosts expect
        std::cout << "log oldProb = " << oldLog << std::endl;
        std::cout << "log newProb = " << newLog << std::endl;
        std::cout.unsetf(std::ios_base::fixed);
    }
    bool onStep(const TrainingStep&) {
        std::cout << "------------------------------------" << std::endl;
        return true;
    }
};

struct Observing {
    const TrainingObserver& observer;

    void onLikelihoods(double, double) {}
    bool onStep(const TrainingStep& step) { return !observer || observer(step); }
};

internal::Symbols symbolsOf(internal::Scratch& scratch,
                            const std::vector<std::vector<int>>& sequences,
                            unsigned int vocabSize) {
    std::int64_t alphabet = 0;
    std::int64_t length = 0;
    for (const std::vector<int>& s : sequences) {
        for (const int symbol : s) alphabet = std::max(alphabet, std::int64_t{symbol} + 1);
        length += static_cast<std::int64_t>(s.size());
    }
    internal::Symbols symbols(scratch, alphabet, length);
    for (const std::vector<int>& s : sequences) {
        const auto L = static_cast<int>(s.size());
        symbols.add(internal::observed(s, L, vocabSize), L);
    }
    return symbols;
}

/// The sequences that training looks at, in groups that are taken together.
class TrainingSet {
    internal::Scratch scratch;

public:
    TrainingSet(const std::vector<std::vector<int>>& sequences, unsigned int vocabSize)
        : symbols(symbolsOf(scratch, sequences, vocabSize)) {
        for (const std::vector<int>& s : sequences) {
            if (s.empty()) continue;
            const auto L = static_cast<int>(s.size());
            if (groups.empty() || groups.back().size() == internal::passesTogether) {
                groups.emplace_back();
            }
            groups.back().push_back({s.data(), L, nullptr});
            longest = std::max(longest, L);
        }
        scale.resize(internal::passesTogether * static_cast<std::size_t>(longest));
        for (std::vector<internal::Track>& group : groups) {
            double* room = scale.data();
            for (internal::Track& track : group) {
                track.scale = room;
                room += longest;
            }
        }
    }

    /// Tables of `count` times, one for each sequence of any group.
    std::vector<internal::Columns> tables(const internal::Passes& passes, int count) const {
        std::vector<internal::Columns> columns;
        if (groups.empty()) return columns;
        // The first group is the largest.
        for (std::size_t k = 0; k < groups[0].size(); ++k) {
            columns.push_back(passes.columns(count));
        }
        return columns;
    }

    const internal::Symbols symbols;
    std::vector<std::vector<internal::Track>> groups;
    int longest = 0;

private:
    std::vector<double> scale;  ///< of the group that is under way
};

/// ln P of a group's sequences, whose scale factors are known, added to a sum one by one.
void addLogLikelihoods(const std::vector<internal::Track>& group, double& sum) {
    for (const internal::Track& track : group) {
        sum += internal::logLikelihoodOf(track.scale, track.T);
    }
}

/// New a and b from the posteriors of all sequences. Returns their log likelihood under the model.
double reestimate(const internal::Parameters& parameters, int M, const TrainingSet& set,
                  MatrixT<double>& a, MatrixT<double>& b) {
    internal::Scratch scratch;
    internal::Passes passes(scratch, parameters, set.symbols);
    const std::vector<internal::Columns> alpha = set.tables(passes, set.longest);
    const std::vector<internal::Columns> beta = set.tables(passes, set.longest);
    double sum = 0.0;
    passes.exactly([&] {
        internal::Reestimation reestimation(passes, M);
        sum = 0.0;
        for (const std::vector<internal::Track>& group : set.groups) {
            internal::scaledForward(passes, group, alpha);
            internal::scaledBackward(passes, group, beta);
            for (std::size_t k = 0; k < group.size(); ++k) {
                reestimation.add(group[k].o, group[k].T, alpha[k], beta[k]);
            }
            addLogLikelihoods(group, sum);
        }
        reestimation.estimate(a, b);
    });
    return sum;
}

double logLikelihood(const internal::Parameters& parameters, const TrainingSet& set) {
    internal::Scratch scratch;
    internal::Passes passes(scratch, parameters, set.symbols);
    const std::vector<internal::Columns> two = set.tables(passes, 2);
    double sum = 0.0;
    for (const std::vector<internal::Track>& group : set.groups) {
        passes.exactly([&] { internal::scaleFactors(passes, group, two); });
        addLogLikelihoods(group, sum);
    }
    return sum;
}

/// The rules of training on several sequences.
template <typename Reporter>
void train(LeftRightHMM& model, const std::vector<std::vector<int>>& sequences, int maxIterations,
           Reporter reporter) {
    if (maxIterations == 0) return;
    const TrainingSet set(sequences, model.vocabSize);
    const auto M = static_cast<int>(model.vocabSize);
    internal::Parameters p = internal::parametersFor(model, model.vocabSize, set.longest);
    MatrixT<double> newA;
    MatrixT<double> newB;

    for (long n = 0; maxIterations < 0 || n < maxIterations; ++n) {
        const double oldLog = reestimate(p, M, set, newA, newB);
        const double newLog = logLikelihood(internal::candidate(p.pi, newA, newB), set);
        reporter.onLikelihoods(oldLog, newLog);
        const bool accepted = newLog - oldLog >= static_cast<double>(model.convergenceThreshold);
        if (accepted) {
            model.a.swap(newA);
            model.b.swap(newB);
            p = internal::parametersFor(model, model.vocabSize, set.longest);
        }
        const bool goOn = reporter.onStep({n, oldLog, newLog, accepted});
        if (!accepted || !goOn) return;
    }
}

}  // namespace

void LeftRightHMM::baumWelch(Vesk::Math::VectorT<int> O, int T, int maxIterations) {
    internal::trainOnSequence(*this, O, T, maxIterations, {false, likelihoodOf});
}

void LeftRightHMM::baumWelchMultiple(std::vector<std::vector<int>> sequences, int maxIterations) {
    train(*this, sequences, maxIterations, Printing());
}

void LeftRightHMM::trainMultiple(const std::vector<std::vector<int>>& sequences, int maxIterations,
                                 const TrainingObserver& observer) {
    train(*this, sequences, maxIterations, Observing{observer});
}

}  // namespace Vesk::ML
