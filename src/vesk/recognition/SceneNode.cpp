#include <vesk/recognition/RecognitionModelHMM.h>

#include <vesk/base/internal/OutputFile.h>
#include <vesk/hmm/internal/ModelText.h>
#include <vesk/hmm/internal/Parameters.h>
#include <vesk/leftright/LeftRightHMM.h>

#include <cstdint>
#include <string>

namespace Vesk::ML {
namespace {

using internal::Table;
using Vesk::Math::internal::leading;
using Vesk::Math::internal::table;

/// A field whose value is a list: every value is followed by a blank.
void writeList(std::ostream& out, const char* field, Table<const double> values) {
    out << field << " [ ";
    for (int r = 0; r < values.rows; ++r) {
        for (int c = 0; c < values.cols; ++c) out << values(r, c) << ' ';
    }
    out << "]\n";
}

void writeGestureNode(std::ostream& out, const HMM& gesture) {
    const int delta = dynamic_cast<const LeftRightHMM&>(gesture).delta;
    const internal::Parameters p = internal::parametersOf(gesture);
    out << "\t\tGesture {\n";
    out << "\t\t\tmodelname \"" << gesture.name << "\"\n";
    out << "\t\t\tnumStates " << gesture.numStates << '\n';
    out << "\t\t\tvocabSize " << gesture.vocabSize << '\n';
    out << "\t\t\tdimension " << gesture.dimension << '\n';
    out << "\t\t\tdelta " << delta << '\n';
    writeList(out, "\t\t\tinitialStateProbs", {p.pi, 1, p.N, 0});
    writeList(out, "\t\t\ttransitionProbs", p.a);
    writeList(out, "\t\t\temissionProbs", p.b);
    out << "\t\t}\n";
}

std::string composeNode(const RecognitionModelHMM& model) {
    const std::int64_t N = model.numStates;
    const std::int64_t M = model.vocabSize;
    return internal::composeText([&](std::ostream& out) {
        out << "#VRML V2.0 utf8\n\n";
        out << "RecognitionModel {\n";
        out << "\tname \"" << model.name << "\"\n";
        out << "\tnumStates " << model.numStates << '\n';
        out << "\tvocabSize " << model.vocabSize << '\n';
        // A host that reads the node takes these two as they are, whatever the models hold.
        out << "\tdimension 1 \n";
        out << "\tdelta -1 \n";
        out << "\tmodelTransitionProb " << model.modelTransitionProb << '\n';
        writeList(out, "\tinitialStateProbs", {leading(model.pi, N), 1, static_cast<int>(N), 0});
        writeList(out, "\ttransitionProbs", table(model.a, N, N));
        writeList(out, "\temissionProbs", table(model.b, N, M));
        writeList(out, "\tvocab", table(model.vocab, M, 1));
        writeList(out, "\tcodebook", internal::rowOf(model.codebook));
        out << "\tproxFilterThreshold " << static_cast<double>(model.proxFilterThreshold) << '\n';
        out << "\trotationAllowed " << (model.rotationAllowed ? "TRUE" : "FALSE") << '\n';
        out << "\tgestures [ \n";
        for (const HMM* gesture : model.gestures) writeGestureNode(out, *gesture);
        out << "\t]\n";
        out << "}\n";
    });
}

}  // namespace

void RecognitionModelHMM::exportNode(char* path) {
    internal::writeFile(path, internal::upToNul(composeNode(*this)));
}

bool RecognitionModelHMM::saveNode(const std::string& path) const {
    return internal::saveFile(path, internal::upToNul(composeNode(*this)));
}

}  // namespace Vesk::ML
