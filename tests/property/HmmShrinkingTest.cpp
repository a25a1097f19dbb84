#include <support/Files.h>
#include <support/HmmShrinking.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::modelOf;
using Vesk::Test::modelsEqual;
using Vesk::Test::Shrinking::anyCase;
using Vesk::Test::Shrinking::anyOrder;
using Vesk::Test::Shrinking::Case;
namespace Reference = Vesk::Test::Reference;
using Reference::at;

RC_GTEST_PROP(HmmShrinking, ForwardAndBackwardAgreeToTheLastBit, ()) {
    const Case c = anyCase();
    HMM model = modelOf(c.model);
    RC_ASSERT(model.forwardProbability(c.o, c.T()) == model.backwardProbability(c.o, c.T()));
}

RC_GTEST_PROP(HmmShrinking, EveryTimeHasTheSameProbability, ()) {
    const Case c = anyCase();
    HMM model = modelOf(c.model);
    const double p = model.forwardProbability(c.o, c.T());
    const Matrix alpha = model.forwardProc(c.o, c.T());
    const Matrix beta = model.backwardProc(c.o, c.T());
    for (int t = 0; t < c.T(); ++t) {
        double sum = 0.0;
        for (int i = 0; i < c.model.N; ++i) sum += alpha(i, t) * beta(i, t);
        RC_ASSERT(sum == p);
    }
}

RC_GTEST_PROP(HmmShrinking, RelabelledStatesHaveRelabelledTables, ()) {
    const Case c = anyCase();
    const int N = c.model.N;
    const std::vector<int> order = anyOrder(N);
    Reference::Model relabelled = c.model;
    for (int i = 0; i < N; ++i) {
        relabelled.pi[at(order[at(i)])] = c.model.pi[at(i)];
        relabelled.b[at(order[at(i)])] = c.model.b[at(i)];
        for (int j = 0; j < N; ++j) {
            relabelled.a[at(order[at(i)])][at(order[at(j)])] = c.model.a[at(i)][at(j)];
        }
    }
    HMM before = modelOf(c.model);
    HMM after = modelOf(relabelled);
    const Matrix alphaBefore = before.forwardProc(c.o, c.T());
    const Matrix alphaAfter = after.forwardProc(c.o, c.T());
    const Matrix betaBefore = before.backwardProc(c.o, c.T());
    const Matrix betaAfter = after.backwardProc(c.o, c.T());
    for (int i = 0; i < N; ++i) {
        for (int t = 0; t < c.T(); ++t) {
            RC_ASSERT(alphaBefore(i, t) == alphaAfter(order[at(i)], t));
            RC_ASSERT(betaBefore(i, t) == betaAfter(order[at(i)], t));
        }
    }
}

RC_GTEST_PROP(HmmShrinking, UnreachableStatesChangeNothing, ()) {
    const Case c = anyCase();
    const int N = c.model.N;
    Reference::Model larger = c.model;
    larger.N = N + 1;
    larger.pi.push_back(0.0);
    for (auto& row : larger.a) row.push_back(0.0);
    larger.a.push_back(Vesk::Test::Shrinking::eighths(N + 1));
    larger.b.push_back(Vesk::Test::Shrinking::eighths(c.model.M));
    HMM before = modelOf(c.model);
    HMM after = modelOf(larger);
    RC_ASSERT(before.forwardProbability(c.o, c.T()) == after.forwardProbability(c.o, c.T()));
    RC_ASSERT(before.backwardProbability(c.o, c.T()) == after.backwardProbability(c.o, c.T()));
    RC_ASSERT(before.viterbi(c.o, c.T())(0, 0) == after.viterbi(c.o, c.T())(0, 0));
}

RC_GTEST_PROP(HmmShrinking, TablesPathsAndTrainingAreThePlainOnes, ()) {
    const Case c = anyCase();
    HMM model = modelOf(c.model);
    RC_ASSERT(bool(bitEqual(Reference::forwardProc(c.model, c.o, c.T()), c.T(),
                            model.forwardProc(c.o, c.T()))));
    RC_ASSERT(bool(bitEqual(Reference::backwardProc(c.model, c.o, c.T()), c.T(),
                            model.backwardProc(c.o, c.T()))));
    RC_ASSERT(
        bool(bitEqual(Reference::viterbi(c.model, c.o, c.T()), c.T(), model.viterbi(c.o, c.T()))));
    Reference::Model plain = c.model;
    Reference::baumWelch(plain, c.o, c.T(), 2);
    model.baumWelch(c.o, c.T(), 2);
    RC_ASSERT(bool(modelsEqual(plain, model)));
}

RC_GTEST_PROP(HmmShrinking, WrittenModelsAreReadBackWhole, ()) {
    Case c = anyCase();
    c.model.name = *rc::gen::nonEmpty(rc::gen::container<std::string>(
        rc::gen::oneOf(rc::gen::inRange('a', 'z'), rc::gen::inRange('0', '9'))));
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model = modelOf(c.model);
    RC_ASSERT(model.save(path));
    const std::unique_ptr<HMM> back(Vesk::ML::load(path.c_str()));
    RC_ASSERT(back != nullptr);
    RC_ASSERT(bool(modelsEqual(c.model, *back)));
}

RC_GTEST_PROP(HmmShrinking, DivisionIsGuardedForZeroNumeratorsOnly, (double x, double y)) {
    const double quotient = HMM::divide(x, y);
    RC_ASSERT(bool(bitEqual(x == 0.0 ? 0.0 : x / y, quotient)));
    RC_ASSERT(bool(bitEqual(0.0, HMM::divide(0.0, y))));
    RC_ASSERT(bool(bitEqual(0.0, HMM::divide(-0.0, y))));
}

}  // namespace
