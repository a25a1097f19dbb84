#include <veskkit/io/SceneFile.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

/// A folder of its own, gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::error_code problem;
        const std::filesystem::path parent = std::filesystem::temp_directory_path(problem);
        std::string name = ((problem ? "/tmp" : parent) / "vesk-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw OutputError(name + ": " + std::strerror(errno));
        }
        path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path path;
};

/// Field by field what RecognitionModelHMM::exportNode writes. Neither node shows anything.
const char* const prototypes = R"(
PROTO Gesture [
	field SFString modelname ""
	field SFInt32 numStates 0
	field SFInt32 vocabSize 0
	field SFInt32 dimension 1
	field SFInt32 delta 1
	field MFFloat initialStateProbs [ ]
	field MFFloat transitionProbs [ ]
	field MFFloat emissionProbs [ ]
] {
	Group { }
}

PROTO RecognitionModel [
	field SFString name ""
	field SFInt32 numStates 0
	field SFInt32 vocabSize 0
	field SFInt32 dimension 1
	field SFInt32 delta -1
	field SFFloat modelTransitionProb 1
	field MFFloat initialStateProbs [ ]
	field MFFloat transitionProbs [ ]
	field MFFloat emissionProbs [ ]
	field MFFloat vocab [ ]
	field MFFloat codebook [ ]
	field SFFloat proxFilterThreshold 1
	field SFBool rotationAllowed TRUE
	field MFNode gestures [ ]
] {
	Group { children IS gestures }
}
)";

void requireQuotable(const char* what, const std::string& name) {
    if (name.find_first_of("\"\\") == std::string::npos) return;
    throw InputError(
        joined("found the ", what, ' ', quoted(name),
               ", expected a name without quotation marks and backslashes for a node"));
}

}  // namespace

std::string sceneText(const Vesk::ML::RecognitionModelHMM& model) {
    requireSoundModel(model, "model");
    requireQuotable("model name", model.name);
    for (const Vesk::ML::HMM* gesture : model.gestures) requireQuotable("gesture", gesture->name);

    const TemporaryFolder folder;
    const std::string path = (folder.path / "node.wrl").string();
    if (!model.saveNode(path)) throw OutputError(path + ": cannot be written");
    std::ifstream in(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad() || text.empty()) throw OutputError(path + ": cannot be read back");
    return text;
}

std::string sceneTextWithPrototypes(const Vesk::ML::RecognitionModelHMM& model) {
    std::string text = sceneText(model);
    // The first line says what the file is.
    return text.insert(text.find('\n') + 1, prototypes);
}

}  // namespace Vesk::Kit
