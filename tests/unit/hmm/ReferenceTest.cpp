#include <support/BitEqual.h>
#include <support/HmmEnumeration.h>
#include <support/HmmReference.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

// The yardstick itself, against numbers worked out by hand.

namespace {

using Vesk::Test::bitEqual;
using namespace Vesk::Test::Reference;

Model weather() {
    Model model = makeModel(2, 2);
    model.pi = {0.5, 0.5};
    model.a = {{0.5, 0.5}, {0.25, 0.75}};
    model.b = {{0.5, 0.5}, {0.25, 0.75}};
    return model;
}

TEST(HmmReference, Forward) {
    // 1/2 * 1/2, 1/2 * 1/4; (1/4 * 1/2 + 1/8 * 1/4) * 1/2, (1/4 * 1/2 + 1/8 * 3/4) * 3/4.
    EXPECT_EQ(forwardProc(weather(), {0, 1}, 2), (Table{{0.25, 5.0 / 64}, {0.125, 21.0 / 128}}));
    EXPECT_EQ(forwardProbability(weather(), {0, 1}, 2), 31.0 / 128);
    EXPECT_EQ(forwardProc(weather(), {}, 0), (Table{{}, {}}));
    EXPECT_EQ(forwardProbability(weather(), {}, -1), 0.0);
}

TEST(HmmReference, Backward) {
    // 1 * 1/2 * 1/2 + 1 * 1/2 * 3/4, 1 * 1/4 * 1/2 + 1 * 3/4 * 3/4.
    EXPECT_EQ(backwardProc(weather(), {0, 1}, 2), (Table{{0.625, 1.0}, {0.6875, 1.0}}));
    EXPECT_EQ(backwardProbability(weather(), {0, 1}, 2), 31.0 / 128);
    EXPECT_EQ(backwardProbability(weather(), {}, 0), 0.0);
}

TEST(HmmReference, Posteriors) {
    const Model m = weather();
    const Table alpha = {{0.25, 5.0 / 64}, {0.125, 21.0 / 128}};
    const Table beta = {{0.625, 1.0}, {0.6875, 1.0}};
    EXPECT_EQ(gamma(0, 0, 2, alpha, beta), 20.0 / 31);
    EXPECT_EQ(gamma(1, 1, 2, alpha, beta), 21.0 / 31);
    EXPECT_EQ(xi(0, 1, 0, {0, 1}, 2, m.a, m.b, alpha, beta), 12.0 / 31);
    EXPECT_EQ(xi(1, 0, 0, {0, 1}, 2, m.a, m.b, alpha, beta), 2.0 / 31);
}

TEST(HmmReference, Division) {
    EXPECT_TRUE(bitEqual(0.0, divide(0.0, 0.0)));
    EXPECT_TRUE(bitEqual(0.0, divide(-0.0, 1.0)));
    EXPECT_TRUE(bitEqual(std::numeric_limits<double>::infinity(), divide(1.0, 0.0)));
    EXPECT_TRUE(bitEqual(0.25, divide(1.0, 4.0)));
}

TEST(HmmReference, Viterbi) {
    const Table result = viterbi(weather(), {0, 1}, 2);
    EXPECT_EQ(result[1], (Vector{0.0, 1.0}));
    EXPECT_NEAR(result[0][0], 12.0 / 128, 1e-16);
    EXPECT_EQ(result[0][1], 0.0);
    // Alike states: the lowest at every step.
    Model alike = makeModel(3, 1);
    alike.pi = {1, 1, 1};
    alike.a = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
    alike.b = {{1}, {1}, {1}};
    EXPECT_EQ(viterbi(alike, {0, 0, 0}, 3), (Table{{1, 0, 0}, {0, 0, 0}}));
}

TEST(HmmReference, Reestimation) {
    Model coin = makeModel(1, 2);
    coin.pi = {1.0};
    coin.a = {{0.5}};
    coin.b = {{0.5, 0.5}};
    const Candidate next = reestimate(coin, {0, 0, 1}, 3);
    EXPECT_EQ(next.pi, (Vector{1.0}));
    EXPECT_EQ(next.a, (Table{{1.0}}));
    EXPECT_EQ(next.b, (Table{{2.0, 0.5}}));
    EXPECT_EQ(next.previous, 0.0);
    EXPECT_EQ(next.likelihood, 2.0);
    EXPECT_EQ(reestimate(weather(), {0, 1}, 2).previous, 0.125);
    EXPECT_EQ(baumWelch(coin, {0, 0, 1}, 3, 1), 1);
    EXPECT_EQ(coin.b, (Table{{2.0, 0.5}}));
    EXPECT_EQ(baumWelch(coin, {0, 0, 1}, 3, 0), 0);
    EXPECT_EQ(baumWelch(coin, {0, 0, 1}, 0, 5), 0);
}

TEST(HmmReference, InitialEstimate) {
    Model several = weather();
    calcInitialProbs(several);
    EXPECT_EQ(several.pi, (Vector{0, 0}));
    EXPECT_EQ(several.a, (Table{{0, 0}, {0, 0}}));
    Model one = makeModel(0, -5, 0);
    calcInitialProbs(one);
    EXPECT_EQ(one.pi, (Vector{1}));
    EXPECT_EQ(one.a, (Table{{1}}));
    EXPECT_EQ(one.b, (Table{{1}}));
    EXPECT_EQ(one.vocab, (Table{{0}}));
}

TEST(HmmReference, Sampling) {
    Model m = makeModel(2, 3);
    m.pi = {0.25, 0.75};
    m.a = {{0.5, 0.5}, {0.25, 0.75}};
    m.b = {{0.5, 0.25, 0.25}, {0.125, 0.125, 0.75}};
    const Vector draws = {0.5, 0.25, 0.25, 0.75, 0.75, 0.9, 0.1};
    std::size_t used = 0;
    const Sample result = sample(m, 3, [&] { return draws.at(used++); });
    EXPECT_EQ(result.path, (Symbols{1, 0, 1, 0}));
    EXPECT_EQ(result.symbols, (Symbols{1, 1, 2}));
    EXPECT_EQ(used, draws.size());
}

TEST(HmmReference, Text) {
    Model m = weather();
    m.name = "gesture";
    m.pi = {1.0 / 3, 0.00001};
    m.vocab = {{0}, {1}};
    const std::string text =
        "gesture\n2 2 1\n0.333333 1e-05\n0.5 0.5 0.25 0.75\n"
        "0.5 0.5 0.25 0.75\n0 1\n";
    EXPECT_EQ(fileText(m), text);
    const Model back = parse(text);
    EXPECT_EQ(back.name, "gesture");
    EXPECT_EQ(back.pi, (Vector{0.333333, 0.00001}));
    EXPECT_EQ(back.a, m.a);
    EXPECT_EQ(back.b, m.b);
    EXPECT_EQ(back.vocab, (Table{{0}, {0}}));
    EXPECT_EQ(dumpText(m),
              "name: gesture\nnumStates: 2\nvocabSize: 2\nInitial probs pi:\n0.333 1e-05 \n\n"
              "Transition probs a:\n0.5 0.5 \n0.25 0.75 \n\n"
              "Emission probs b:\n0.5 0.5 \n\n0.25 0.75 \n\n");
}

TEST(HmmReference, Enumeration) {
    // Paths of 0, 1: 00 has 8/128, 01 12/128, 10 2/128, 11 9/128.
    using Vesk::Test::Enumeration::enumerate;
    const auto summary = enumerate(weather(), {0, 1}, 2);
    EXPECT_EQ(summary.total, 31.0 / 128);
    EXPECT_EQ(summary.best, 12.0 / 128);
    EXPECT_EQ(summary.runnerUp, 9.0 / 128);
    EXPECT_EQ(summary.bestPath, (std::vector<int>{0, 1}));
    EXPECT_EQ(summary.state, (Table{{20.0 / 128, 10.0 / 128}, {11.0 / 128, 21.0 / 128}}));
    EXPECT_EQ(summary.transition[0], (Table{{8.0 / 128, 12.0 / 128}, {2.0 / 128, 9.0 / 128}}));
}

}  // namespace
