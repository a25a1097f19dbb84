#ifndef VESK_VESKKIT_RECOGNITION_MODELTEXT_H
#define VESK_VESKKIT_RECOGNITION_MODELTEXT_H

#include <veskkit/recognition/RecognitionModel.h>

#include <iosfwd>
#include <string>

namespace Vesk::Kit {

/// The text of the model's file, byte for byte what RecognitionModelHMM::write puts there. The
/// model must be sound (ModelCheck.h): InputError otherwise.
std::string modelText(const Vesk::ML::RecognitionModelHMM& model);

/// Reads a recognition model's text, as strictly as RecognitionModelHMM::load is lenient: every
/// value must be there, and the model must be sound. What passes is the same model, to the bit, as
/// the library's own reader makes of it.
///
/// InputError "<source>:<line>: found ..., expected ..." otherwise. Memory grows with what is
/// read, never with what the text declares.
RecognitionModel parseModel(std::istream& in, const std::string& source);

/// The model as it reads back from its own text: parameters with six significant digits. InputError
/// as modelText. All three take O(parameters).
RecognitionModel asStored(const RecognitionModel& model);

}  // namespace Vesk::Kit

#endif
