#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/AtomicFile.h>
#include <veskkit/io/InputFile.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>

namespace Vesk::Kit {

RecognitionModel loadModel(const std::string& path) {
    std::ifstream file = openInput(path);
    return parseModel(file, path);
}

void saveModel(const Vesk::ML::RecognitionModelHMM& model, const std::string& path) {
    const std::string problem = problemOf(model);
    if (!problem.empty()) {
        throw OutputError(internal::oneLine(path) + ": not written: " + problem);
    }
    writeWhole(path, modelText(model));
}

void saveModel(const RecognitionModel& model, const std::string& path) {
    saveModel(model.get(), path);
}

}  // namespace Vesk::Kit
