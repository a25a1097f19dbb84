#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

// The order of the fields and of the virtual slots is part of the binary interface.

namespace {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;
using Vesk::ML::HMM;

int objectsDestroyed = 0;
int storagesReleased = 0;

class Watched : public HMM {
public:
    Watched() : HMM(2, 3) {}
    Watched(const Watched&) = default;
    Watched& operator=(const Watched&) = default;
    ~Watched() override { ++objectsDestroyed; }

    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void* operator new(std::size_t, void* place) { return place; }
    static void operator delete(void* storage) {
        ++storagesReleased;
        ::operator delete(storage);
    }
    static void operator delete(void*, void*) {}

    /// The first virtual operation that is not the model's.
    virtual void additional() {}
};

/// Where a virtual operation stands in the table, counted from 0: the Itanium ABI makes a pointer
/// to it of 1 + the slot's offset in bytes.
template <typename Pointer>
std::ptrdiff_t slotOf(Pointer pointer) {
    std::ptrdiff_t parts[2];
    static_assert(sizeof parts == sizeof pointer);
    std::memcpy(parts, &pointer, sizeof parts);
    EXPECT_EQ(parts[0] % 2, 1) << "not virtual";
    return (parts[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <typename Pointer>
bool isVirtual(Pointer pointer) {
    std::ptrdiff_t parts[2];
    static_assert(sizeof parts == sizeof pointer);
    std::memcpy(parts, &pointer, sizeof parts);
    return parts[0] % 2 == 1;
}

using Destructor = void (*)(void*);

Destructor destructorInSlot(const void* object, std::size_t slot) {
    const char* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    Destructor destructor = nullptr;
    std::memcpy(&destructor, table + slot * sizeof(void*), sizeof destructor);
    return destructor;
}

TEST(HmmLayout, FieldsStandInTheirOrder) {
    const HMM model(2, 3);
    const auto offset = [&model](const void* field) {
        return static_cast<const char*>(field) - reinterpret_cast<const char*>(&model);
    };
    // Behind the pointer to the virtual operations, each field at the next place of its alignment.
    const auto string = static_cast<std::ptrdiff_t>(sizeof(std::string));
    EXPECT_EQ(offset(&model.name), 8);
    EXPECT_EQ(offset(&model.numStates), 8 + string);
    EXPECT_EQ(offset(&model.vocabSize), 12 + string);
    EXPECT_EQ(offset(&model.dimension), 16 + string);
    EXPECT_EQ(offset(&model.vocab), 24 + string);
    EXPECT_EQ(offset(&model.pi), 56 + string);
    EXPECT_EQ(offset(&model.a), 80 + string);
    EXPECT_EQ(offset(&model.b), 112 + string);
    EXPECT_EQ(offset(&model.vocabValues), 144 + string);
    EXPECT_EQ(offset(&model.needsSeed), 168 + string);
    EXPECT_EQ(sizeof(HMM), 176 + sizeof(std::string));
}

TEST(HmmLayout, FieldsHaveTheirTypes) {
    static_assert(std::is_same_v<decltype(HMM::name), std::string>);
    static_assert(std::is_same_v<decltype(HMM::numStates), unsigned int>);
    static_assert(std::is_same_v<decltype(HMM::vocabSize), unsigned int>);
    static_assert(sizeof(HMM::numStates) == 4 && sizeof(HMM::vocabSize) == 4);
    static_assert(std::is_same_v<decltype(HMM::dimension), int>);
    static_assert(std::is_same_v<decltype(HMM::vocab), MatrixT<double>>);
    static_assert(std::is_same_v<decltype(HMM::pi), std::vector<double>>);
    static_assert(std::is_same_v<decltype(HMM::a), MatrixT<double>>);
    static_assert(std::is_same_v<decltype(HMM::b), MatrixT<double>>);
    static_assert(std::is_same_v<decltype(HMM::vocabValues), std::vector<double>>);
    static_assert(std::is_same_v<decltype(HMM::needsSeed), bool>);
    static_assert(std::is_polymorphic_v<HMM>);
    static_assert(std::has_virtual_destructor_v<HMM>);
    static_assert(std::is_enum_v<HMM::SegmentationType>);
    static_assert(sizeof(HMM::SegmentationType) == sizeof(int));
    EXPECT_EQ(static_cast<int>(HMM::StateSymbols), 1);
    EXPECT_EQ(static_cast<int>(HMM::EqualSegments), 2);
}

TEST(HmmLayout, OperationsHaveTheirSignatures) {
    using M = MatrixT<double>;
    using O = VectorT<int>;
    using P = VectorT<double>;
    using S = std::vector<std::vector<int>>;
    static_assert(std::is_constructible_v<HMM, int, int>);
    static_assert(std::is_constructible_v<HMM, int, int, int>);
    static_assert(!std::is_default_constructible_v<HMM>);
    static_assert(!std::is_constructible_v<HMM, int>);
    static_assert(std::is_same_v<decltype(&HMM::baumWelch), void (HMM::*)(O, int, int)>);
    static_assert(
        std::is_same_v<decltype(&HMM::initialize), void (HMM::*)(S, HMM::SegmentationType)>);
    static_assert(std::is_same_v<decltype(&HMM::print), void (HMM::*)()>);
    static_assert(
        std::is_same_v<decltype(&HMM::calcInitialProbs), void (HMM::*)(HMM::SegmentationType, S)>);
    static_assert(std::is_same_v<decltype(&HMM::reset), void (HMM::*)(HMM::SegmentationType)>);
    static_assert(std::is_same_v<decltype(&HMM::randD), double (HMM::*)(double)>);
    static_assert(std::is_same_v<decltype(&HMM::genSeq), O (HMM::*)(int)>);
    static_assert(std::is_same_v<decltype(&HMM::forwardProc), M (HMM::*)(O, int)>);
    static_assert(std::is_same_v<decltype(&HMM::forwardProcHMM), M (HMM::*)(O, int, int, P, M, M)>);
    static_assert(std::is_same_v<decltype(&HMM::backwardProc), M (HMM::*)(O, int)>);
    static_assert(std::is_same_v<decltype(&HMM::backwardProcHMM), M (HMM::*)(O, int, int, M, M)>);
    static_assert(std::is_same_v<decltype(&HMM::forwardProbability), double (HMM::*)(O, int)>);
    static_assert(std::is_same_v<decltype(&HMM::forwardProbabilityHMM),
                                 double (HMM::*)(O, int, int, P, M, M)>);
    static_assert(std::is_same_v<decltype(&HMM::backwardProbability), double (HMM::*)(O, int)>);
    static_assert(std::is_same_v<decltype(&HMM::backwardProbabilityHMM),
                                 double (HMM::*)(O, int, int, P, M, M)>);
    static_assert(std::is_same_v<decltype(&HMM::viterbi), M (HMM::*)(O, int)>);
    static_assert(std::is_same_v<decltype(&HMM::xi), double (HMM::*)(int, int, int, O, M, M)>);
    static_assert(std::is_same_v<decltype(&HMM::gamma), double (HMM::*)(int, int, M, M)>);
    static_assert(std::is_same_v<decltype(&HMM::divide), double (*)(double, double)>);
    HMM* (*loader)(char*) = &Vesk::ML::load;
    EXPECT_NE(loader, nullptr);
}

TEST(HmmLayout, VirtualOperationsStandInTheirSlots) {
    EXPECT_EQ(slotOf(&HMM::baumWelch), 2);
    EXPECT_EQ(slotOf(&HMM::initialize), 3);
    EXPECT_EQ(slotOf(&HMM::print), 4);
    EXPECT_EQ(slotOf(static_cast<void (HMM::*)(char*)>(&HMM::write)), 5);
    EXPECT_EQ(slotOf(&HMM::calcInitialProbs), 6);
}

TEST(HmmLayout, SevenSlotsAreAllThereAre) { EXPECT_EQ(slotOf(&Watched::additional), 7); }

TEST(HmmLayout, OtherOperationsAreNotVirtual) {
    EXPECT_FALSE(isVirtual(&HMM::reset));
    EXPECT_FALSE(isVirtual(&HMM::randD));
    EXPECT_FALSE(isVirtual(&HMM::genSeq));
    EXPECT_FALSE(isVirtual(&HMM::forwardProc));
    EXPECT_FALSE(isVirtual(&HMM::forwardProcHMM));
    EXPECT_FALSE(isVirtual(&HMM::backwardProc));
    EXPECT_FALSE(isVirtual(&HMM::backwardProcHMM));
    EXPECT_FALSE(isVirtual(&HMM::forwardProbability));
    EXPECT_FALSE(isVirtual(&HMM::forwardProbabilityHMM));
    EXPECT_FALSE(isVirtual(&HMM::backwardProbability));
    EXPECT_FALSE(isVirtual(&HMM::backwardProbabilityHMM));
    EXPECT_FALSE(isVirtual(&HMM::viterbi));
    EXPECT_FALSE(isVirtual(&HMM::xi));
    EXPECT_FALSE(isVirtual(&HMM::gamma));
    EXPECT_FALSE(isVirtual(&HMM::save));
    EXPECT_FALSE(isVirtual(static_cast<void (HMM::*)(const char*)>(&HMM::write)));
}

TEST(HmmLayout, FirstSlotDestroysAndSecondAlsoReleases) {
    objectsDestroyed = 0;
    storagesReleased = 0;
    alignas(Watched) unsigned char place[sizeof(Watched)];
    Watched* placed = new (place) Watched;
    destructorInSlot(placed, 0)(placed);
    EXPECT_EQ(objectsDestroyed, 1);
    EXPECT_EQ(storagesReleased, 0);

    Watched* allocated = new Watched;
    destructorInSlot(allocated, 1)(allocated);
    EXPECT_EQ(objectsDestroyed, 2);
    EXPECT_EQ(storagesReleased, 1);
}

TEST(HmmLayout, DeletingThroughTheBaseDestroysTheDerivedModel) {
    objectsDestroyed = 0;
    storagesReleased = 0;
    HMM* model = new Watched;
    delete model;
    EXPECT_EQ(objectsDestroyed, 1);
    EXPECT_EQ(storagesReleased, 1);
}

}  // namespace
