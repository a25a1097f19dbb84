#ifndef VESK_TESTS_UNIT_FILES_SUBJECTS_H
#define VESK_TESTS_UNIT_FILES_SUBJECTS_H

#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <memory>
#include <string>
#include <vector>

namespace Vesk::Test {

/// Something of each kind that has a file.
struct Subjects {
    Subjects() {
        fillRandom(general, random, Parameters::Stochastic);
        general.name = "general";
        fillRandom(leftRight, random, Parameters::Stochastic);
        leftRight.name = "left-right";
        leftRight.vocabValues = {0, 1.5, 2};
        fillRandom(gestures.add("circle", 3, 3), random, Parameters::Stochastic);
        recognition = Vesk::ML::RecognitionModelHMM(gestures.pointers(), 0.25);
        recognition.initialize();
        recognition.setName("all");
        recognition.codebook = {0, 120.5, 1234.5};
        quantizer.setCodebook({0, 51.4286, 1234.5});
    }

    Random random{9};
    GestureSet gestures;
    Vesk::ML::HMM general{2, 3};
    Vesk::ML::LeftRightHMM leftRight{2, 3, 1};
    Vesk::ML::RecognitionModelHMM recognition;
    Vesk::ML::VectorQuantizer2D quantizer;
};

/// The five kinds of file.
enum class Kind { General, LeftRight, Recognition, Node, Codebook };
inline constexpr Kind allKinds[] = {Kind::General, Kind::LeftRight, Kind::Recognition, Kind::Node,
                                    Kind::Codebook};

inline bool save(const Subjects& subjects, Kind kind, const std::string& path) {
    switch (kind) {
        case Kind::General: return subjects.general.save(path);
        case Kind::LeftRight: return subjects.leftRight.save(path);
        case Kind::Recognition: return subjects.recognition.save(path);
        case Kind::Node: return subjects.recognition.saveNode(path);
        case Kind::Codebook: return subjects.quantizer.save(path);
    }
    return false;
}

/// The fixed writer.
inline void write(Subjects& subjects, Kind kind, const std::string& path) {
    switch (kind) {
        case Kind::General: subjects.general.write(path.c_str()); break;
        case Kind::LeftRight: subjects.leftRight.write(path.c_str()); break;
        case Kind::Recognition: subjects.recognition.write(path.c_str()); break;
        case Kind::Node: subjects.recognition.exportNode(path.c_str()); break;
        case Kind::Codebook: subjects.quantizer.printCodebook(path.c_str()); break;
    }
}

/// Reads the file and writes what came of it to the other; nothing for a node, which has no
/// reader.
inline void copyThroughReader(Kind kind, const std::string& from, const std::string& to) {
    if (kind == Kind::General) {
        EXPECT_TRUE(std::unique_ptr<Vesk::ML::HMM>(Vesk::ML::load(from.c_str()))->save(to));
    } else if (kind == Kind::LeftRight) {
        const std::unique_ptr<Vesk::ML::LeftRightHMM> model(Vesk::ML::loadLR(from.c_str()));
        EXPECT_TRUE(model->save(to));
    } else if (kind == Kind::Recognition) {
        Vesk::ML::RecognitionModelHMM model;
        EXPECT_TRUE(model.read(from));
        EXPECT_TRUE(model.save(to));
    } else if (kind == Kind::Codebook) {
        Vesk::ML::VectorQuantizer2D quantizer;
        EXPECT_TRUE(quantizer.loadCodebook(from.c_str()));
        EXPECT_TRUE(quantizer.save(to));
    }
}

}  // namespace Vesk::Test

#endif
