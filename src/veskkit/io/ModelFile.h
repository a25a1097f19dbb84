#ifndef VESK_VESKKIT_IO_MODELFILE_H
#define VESK_VESKKIT_IO_MODELFILE_H

#include <veskkit/recognition/RecognitionModel.h>

#include <string>

namespace Vesk::Kit {

/// Reads a recognition model file (docs/formats.md). InputError, naming the file and where it
/// matters the line, for a file that cannot be read, is not complete or holds a model that is not
/// sound (ModelCheck.h).
RecognitionModel loadModel(const std::string& path);

/// Writes the library's recognition model file, whole or not at all (AtomicFile.h). OutputError
/// for a model that is not sound, a non-finite parameter for instance, which no reader could take
/// back: nothing is written then.
void saveModel(const Vesk::ML::RecognitionModelHMM& model, const std::string& path);
/// The same for a model of the kit.
void saveModel(const RecognitionModel& model, const std::string& path);

}  // namespace Vesk::Kit

#endif
