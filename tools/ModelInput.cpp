#include "ModelInput.h"

#include "OutputFile.h"

#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/ModelText.h>

#include <iostream>

namespace Vesk::Tool {

std::string sourceOf(const std::string& path) { return isStandard(path) ? "standard input" : path; }

Kit::RecognitionModel readModel(const std::string& path) {
    return isStandard(path) ? Kit::parseModel(std::cin, sourceOf(path)) : Kit::loadModel(path);
}

}  // namespace Vesk::Tool
