#ifndef VESK_HMM_HMM_H
#define VESK_HMM_HMM_H

#include <vesk/Export.h>
#include <vesk/math/MatrixT.h>
#include <vesk/math/VectorT.h>

#include <string>
#include <vector>

namespace Vesk::ML {

/// A discrete hidden Markov model: N hidden states, M observation symbols 0 .. M-1.
///
/// Letters, here and in all algorithms (L. R. Rabiner, "A Tutorial on Hidden Markov Models and
/// Selected Applications in Speech Recognition", Proc. IEEE 77(2), 1989): N states, M symbols,
/// T steps; i, j are states, k is a symbol, t a time, all zero-based; o the observed sequence.
/// The parameters are plain probabilities held in public members: the members are the model.
///
/// Nothing requires rows to sum to 1, and no argument is validated: symbols must lie in 0 .. M-1
/// and T must not exceed the sequence's length, and tables passed in must have the shapes said (all
/// asserted in debug builds). What a damaged file can have made is checked in every build: an
/// operation that would touch a position outside the model's own `pi`, `a`, `b` or `vocab` throws
/// std::out_of_range instead, before it changes, prints or writes anything.
///
/// A copy duplicates the parameters. Copying, printing, reading and writing a model take
/// O(N (N + M) + M D); what is passed by value is copied too, which the complexities below leave
/// out. One thread may use a model at a time, except for the operations marked const, which any
/// number of threads may call while none changes the model.
class VESK_API HMM {
public:
    /// How `calcInitialProbs` derives a first estimate. The general model ignores it; any other
    /// value is allowed and leaves a left-right model untouched.
    enum SegmentationType : int {
        NoSegmentation = 0,  ///< none: nothing is estimated
        StateSymbols = 1,    ///< emissions from per-state lists of allowed symbols
        EqualSegments = 2    ///< emissions from equal cuts of the training sequences
    };

    std::string name;                   ///< the model's name; one non-empty word where it is stored
    unsigned int numStates;             ///< N >= 1
    unsigned int vocabSize;             ///< M >= 1
    int dimension;                      ///< D >= 1: values that describe one symbol
    Vesk::Math::MatrixT<double> vocab;  ///< M x D: row k holds what symbol k stands for
    std::vector<double> pi;             ///< N: pi[i] = P(first state is i)
    Vesk::Math::MatrixT<double> a;      ///< N x N: a(i, j) = P(j at t+1 | i at t)
    Vesk::Math::MatrixT<double> b;      ///< N x M: b(i, k) = P(symbol k | state i)
    std::vector<double> vocabValues;    ///< values a symbol; only the left-right file carries them
    bool needsSeed;                     ///< true until the first `randD` of this object

    /// N = numStates, M = vocabSize, D = dimension (1 where not given), each raised to 1 where
    /// below. Every parameter is 0.0: initialise, train or load before use. std::bad_alloc as
    /// MatrixT::resize. O(N (N + M) + M D).
    HMM(int numStates, int vocabSize);
    /// The same with D.
    HMM(int numStates, int vocabSize, int dimension);
    HMM(const HMM&) = default;
    HMM(HMM&&) = default;
    HMM& operator=(const HMM&) = default;
    HMM& operator=(HMM&&) = default;
    virtual ~HMM();

    // Training and output that a derived model replaces. The order of these is part of the
    // binary interface.

    /// Re-estimates pi, a and b from one sequence (Rabiner 1989, eqs. 40a to 40c, with this
    /// library's own emission and stopping rules: see docs/numerics.md).
    ///
    /// b(i, k) becomes the posterior mass at times showing k over the mass at all *other* times,
    /// so rows do not sum to 1 and may hold infinities. An iteration is adopted while the
    /// candidate's likelihood exceeds the sum over i >= 1 of alpha(i, 0), and the last iteration's
    /// result is dropped otherwise.
    /// @param observation symbols; the first T are used
    /// @param T at least 1; below, nothing happens
    /// @param maxIterations most iterations to adopt; negative: no bound (may then never end)
    ///
    /// O(T N (N + M)) time an iteration, O(N (T + N + M)) memory.
    virtual void baumWelch(Vesk::Math::VectorT<int> observation, int T, int maxIterations);

    /// Calls `calcInitialProbs(type, sequences)`.
    virtual void initialize(std::vector<std::vector<int>> sequences, SegmentationType type);

    /// Writes name, sizes, pi, a and b to standard output for people to read: three significant
    /// digits. Leaves the stream's precision at 3.
    virtual void print();

    /// Writes the model's text file (docs/formats.md); silent where the file cannot be opened or
    /// written. See `save`.
    virtual void write(char* path);

    /// The initial estimate. For this class: pi and a = 1 / N, b = 1 / M in *integer* arithmetic,
    /// so 0.0 unless N or M is 1. Both arguments are ignored. O(N (N + M)).
    virtual void calcInitialProbs(SegmentationType type, std::vector<std::vector<int>> sequences);

    /// The same for a literal or a string of the host's.
    void write(const char* path) { write(const_cast<char*>(path)); }

    /// Writes the same file as this class's `write`: true only when every byte was written and
    /// the file closed. Not virtual: a left-right model seen as an HMM is stored as a general one.
    bool save(const std::string& path) const;

    /// Does nothing.
    void reset(SegmentationType type);

    // Sampling

    /// A pseudo-random number in [0, max) from the C library's `rand`. The first call on each
    /// object seeds the process-wide generator with the time in seconds.
    double randD(double max);

    /// Samples a sequence of `length` symbols, taking 2 * length + 1 draws of `randD(1.0)`.
    ///
    /// Where cumulated probabilities stay below a draw, the first state and the symbol fall back
    /// to 0 and the transition to staying. Empty, without a draw, for length 0; std::bad_alloc for
    /// a negative length. O(length (N + M)).
    Vesk::Math::VectorT<int> genSeq(int length);

    // Evaluation: plain, unscaled probabilities, which underflow for long sequences. T < 1 gives
    // an empty table (N x 0, 2 x 0) or the probability 0.0. The forms ending in HMM work on the
    // parameters passed in, which must have the shapes N, N x N and N x M; std::bad_alloc for a
    // negative N. So it is for a table of more than 2^31 - 1 values. A call lays the model out, in
    // O(N (N + min(M, T)) + T) memory beside its result.

    /// alpha, N x T: alpha(i, t) = P(o[0..t], state i at t) (Rabiner 1989, eqs. 19, 20). O(N^2 T).
    Vesk::Math::MatrixT<double> forwardProc(Vesk::Math::VectorT<int> observation, int T);
    /// alpha of the parameters passed in.
    Vesk::Math::MatrixT<double> forwardProcHMM(Vesk::Math::VectorT<int> observation, int T, int N,
                                               Vesk::Math::VectorT<double> pi,
                                               Vesk::Math::MatrixT<double> a,
                                               Vesk::Math::MatrixT<double> b);

    /// beta, N x T: beta(i, t) = P(o[t+1..T-1] | state i at t) (eqs. 24, 25). O(N^2 T).
    Vesk::Math::MatrixT<double> backwardProc(Vesk::Math::VectorT<int> observation, int T);
    /// beta of the parameters passed in.
    Vesk::Math::MatrixT<double> backwardProcHMM(Vesk::Math::VectorT<int> observation, int T, int N,
                                                Vesk::Math::MatrixT<double> a,
                                                Vesk::Math::MatrixT<double> b);

    /// P(o) from alpha (eq. 21), of which two columns are held. O(N^2 T).
    double forwardProbability(Vesk::Math::VectorT<int> observation, int T);
    /// P(o) from the alpha of the parameters passed in.
    double forwardProbabilityHMM(Vesk::Math::VectorT<int> observation, int T, int N,
                                 Vesk::Math::VectorT<double> pi, Vesk::Math::MatrixT<double> a,
                                 Vesk::Math::MatrixT<double> b);

    /// P(o) of each of many sequences, whole: what `forwardProbability` gives, 0.0 for an empty
    /// one. The model is laid out once for all of them, and several are passed over together.
    /// Symbols below M. O(N (N + M + N S)) for S symbols in all, O(N (N + M) + S) memory beside
    /// the result.
    std::vector<double> likelihoods(const std::vector<std::vector<int>>& sequences) const;

    /// P(o) from beta, which rounds differently: the sum over i of pi[i] b(i, o[0]) beta(i, 0).
    /// O(N^2 T).
    double backwardProbability(Vesk::Math::VectorT<int> observation, int T);
    /// P(o) from the beta of the parameters passed in.
    double backwardProbabilityHMM(Vesk::Math::VectorT<int> observation, int T, int N,
                                  Vesk::Math::VectorT<double> pi, Vesk::Math::MatrixT<double> a,
                                  Vesk::Math::MatrixT<double> b);

    /// The most likely state path (eqs. 32a to 35), found in negative natural logarithms.
    ///
    /// Returns 2 x T: (0, 0) holds the path's probability, the rest of row 0 is 0.0, (1, t) is the
    /// state at t. Among equal costs the lowest state wins, at every step. O(N^2 T) time,
    /// O(N (N + T)) memory.
    Vesk::Math::MatrixT<double> viterbi(Vesk::Math::VectorT<int> observation, int T);

    /// P(i at t, j at t+1 | o) from plain or scaled N x T tables (eq. 37), t in 0 .. T-2; 0.0 where
    /// the numerator is. O(N^2).
    double xi(int i, int j, int t, Vesk::Math::VectorT<int> observation,
              Vesk::Math::MatrixT<double> alpha, Vesk::Math::MatrixT<double> beta);

    /// P(i at t | o) from plain or scaled N x T tables (eq. 27), t in 0 .. T-1; 0.0 where the
    /// numerator is. O(N).
    double gamma(int i, int t, Vesk::Math::MatrixT<double> alpha, Vesk::Math::MatrixT<double> beta);

    /// 0.0 where x is 0.0 (also for 0 / 0), else x / y unguarded.
    static double divide(double x, double y);
};

/// Reads a file that `HMM::write` wrote. The caller owns the new model.
///
/// Null where the file cannot be opened. Other damage is not reported: values that cannot be read
/// stay 0.0. std::bad_alloc for sizes beyond what the file could hold (docs/formats.md).
VESK_API HMM* load(char* path);
/// The same for a literal or a string of the host's.
inline HMM* load(const char* path) { return load(const_cast<char*>(path)); }

}  // namespace Vesk::ML

#endif
