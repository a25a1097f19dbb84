#ifndef VESK_TOOLS_MODELINPUT_H
#define VESK_TOOLS_MODELINPUT_H

#include <veskkit/recognition/RecognitionModel.h>

#include <string>

namespace Vesk::Tool {

/// The model of a file, or of standard input for "-". InputError as Kit::loadModel.
Kit::RecognitionModel readModel(const std::string& path);

/// What messages about such a model begin with.
std::string sourceOf(const std::string& path);

}  // namespace Vesk::Tool

#endif
