#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/ModelText.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace Vesk::Kit {
namespace {

using Vesk::Test::smallModel;
using Vesk::Test::textOf;

TEST(ModelFileTest, SavesWhatTheLibrarySavesAndLoadsIt) {
    const Vesk::Test::TemporaryFolder folder;
    const RecognitionModel model = smallModel();
    saveModel(model, folder.path("kit"));
    ASSERT_TRUE(model.get().save(folder.path("library")));
    EXPECT_EQ(Vesk::Test::readFile(folder.path("kit")),
              Vesk::Test::readFile(folder.path("library")));
    EXPECT_EQ(modelText(loadModel(folder.path("kit")).get()),
              Vesk::Test::readFile(folder.path("kit")));
}

TEST(ModelFileTest, DoesNotWriteANonFiniteParameter) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("m");
    Vesk::Test::writeFile(path, "before");
    const RecognitionModel model = smallModel();
    model.gestures()[1]->b(0, 3) = std::numeric_limits<double>::infinity();
    EXPECT_EQ(textOf<OutputError>([&] { saveModel(model, path); }),
              path +
                  ": not written: gesture \"up\": found b(0, 3) = inf, expected a finite number "
                  "of at least 0");
    EXPECT_EQ(Vesk::Test::readFile(path), "before");
}

TEST(ModelFileTest, SaysWhatIsWrongWithTheFile) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("m");
    EXPECT_EQ(textOf<InputError>([&] { loadModel(path); }),
              path + ": found no such file, expected a file that can be read");
    Vesk::Test::writeFile(path, "0 0 4\n0 90 oops");
    EXPECT_EQ(textOf<InputError>([&] { loadModel(path); }),
              path + ":2: found \"oops\", expected direction 2 of the codebook");
}

TEST(ModelFileTest, SaysThatAFileCannotBeWritten) {
    EXPECT_EQ(textOf<OutputError>([] { saveModel(smallModel(), "/dev/full"); }),
              "/dev/full: cannot be written: No space left on device");
}

}  // namespace
}  // namespace Vesk::Kit
