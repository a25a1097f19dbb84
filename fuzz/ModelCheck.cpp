// Any bytes as a model for the kit: a message of one line, or a model that the check passes, that
// recognises and that is written as it was read. The check itself takes whatever the library's own
// reader makes of the bytes.

#include "LoadedModel.h"
#include "MemoryFile.h"
#include "Target.h"

#include <veskkit/Error.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>

#include <new>
#include <sstream>
#include <string>
#include <utility>

using namespace Vesk::Fuzz;
using namespace Vesk::Kit;

namespace {

void checkAsTheLibraryReads(const std::string& text) {
    const MemoryFile file(text);
    LoadedModel model;
    try {
        model.read(file.path());
    } catch (const std::bad_alloc&) {
        // What has been read so far is a model too.
    }
    for (const std::string& problem : problemsOf(model)) {
        expect(!problem.empty() && problem.find('\n') == std::string::npos, "one line a problem");
    }
    if (!problemOf(model).empty()) return;
    std::istringstream in(modelText(model));
    try {
        parseModel(in, "again");
    } catch (const InputError& error) {
        expect(testing::AssertionFailure() << error.what(), "a sound model is written and read");
    }
}

}  // namespace

void Vesk::Fuzz::take(const std::string& text) {
    checkAsTheLibraryReads(text);

    std::istringstream in(text);
    RecognitionModel model;
    try {
        model = parseModel(in, "model");
    } catch (const InputError& error) {
        const std::string message = error.what();
        expect(!message.empty() && message.find('\n') == std::string::npos, "one line");
        return;
    }
    expect(problemOf(model.get()).empty(), "what is read is sound");
    const std::string written = modelText(model.get());
    std::istringstream back(written);
    expect(modelText(parseModel(back, "again").get()) == written, "written as it was read");
    const GestureRecognizer recognizer(std::move(model));
    const Result result = recognizer.recognize(Points{{0, 0}, {1, 0}, {1, 1}, {-2, 5}});
    expect(result.recognized() == !result.gesture.empty(), "a name where recognised");
}
