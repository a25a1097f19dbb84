#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

template <typename Member>
std::ptrdiff_t offsetIn(const LeftRightHMM& model, const Member& member) {
    return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&model);
}

void expectAllZero(const std::vector<double>& values, std::size_t count) {
    EXPECT_TRUE(bitEqual(std::vector<double>(count, 0.0), values));
}

// Fields

static_assert(std::is_base_of_v<HMM, LeftRightHMM>);
static_assert(std::is_convertible_v<LeftRightHMM*, HMM*>, "derives publicly");
static_assert(
    std::is_same_v<decltype(LeftRightHMM::trainingSequences), std::vector<std::vector<int>>>);
static_assert(std::is_same_v<decltype(LeftRightHMM::stateSymbols), std::vector<std::vector<int>>>);
static_assert(std::is_same_v<decltype(LeftRightHMM::delta), int>);
static_assert(std::is_same_v<decltype(LeftRightHMM::convergenceThreshold), float>);
static_assert(std::is_enum_v<HMM::SegmentationType>);
static_assert(static_cast<int>(HMM::StateSymbols) == 1);
static_assert(static_cast<int>(HMM::EqualSegments) == 2);

// Interfaces: what a host compiled against these types calls.

static_assert(std::is_constructible_v<LeftRightHMM, int, int, int>);
static_assert(std::is_constructible_v<LeftRightHMM, int, int, std::vector<std::vector<int>>&, int>);
static_assert(
    !std::is_constructible_v<LeftRightHMM, int, int, const std::vector<std::vector<int>>&, int>,
    "sequences are taken by non-const reference");
static_assert(std::has_virtual_destructor_v<LeftRightHMM>);
static_assert(
    std::is_same_v<decltype(&LeftRightHMM::calcInitialProbs),
                   void (LeftRightHMM::*)(HMM::SegmentationType, std::vector<std::vector<int>>)>);
static_assert(
    std::is_same_v<decltype(&LeftRightHMM::forwardProcWithScale),
                   MatrixT<double> (LeftRightHMM::*)(std::vector<int>, int, std::vector<double>&)>);
static_assert(
    std::is_same_v<decltype(&LeftRightHMM::backwardProcWithScale),
                   MatrixT<double> (LeftRightHMM::*)(std::vector<int>, int, std::vector<double>&)>);
static_assert(
    std::is_same_v<decltype(&LeftRightHMM::forwardProbabilityWithScale),
                   double (LeftRightHMM::*)(std::vector<int>, int, std::vector<double>&)>);
static_assert(std::is_same_v<decltype(&LeftRightHMM::forwardProcWithScaleHMM),
                             MatrixT<double> (LeftRightHMM::*)(
                                 std::vector<int>, int, std::vector<double>&, int, VectorT<double>,
                                 MatrixT<double>, MatrixT<double>)>);
static_assert(std::is_same_v<decltype(&LeftRightHMM::backwardProcWithScaleHMM),
                             MatrixT<double> (LeftRightHMM::*)(
                                 std::vector<int>, int, std::vector<double>&, int, VectorT<double>,
                                 MatrixT<double>, MatrixT<double>)>);
static_assert(
    std::is_same_v<decltype(&LeftRightHMM::forwardProbabilityWithScaleHMM),
                   double (LeftRightHMM::*)(std::vector<int>, int, std::vector<double>&, int,
                                            VectorT<double>, MatrixT<double>, MatrixT<double>)>);
static_assert(std::is_same_v<decltype(&LeftRightHMM::baumWelch),
                             void (LeftRightHMM::*)(VectorT<int>, int, int)>);
static_assert(std::is_same_v<decltype(&LeftRightHMM::baumWelchMultiple),
                             void (LeftRightHMM::*)(std::vector<std::vector<int>>, int)>);
static_assert(std::is_same_v<decltype(static_cast<LeftRightHMM* (*)(char*)>(&Vesk::ML::loadLR)),
                             LeftRightHMM* (*)(char*)>);

TEST(LeftRightConstruction, OwnFieldsFollowTheBaseInDeclarationOrder) {
    const LeftRightHMM model(2, 2, 1);
    EXPECT_EQ(static_cast<const void*>(static_cast<const HMM*>(&model)),
              static_cast<const void*>(&model));
    const std::ptrdiff_t first = offsetIn(model, model.trainingSequences);
    EXPECT_GT(first, offsetIn(model, model.needsSeed));
    EXPECT_EQ(first, static_cast<std::ptrdiff_t>(sizeof(HMM)));
    EXPECT_EQ(offsetIn(model, model.stateSymbols), first + 24);
    EXPECT_EQ(offsetIn(model, model.delta), first + 48);
    EXPECT_EQ(offsetIn(model, model.convergenceThreshold), first + 52);
    EXPECT_EQ(sizeof(LeftRightHMM), static_cast<std::size_t>(first) + 56);
}

TEST(LeftRightConstruction, StartsWithNoProbabilitiesAndTheStatedFields) {
    const LeftRightHMM model(3, 4, 2);
    EXPECT_EQ(model.name, "");
    EXPECT_EQ(model.numStates, 3U);
    EXPECT_EQ(model.vocabSize, 4U);
    EXPECT_EQ(model.dimension, 1);
    EXPECT_TRUE(model.needsSeed);
    EXPECT_TRUE(model.vocabValues.empty());
    EXPECT_TRUE(model.trainingSequences.empty());
    EXPECT_TRUE(model.stateSymbols.empty());
    EXPECT_EQ(model.delta, 2);
    EXPECT_TRUE(sameBits(model.convergenceThreshold, 0.001f));
    expectAllZero(model.pi, 3);
    EXPECT_EQ(model.a.rows, 3);
    EXPECT_EQ(model.a.cols, 3);
    expectAllZero(model.a.data, 9);
    EXPECT_EQ(model.b.rows, 3);
    EXPECT_EQ(model.b.cols, 4);
    expectAllZero(model.b.data, 12);
}

TEST(LeftRightConstruction, GivesEverySymbolItsOwnIndexAsValue) {
    const LeftRightHMM model(2, 5, 1);
    EXPECT_EQ(model.vocab.rows, 5);
    EXPECT_EQ(model.vocab.cols, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 1, 2, 3, 4}, model.vocab.data));
}

TEST(LeftRightConstruction, RaisesSizesBelowOneAndThenSetsNoSymbolValue) {
    for (const int size : {0, -1, -5, -2147483647 - 1}) {
        SCOPED_TRACE(size);
        const LeftRightHMM model(size, size, 1);
        EXPECT_EQ(model.numStates, 1U);
        EXPECT_EQ(model.vocabSize, 1U);
        EXPECT_EQ(model.dimension, 1);
        expectAllZero(model.pi, 1);
        expectAllZero(model.a.data, 1);
        expectAllZero(model.b.data, 1);
        expectAllZero(model.vocab.data, 1);
        EXPECT_EQ(model.vocab.rows, 1);
        EXPECT_EQ(model.vocab.cols, 1);
    }
}

TEST(LeftRightConstruction, StoresDeltaAsGiven) {
    for (const int delta : {-2147483647 - 1, -7, -1, 0, 1, 99, 2147483647}) {
        EXPECT_EQ(LeftRightHMM(2, 2, delta).delta, delta);
    }
}

TEST(LeftRightConstruction, FourArgumentsCopyTheSequencesAndLeaveTheCallersAlone) {
    std::vector<std::vector<int>> sequences = {{0, 1, 2}, {}, {2, 2}};
    const std::vector<std::vector<int>> before = sequences;
    const LeftRightHMM model(3, 4, sequences, 2);
    EXPECT_EQ(sequences, before);
    EXPECT_EQ(model.trainingSequences, before);
    EXPECT_TRUE(model.stateSymbols.empty());
    sequences[0][0] = 3;
    sequences.clear();
    EXPECT_EQ(model.trainingSequences, before);
    EXPECT_TRUE(sameModel(LeftRightHMM(3, 4, 2), model));
}

TEST(LeftRightConstruction, FourArgumentsRaiseSizesToo) {
    std::vector<std::vector<int>> sequences = {{0}};
    const LeftRightHMM model(0, -5, sequences, -1);
    EXPECT_TRUE(sameModel(LeftRightHMM(1, 1, -1), model));
}

TEST(LeftRightConstruction, SizesThatNoStorageCanHoldAreBadAlloc) {
    // 46341 * 46341 = 2147488281 wraps to a negative 32-bit count.
    EXPECT_THROW(LeftRightHMM(46341, 1, 1), std::bad_alloc);
    EXPECT_THROW(LeftRightHMM(2, 2147483647, 1), std::bad_alloc);
}

TEST(LeftRightConstruction, PrintsNothing) {
    const Capture capture;
    std::vector<std::vector<int>> sequences = {{0, 1}};
    const LeftRightHMM three(2, 2, 1);
    const LeftRightHMM four(2, 2, sequences, 1);
    EXPECT_EQ(capture.text(), "");
}

TEST(LeftRightConstruction, CopiesAreIndependent) {
    LeftRightHMM model(2, 2, 1);
    model.stateSymbols = {{0}, {1}};
    LeftRightHMM copy(model);
    copy.pi[0] = 1.0;
    copy.a(0, 1) = 0.5;
    copy.stateSymbols[0][0] = 1;
    EXPECT_TRUE(sameBits(0.0, model.pi[0]));
    EXPECT_TRUE(sameBits(0.0, model.a(0, 1)));
    EXPECT_EQ(model.stateSymbols[0][0], 0);
}

// Virtual operations

/// The slot that a call through the pointer to member goes to (Itanium C++ ABI, section 2.3).
template <typename Function>
int slotOf(Function function) {
    std::intptr_t parts[2];
    static_assert(sizeof parts == sizeof function);
    std::memcpy(parts, &function, sizeof function);
#if defined(__aarch64__)
    const bool isVirtual = (parts[1] & 1) != 0;
    const std::intptr_t offset = parts[0];
#else
    const bool isVirtual = (parts[0] & 1) != 0;
    const std::intptr_t offset = parts[0] - 1;
#endif
    if (!isVirtual) return -1;
    return static_cast<int>(offset / static_cast<std::intptr_t>(sizeof(void*)));
}

std::vector<const void*> virtualTable(const HMM& object) {
    const void* const* slots = nullptr;
    std::memcpy(&slots, static_cast<const void*>(&object), sizeof slots);
    return std::vector<const void*>(slots, slots + 7);
}

TEST(LeftRightVirtualTable, SlotsStandInTheOrderOfTheGeneralModel) {
    EXPECT_EQ(slotOf(&HMM::baumWelch), 2);
    EXPECT_EQ(slotOf(&HMM::initialize), 3);
    EXPECT_EQ(slotOf(&HMM::print), 4);
    EXPECT_EQ(slotOf(static_cast<void (HMM::*)(char*)>(&HMM::write)), 5);
    EXPECT_EQ(slotOf(&HMM::calcInitialProbs), 6);
    EXPECT_EQ(slotOf(&LeftRightHMM::baumWelch), 2);
    EXPECT_EQ(slotOf(static_cast<void (LeftRightHMM::*)(char*)>(&LeftRightHMM::write)), 5);
    EXPECT_EQ(slotOf(&LeftRightHMM::calcInitialProbs), 6);
}

TEST(LeftRightVirtualTable, OverridesDestructorsTrainingWritingAndEstimateOnly) {
    const HMM general(1, 1);
    const LeftRightHMM leftRight(1, 1, 1);
    const std::vector<const void*> base = virtualTable(general);
    const std::vector<const void*> derived = virtualTable(leftRight);
    for (const std::size_t overridden : {0U, 1U, 2U, 5U, 6U}) {
        EXPECT_NE(base[overridden], derived[overridden]) << "slot " << overridden;
    }
    for (const std::size_t inherited : {3U, 4U}) {
        EXPECT_EQ(base[inherited], derived[inherited]) << "slot " << inherited;
    }
}

class DestructorProbe : public LeftRightHMM {
public:
    explicit DestructorProbe(int& destroyed) : LeftRightHMM(2, 2, 1), count(destroyed) {}
    ~DestructorProbe() override { ++count; }

private:
    int& count;
};

TEST(LeftRightVirtualTable, FirstTwoSlotsAreTheDestructors) {
    int destroyed = 0;
    const DestructorProbe probe(destroyed);
    const LeftRightHMM plain(2, 2, 1);
    const std::vector<const void*> own = virtualTable(probe);
    const std::vector<const void*> base = virtualTable(plain);
    EXPECT_NE(own[0], base[0]);
    EXPECT_NE(own[1], base[1]);
    for (std::size_t slot = 2; slot < 7; ++slot) EXPECT_EQ(own[slot], base[slot]) << slot;
}

class SlotProbe : public LeftRightHMM {
public:
    SlotProbe() : LeftRightHMM(1, 1, 1) {}
    virtual int extra() { return 1; }
};

TEST(LeftRightVirtualTable, EndsAfterSevenSlots) { EXPECT_EQ(slotOf(&SlotProbe::extra), 7); }

TEST(LeftRightVirtualTable, IsDeletedThroughTheBase) {
    int destroyed = 0;
    std::unique_ptr<HMM> model = std::make_unique<DestructorProbe>(destroyed);
    model.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(LeftRightVirtualTable, PrintIsTheGeneralDump) {
    Reference::LeftRightModel reference = Reference::makeLeftRight(2, 3, 1);
    reference.name = "wave";
    reference.pi = {1.0, 0.0};
    reference.a = {{1.0 / 3.0, 2.0 / 3.0}, {0.0, 1.0}};
    reference.b = {{0.5, 0.25, 0.25}, {0.00001, 1.0, 2.0}};
    LeftRightHMM model = libraryModel(reference);
    const Capture capture;
    model.print();
    EXPECT_EQ(capture.text(),
              "name: wave\nnumStates: 2\nvocabSize: 3\n"
              "Initial probs pi:\n1 0 \n\n"
              "Transition probs a:\n0.333 0.667 \n0 1 \n\n"
              "Emission probs b:\n0.5 0.25 0.25 \n\n1e-05 1 2 \n\n");
}

}  // namespace
