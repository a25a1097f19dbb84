#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/SceneFile.h>
#include <veskkit/training/GestureTrainer.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;
using Vesk::Test::textOf;

RecognitionModel smallModel(const std::string& name = "small") {
    TrainingOptions options;
    options.name = name;
    options.states = 6;
    options.thresholdStates = 3;
    options.symbols = 8;
    options.iterations = 1;
    return GestureTrainer(options).train(drawnTraces(1, 1, 3)).model;
}

TEST(SceneFileTest, IsWhatTheModelExports) {
    const RecognitionModel model = smallModel();
    const Vesk::Test::TemporaryFolder folder;
    Vesk::ML::RecognitionModelHMM exporter = model.get();
    exporter.exportNode(folder.path("node.wrl").c_str());
    const std::string text = sceneText(model.get());
    EXPECT_EQ(text, Vesk::Test::readFile(folder.path("node.wrl")));
    EXPECT_EQ(text.rfind("#VRML V2.0 utf8\n", 0), 0U);
}

TEST(SceneFileTest, NamesThatWouldEndTheirStringAreRefused) {
    for (const char* name : {"a\"b", "a\\b"}) {
        EXPECT_EQ(textOf<InputError>([&] {
                      sceneText(smallModel(name).get());
                  }).rfind("found the model name ", 0),
                  0U);
        std::vector<Trace> traces = drawnTraces(1, 1, 3);
        for (Trace& trace : traces) trace.gesture += name;
        const RecognitionModel model = GestureTrainer().train(traces).model;
        EXPECT_EQ(
            textOf<InputError>([&] { sceneText(model.get()); }).rfind("found the gesture ", 0), 0U);
    }
}

TEST(SceneFileTest, ParametersThatNoReaderCouldTakeAreRefused) {
    const RecognitionModel model = smallModel();
    model.gestures()[0]->b(0, 0) = std::numeric_limits<double>::infinity();
    EXPECT_NE(textOf<InputError>([&] { sceneText(model.get()); }).find("b(0, 0)"),
              std::string::npos);
}

}  // namespace
}  // namespace Vesk::Kit
