#ifndef VESK_LEFTRIGHT_LEFTRIGHTHMM_H
#define VESK_LEFTRIGHT_LEFTRIGHTHMM_H

#include <vesk/Export.h>
#include <vesk/hmm/HMM.h>

#include <functional>
#include <string>
#include <vector>

namespace Vesk::ML {

/// What one training iteration came to.
struct TrainingStep {
    long iteration;           ///< zero-based
    double oldLogLikelihood;  ///< of all sequences under the model before it, natural log
    double newLogLikelihood;  ///< under the candidate
    bool accepted;            ///< whether the candidate became the model
};

/// Told of every training iteration, after its candidate was adopted or dropped. Returning false
/// ends the training; what was adopted stays.
using TrainingObserver = std::function<bool(const TrainingStep&)>;

/// The model of one gesture: starts in state 0 and moves from state i to i .. i + delta only.
///
/// The structure is carried by the zeros of `a`, which training never fills. Letters as in HMM,
/// K the number of training sequences. In `vocab`, column 0 holds each symbol's own index.
class VESK_API LeftRightHMM : public HMM {
public:
    std::vector<std::vector<int>> trainingSequences;  ///< copy of the constructor's; not used
    std::vector<std::vector<int>> stateSymbols;  ///< N lists for `StateSymbols`; set by the host
    int delta;                                   ///< largest forward jump in states; not checked
    /// Least gain in natural log likelihood with which `baumWelchMultiple` and `trainMultiple`
    /// adopt an iteration and go on; 0.001 at first. It is not stored in files.
    float convergenceThreshold;

    /// N, M and errors as HMM, D = 1. pi, a and b are 0.0 until estimated or loaded, `vocab(k, 0)`
    /// is k.
    LeftRightHMM(int numStates, int vocabSize, int delta);
    /// The same with `sequences` kept in `trainingSequences`.
    LeftRightHMM(int numStates, int vocabSize, std::vector<std::vector<int>>& sequences, int delta);
    LeftRightHMM(const LeftRightHMM&) = default;
    LeftRightHMM(LeftRightHMM&&) = default;
    LeftRightHMM& operator=(const LeftRightHMM&) = default;
    LeftRightHMM& operator=(LeftRightHMM&&) = default;
    ~LeftRightHMM() override;

    // Initial estimate

    /// Sets pi, a and b, after announcing itself and `type` on standard output.
    ///
    /// pi is 1 at state 0; row i of a is uniform over i .. min(i + delta, N-1), compared as
    /// unsigned numbers (a negative delta wraps around). b is:
    /// - StateSymbols: 0.001 for symbols k whose `vocab(k, 0)` is not in `stateSymbols[i]`, the
    ///   rest shared equally. Does nothing unless `stateSymbols` holds exactly N lists.
    ///   O(N (N + M) + M L), L symbols in all lists.
    /// - EqualSegments: relative frequencies over the i-th of N equal cuts of every sequence. A
    ///   sequence of at most N symbols loses its last one (N = 1 with one symbol apart). A state
    ///   that saw nothing gets a row of zeros. std::out_of_range, with the model unchanged, for a
    ///   symbol outside 0 .. M-1. O(N (N + M) + S), S symbols in all sequences.
    /// - anything else: nothing changes.
    void calcInitialProbs(HMM::SegmentationType type,
                          std::vector<std::vector<int>> sequences) override;

    /// `calcInitialProbs` without the announcement.
    void estimate(HMM::SegmentationType type, const std::vector<std::vector<int>>& sequences);

    // Scaled passes (Rabiner 1989, section V.A). scale[t] = P(o[t] | o[0..t-1]), the inverse of
    // the c_t there; the caller's `scale` must hold at least T values. The forms ending in HMM
    // work on the parameters passed in. T < 1 gives an empty table. Errors and memory as the
    // unscaled passes of HMM. O(N^2 T).

    /// alpha, N x T, each column summing to 1 (or all zero); fills scale[0..T-1].
    Vesk::Math::MatrixT<double> forwardProcWithScale(std::vector<int> O, int T,
                                                     std::vector<double>& scale);
    /// The same of the parameters passed in.
    Vesk::Math::MatrixT<double> forwardProcWithScaleHMM(std::vector<int> O, int T,
                                                        std::vector<double>& scale, int N,
                                                        Vesk::Math::VectorT<double> pi,
                                                        Vesk::Math::MatrixT<double> a,
                                                        Vesk::Math::MatrixT<double> b);

    /// beta, N x T, with the scale factors of the forward pass over the same O and T, so that
    /// alpha(i, t) * beta(i, t) * scale[t] = P(i at t | O). Infinite or NaN where a factor is 0.
    Vesk::Math::MatrixT<double> backwardProcWithScale(std::vector<int> O, int T,
                                                      std::vector<double>& scale);
    /// The same of the parameters passed in.
    Vesk::Math::MatrixT<double> backwardProcWithScaleHMM(std::vector<int> O, int T,
                                                         std::vector<double>& scale, int N,
                                                         Vesk::Math::VectorT<double> pi,
                                                         Vesk::Math::MatrixT<double> a,
                                                         Vesk::Math::MatrixT<double> b);

    /// ln P(O): minus infinity for an impossible sequence, 0.0 for T < 1. Fills scale.
    double forwardProbabilityWithScale(std::vector<int> O, int T, std::vector<double>& scale);
    /// The same of the parameters passed in.
    double forwardProbabilityWithScaleHMM(std::vector<int> O, int T, std::vector<double>& scale,
                                          int N, Vesk::Math::VectorT<double> pi,
                                          Vesk::Math::MatrixT<double> a,
                                          Vesk::Math::MatrixT<double> b);

    /// ln P(sequence) as `forwardProbabilityWithScale` over all of it, without a caller's scale.
    /// O(N^2 T).
    double logLikelihood(const std::vector<int>& sequence) const;

    // Training: re-estimates a and b, leaves pi. New emissions are the posterior mass at times
    // showing the symbol over the mass at all other times: rows of b do not sum to 1, and entries
    // can be infinite (docs/numerics.md).

    /// Trains on O[0..T-1] with unscaled tables while the likelihood grows strictly. Nothing
    /// happens for T < 1. A negative maxIterations sets no bound. O(T N (N + M)) time an iteration,
    /// O(N (T + N + M)) memory.
    void baumWelch(Vesk::Math::VectorT<int> O, int T, int maxIterations) override;

    /// Trains on K sequences with scaled tables (Rabiner 1989, section V.B, each sequence
    /// weighing by its posterior counts) while the total log likelihood gains at least
    /// `convergenceThreshold`. Empty sequences are skipped. A negative maxIterations sets no bound.
    /// Writes the two log likelihoods of every iteration to standard output and leaves the stream's
    /// precision at 5.
    /// O(N (N + M)) time an iteration and symbol, O(N (L + N + M) + S) memory: L symbols in the
    /// longest sequence, S in all.
    void baumWelchMultiple(std::vector<std::vector<int>> sequences, int maxIterations);

    /// `baumWelchMultiple` that writes nothing and tells the observer instead. What the observer
    /// throws passes through, with what was adopted before it.
    void trainMultiple(const std::vector<std::vector<int>>& sequences, int maxIterations,
                       const TrainingObserver& observer = {});

    // Text file

    /// Writes the left-right file (docs/formats.md); silent where the file cannot be opened or
    /// written. Only a model whose `vocabValues` holds M values is read back whole by `loadLR`.
    void write(char* path) override;
    /// The same for a literal or a string of the host's.
    void write(const char* path) { write(const_cast<char*>(path)); }

    /// The same file: true only when every byte was written and the file closed.
    bool save(const std::string& path) const;
};

/// Reads a file that `LeftRightHMM::write` wrote. The caller owns the new model.
///
/// Always takes M per-symbol values after the header, also where the file has none: such a file
/// is read back shifted. Null where the file cannot be opened; otherwise as `load`.
VESK_API LeftRightHMM* loadLR(char* path);
/// The same for a literal or a string of the host's.
inline LeftRightHMM* loadLR(const char* path) { return loadLR(const_cast<char*>(path)); }

}  // namespace Vesk::ML

#endif
