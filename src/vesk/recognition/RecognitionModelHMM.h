#ifndef VESK_RECOGNITION_RECOGNITIONMODELHMM_H
#define VESK_RECOGNITION_RECOGNITIONMODELHMM_H

#include <vesk/Export.h>
#include <vesk/hmm/HMM.h>
#include <vesk/math/MatrixT.h>
#include <vesk/math/VectorT.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::ML {

/// How one gesture model scored in a recognition.
struct GestureScore {
    double probability;          ///< P(sequence | gesture model), unscaled
    double weightedProbability;  ///< the same times `gestureTransitionProb`
    double weightedGamma;        ///< P(last state at the last time) times `gestureTransitionProb`
    bool accepted;               ///< passed all three tests when its turn came
};

/// The outcome of `RecognitionModelHMM::evaluate`.
struct Recognition {
    bool longEnough = false;             ///< the sequence had at least two symbols
    double threshold = 0.0;              ///< P(sequence | combined model) * modelTransitionProb
    std::vector<GestureScore> gestures;  ///< one per gesture model, in their order
    int winner = -1;                     ///< index of the recognised gesture, -1 for none
};

/// Trained gesture models joined by a combined model that serves as an adaptive threshold
/// (H.-K. Lee, J. H. Kim, "An HMM-Based Threshold Model Approach for Gesture Recognition",
/// IEEE Trans. PAMI 21(10), 1999).
///
/// Build one from models (constructor, `initialize`) or from a file (`load`). The fields `vocab`,
/// `pi`, `a` and `b` are the staging area that the combined model is filled from. N is the number
/// of combined states, M the number of symbols, K the number of gestures.
///
/// Gesture pointers are borrowed. No HMM that was created here is ever deleted by the library:
/// every pointer handed out stays valid for the life of the process. Shapes that disagree are not
/// reported, but std::out_of_range is thrown, before anything changes, where a table would be left.
///
/// A copy shares the gesture models and the combined model. Writing and reading take O(parameters),
/// of the combined model and all gestures. Const operations may be called from several threads
/// while none changes the object or its models.
class VESK_API RecognitionModelHMM {
public:
    bool fromParameters;                ///< built by `createRecognitionHMMfromParameters`
    double gestureTransitionProb;       ///< (1 - modelTransitionProb) / K; 1.0 where that is 1.0
    double modelTransitionProb;         ///< weight of the combined model: 0 to 1, not checked
    std::string name;                   ///< one non-empty word where it is stored
    unsigned int numStates;             ///< N, the sum over the gestures; 0 until built
    unsigned int vocabSize;             ///< M of the first gesture; 0 until built
    Vesk::Math::MatrixT<double> vocab;  ///< the first gesture's
    std::vector<double> pi;             ///< N
    Vesk::Math::MatrixT<double> a;      ///< N x N
    Vesk::Math::MatrixT<double> b;      ///< N x M
    std::vector<HMM*> gestures;         ///< the gesture models, borrowed
    std::vector<double> codebook;       ///< directions in degrees; travels with the model
    float proxFilterThreshold;          ///< the quantiser's, a distance; travels with the model
    bool rotationAllowed;               ///< of the quantiser; travels with the model
    HMM* recognitionHMM;                ///< the combined model; null until built

    /// No gestures, both probabilities 1.0, threshold 1, rotation allowed.
    RecognitionModelHMM();

    /// Borrows `models` and sets the probability. Call `initialize` next.
    RecognitionModelHMM(std::vector<HMM*> models, double modelTransitionProb);

    /// Also sets `gestureTransitionProb` from the present number of gestures: call it after
    /// `gestures` is final. Exactly 1.0 gives each gesture 1.0, not 0.
    void setModelTransitionProb(double p);

    /// Renames this model, and the combined one where it exists.
    void setName(std::string n);

    // Composition

    /// Joins the gestures: sizes the staging fields and calls `setParameters`. False, with nothing
    /// changed, without gestures or after `createRecognitionHMMfromParameters`. std::bad_alloc as
    /// MatrixT::resize. O(N (N + M)).
    bool initialize();

    /// Fills the staging fields from the gestures and creates the combined model: pi uniform, each
    /// row of `a` the gesture state's own self-transition and the rest spread evenly over all other
    /// states, `b` the gestures' rows stacked. Always true. O(N (N + M)).
    bool setParameters();

    /// Creates the combined model from the staging fields as they are, and sets `fromParameters`.
    /// Always true; std::bad_alloc as `initialize`. O(N (N + M)).
    bool createRecognitionHMMfromParameters();

    /// Dumps the combined model (`HMM::print`), where there is one.
    void print();

    // Recognition

    /// P(seq | combined model); 0.0 where there is none, or no symbol. O(T N^2), T symbols.
    double forwardProb(Vesk::Math::VectorT<int> seq);

    /// The name of the gesture that `seq` shows, or "". Traces its reasoning on standard output.
    ///
    /// Gesture i is accepted when its probability exceeds that of every gesture accepted before
    /// it, and its weighted probability and weighted gamma both exceed the threshold. The last one
    /// accepted wins. "" at once for fewer than two symbols.
    /// std::out_of_range for a symbol that a model has no emissions of; symbols below 0 are not
    /// checked. One forward pass a model: O(T (N^2 + sum of squared gesture sizes)).
    std::string check(Vesk::Math::VectorT<int> seq);

    /// What `check` finds, without a word: the same symbols, errors and cost.
    Recognition evaluate(const Vesk::Math::VectorT<int>& sequence) const;

    // Files (docs/formats.md)

    /// Writes quantiser settings, codebook, combined model and gestures to a text file; silent
    /// where it cannot, nothing without a combined model. Every gesture must be a LeftRightHMM
    /// (else std::bad_cast).
    void write(char* path);
    /// The same for a literal or a string of the host's.
    void write(const char* path) { write(const_cast<char*>(path)); }

    /// The same file: true only when every byte was written and the file closed. False without a
    /// combined model.
    bool save(const std::string& path) const;

    /// Writes one block: the header and combined model where `model` is null, else that gesture.
    /// Numbers are written in the classic locale with the stream's precision.
    void writeToStream(std::stringstream& out, HMM* model);

    /// Reads such a file, adding to `gestures` and `codebook`, and builds the combined model from
    /// what it holds. Announces every gesture on standard output. False, with nothing changed,
    /// where the file cannot be opened; other damage is not reported. std::bad_alloc for sizes
    /// beyond what the file could hold; what was read until then is kept.
    bool load(char* path);
    /// The same for a literal or a string of the host's.
    bool load(const char* path) { return load(const_cast<char*>(path)); }

    /// `load` without announcements; `observer`, where given, is told the name of every gesture
    /// before its parameters are read.
    bool read(const std::string& path,
              const std::function<void(const std::string&)>& observer = {});

    /// Writes a VRML 2.0 file with one `RecognitionModel` node from the staging fields and the
    /// gestures; silent where it cannot. Names are not escaped. std::bad_cast as `write`.
    void exportNode(char* path);
    /// The same for a literal or a string of the host's.
    void exportNode(const char* path) { exportNode(const_cast<char*>(path)); }

    /// The same file: true only when every byte was written and the file closed.
    bool saveNode(const std::string& path) const;
};

}  // namespace Vesk::ML

#endif
