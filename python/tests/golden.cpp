// Prints what the library makes of a model file and symbols, every double in hexadecimal: what the
// Python package has to print, too.
//
//   golden MODEL SYMBOL...
#include <vesk/leftright/LeftRightHMM.h>
#include <veskkit/io/ModelFile.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

using Vesk::Math::MatrixT;
using Vesk::ML::LeftRightHMM;

namespace {

void show(const char* what, const std::vector<double>& values) {
    std::printf("%s", what);
    for (const double value : values) std::printf(" %a", value);
    std::printf("\n");
}

void show(const char* what, const MatrixT<double>& values) { show(what, values.data); }

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const Vesk::Kit::RecognitionModel model = Vesk::Kit::loadModel(argv[1]);
    std::vector<int> o;
    for (int i = 2; i < argc; ++i) o.push_back(std::atoi(argv[i]));
    const int T = static_cast<int>(o.size());

    LeftRightHMM first = *model.gestures().front();
    show("a", first.a);
    show("b", first.b);
    show("forward", first.forwardProc(o, T));
    show("backward", first.backwardProc(o, T));
    show("viterbi", first.viterbi(o, T));
    std::vector<double> scale(o.size());
    show("scaled", first.forwardProcWithScale(o, T, scale));
    show("scale", scale);
    show("scaled backward", first.backwardProcWithScale(o, T, scale));
    show("log", {first.logLikelihood(o)});
    const auto verdict = model.get().evaluate(o);
    std::vector<double> scores{verdict.threshold, static_cast<double>(verdict.winner)};
    for (const auto& score : verdict.gestures) {
        scores.push_back(score.weightedProbability);
        scores.push_back(score.weightedGamma);
    }
    show("evaluate", scores);
    first.trainMultiple({o, o}, 2);
    show("trained a", first.a);
    show("trained b", first.b);
    return 0;
}
