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
#include <string>
#include <system_error>

#include <unistd.h>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

/// A file's path in a folder of its own; both are gone with the object. Nothing is allocated once
/// the folder is there, so that none is left behind where memory runs out.
class TemporaryFile {
public:
    TemporaryFile() {
        std::error_code problem;
        const std::filesystem::path parent = std::filesystem::temp_directory_path(problem);
        folder = ((problem ? "/tmp" : parent) / "vesk-XXXXXX").string();
        file = folder + "/node.wrl";
        if (mkdtemp(folder.data()) == nullptr) {
            throw OutputError(folder + ": " + std::strerror(errno));
        }
        file.replace(0, folder.size(), folder);
    }
    ~TemporaryFile() {
        ::unlink(file.c_str());
        ::rmdir(folder.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return file; }

private:
    std::string folder;
    std::string file;
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

    const TemporaryFile file;
    if (!model.saveNode(file.path())) throw OutputError(file.path() + ": cannot be written");
    std::ifstream in(file.path(), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad() || text.empty()) throw OutputError(file.path() + ": cannot be read back");
    return text;
}

std::string sceneTextWithPrototypes(const Vesk::ML::RecognitionModelHMM& model) {
    std::string text = sceneText(model);
    // The first line says what the file is.
    return text.insert(text.find('\n') + 1, prototypes);
}

}  // namespace Vesk::Kit
