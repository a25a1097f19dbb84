#ifndef VESK_VESKKIT_RECOGNITION_MODELCHECK_H
#define VESK_VESKKIT_RECOGNITION_MODELCHECK_H

#include <vesk/recognition/RecognitionModelHMM.h>

#include <string>
#include <vector>

namespace Vesk::Kit {

/// What first stands against recognising with the model and storing it; "" where nothing does.
///
/// Expected: a codebook of finite directions, one a symbol; a finite proximity threshold; a
/// transition probability in 0 .. 1; a combined model with tables N, N x N, N x M and M symbol
/// values, equal to the staging fields; at least one gesture, every one a LeftRightHMM of M
/// symbols with tables of its own counts; every parameter finite and not negative (transitions: no
/// more than a rounding error, 1e-9, below 0); every name one non-empty word. The text says what
/// was found and what was expected, for instance
/// `gesture "circle": found b(3, 7) = inf, expected a finite number of at least 0`.
/// O(all parameters).
std::string problemOf(const Vesk::ML::RecognitionModelHMM& model);

/// The same for each part of the model in turn (quantiser, name, threshold model, every gesture):
/// at most one problem of each, in that order.
std::vector<std::string> problemsOf(const Vesk::ML::RecognitionModelHMM& model);

/// Throws InputError "<source>: <problem>" where there is one.
void requireSoundModel(const Vesk::ML::RecognitionModelHMM& model, const std::string& source);

/// Whether a name survives in a model file: not empty, and no white space or control characters.
bool isStorableName(const std::string& name);

/// A gesture's label as a model file holds it: every white-space character an underscore.
std::string storedName(std::string label);

}  // namespace Vesk::Kit

#endif
