#ifndef VESK_VESKKIT_IO_SCENEFILE_H
#define VESK_VESKKIT_IO_SCENEFILE_H

#include <vesk/recognition/RecognitionModelHMM.h>

#include <string>

namespace Vesk::Kit {

/// The text of the VRML 2.0 node that RecognitionModelHMM::exportNode makes of the model.
/// InputError for a model that is not sound (ModelCheck.h), and for a name with a quotation mark or
/// a backslash, which would end the node's string or be lost. OutputError where there is no room
/// for the temporary file that it goes through.
std::string sceneText(const Vesk::ML::RecognitionModelHMM& model);

/// The same node behind declarations of the two node types that it is made of, which a host of its
/// own brings along: any VRML 2.0 viewer opens such a scene. Errors as sceneText.
std::string sceneTextWithPrototypes(const Vesk::ML::RecognitionModelHMM& model);

}  // namespace Vesk::Kit

#endif
