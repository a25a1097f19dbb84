#include <vesk/quantizer/ProximityFilter.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <list>
#include <new>
#include <type_traits>
#include <vector>

namespace {

using Vesk::ML::ProximityFilter;
using Vesk::ML::VectorQuantizer2D;
using Trace = std::vector<std::vector<double>>;

static_assert(std::is_same_v<decltype(VectorQuantizer2D::codebookReady), bool>);
static_assert(std::is_same_v<decltype(VectorQuantizer2D::codebookSize), int>);
static_assert(std::is_same_v<decltype(VectorQuantizer2D::codebook), std::vector<double>>);
static_assert(std::is_polymorphic_v<VectorQuantizer2D>);
static_assert(std::has_virtual_destructor_v<VectorQuantizer2D>);
static_assert(std::is_default_constructible_v<VectorQuantizer2D>);

static_assert(std::is_same_v<decltype(&VectorQuantizer2D::stop), void (VectorQuantizer2D::*)()>);
static_assert(std::is_same_v<decltype(&VectorQuantizer2D::setCodebook),
                             void (VectorQuantizer2D::*)(std::vector<double>)>);
static_assert(std::is_same_v<decltype(&VectorQuantizer2D::initializeCodebook),
                             void (VectorQuantizer2D::*)(int)>);
static_assert(
    std::is_same_v<decltype(&VectorQuantizer2D::radToDeg), double (VectorQuantizer2D::*)(double)>);
static_assert(std::is_same_v<decltype(&VectorQuantizer2D::convertSequence),
                             std::vector<double> (VectorQuantizer2D::*)(Trace&)>);
static_assert(std::is_same_v<decltype(&VectorQuantizer2D::classify),
                             std::vector<int> (VectorQuantizer2D::*)(Trace&, float, bool)>);
static_assert(std::is_same_v<decltype(&VectorQuantizer2D::classifyAndFilter),
                             std::vector<int> (VectorQuantizer2D::*)(Trace&, float)>);
static_assert(std::is_same_v<decltype(&VectorQuantizer2D::trainCodebook),
                             std::vector<double> (VectorQuantizer2D::*)(std::list<Trace>&, float)>);
static_assert(std::is_same_v<decltype(static_cast<bool (VectorQuantizer2D::*)(char*)>(
                                 &VectorQuantizer2D::printCodebook)),
                             bool (VectorQuantizer2D::*)(char*)>);
static_assert(std::is_same_v<decltype(static_cast<bool (VectorQuantizer2D::*)(char*)>(
                                 &VectorQuantizer2D::loadCodebook)),
                             bool (VectorQuantizer2D::*)(char*)>);
static_assert(
    std::is_same_v<decltype(&ProximityFilter<double>::run), void (*)(Trace&, Trace&, double)>);

TEST(QuantizerInterfaceTest, FreshQuantizerIsNotReadyAndEmpty) {
    // Built over other bytes, so that a field that nobody sets shows.
    alignas(VectorQuantizer2D) unsigned char storage[sizeof(VectorQuantizer2D)];
    std::memset(storage, 0xA5, sizeof storage);
    auto* quantizer = ::new (static_cast<void*>(storage)) VectorQuantizer2D;
    EXPECT_FALSE(quantizer->codebookReady);
    EXPECT_EQ(quantizer->codebookSize, 0);
    EXPECT_TRUE(quantizer->codebook.empty());
    quantizer->~VectorQuantizer2D();
}

TEST(QuantizerInterfaceTest, FieldsLieInOrderBehindTheVirtualTable) {
    const VectorQuantizer2D quantizer;
    const auto offset = [&quantizer](const void* member) {
        return static_cast<const unsigned char*>(member) -
               reinterpret_cast<const unsigned char*>(&quantizer);
    };
    // Pointer to the virtual table: 8 bytes; bool: 1 byte; then an int aligned to 4.
    EXPECT_EQ(offset(&quantizer.codebookReady), 8);
    EXPECT_EQ(offset(&quantizer.codebookSize), 12);
    EXPECT_EQ(offset(&quantizer.codebook), 16);
    EXPECT_EQ(sizeof(VectorQuantizer2D), 40u);
}

/// Overrides every virtual operation and adds one, which takes the first slot that is free.
class Recorder : public VectorQuantizer2D {
public:
    static inline int destroyed = 0;
    static inline int freed = 0;
    static inline int stopped = 0;
    static inline int added = 0;

    ~Recorder() override { ++destroyed; }
    void stop() override { ++stopped; }
    virtual void addedOperation() { ++added; }
    static void operator delete(void*) { ++freed; }
};

using Slot = void (*)(void*);

/// Calls the operation in the slot of the object's virtual table (Itanium C++ ABI).
void callSlot(void* object, int slot) {
    Slot* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    table[slot](object);
}

TEST(QuantizerInterfaceTest, VirtualSlotsAreBothDestructorsAndStopAndNothingElse) {
    alignas(Recorder) unsigned char storage[sizeof(Recorder)];
    Recorder::destroyed = Recorder::freed = Recorder::stopped = Recorder::added = 0;

    void* object = ::new (static_cast<void*>(storage)) Recorder;
    callSlot(object, 2);
    EXPECT_EQ(Recorder::stopped, 1);
    callSlot(object, 3);
    EXPECT_EQ(Recorder::added, 1);
    EXPECT_EQ(Recorder::destroyed, 0);

    callSlot(object, 0);
    EXPECT_EQ(Recorder::destroyed, 1);
    EXPECT_EQ(Recorder::freed, 0);

    object = ::new (static_cast<void*>(storage)) Recorder;
    callSlot(object, 1);
    EXPECT_EQ(Recorder::destroyed, 2);
    EXPECT_EQ(Recorder::freed, 1);
    EXPECT_EQ(Recorder::stopped, 1);
    EXPECT_EQ(Recorder::added, 1);
}

TEST(QuantizerInterfaceTest, StopChangesNothing) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0, 20.0});
    quantizer.stop();
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebookSize, 2);
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{10.0, 20.0}));
}

TEST(QuantizerInterfaceTest, CopiesAreIndependentAndMovesTakeTheCodebookOver) {
    VectorQuantizer2D original;
    original.setCodebook({10.0, 20.0});
    VectorQuantizer2D copy = original;
    copy.setCodebook({30.0});
    EXPECT_EQ(original.codebook, (std::vector<double>{10.0, 20.0}));

    VectorQuantizer2D assigned;
    assigned = original;
    EXPECT_TRUE(assigned.codebookReady);
    EXPECT_EQ(assigned.codebookSize, 2);
    EXPECT_EQ(assigned.codebook, original.codebook);

    const double* const values = assigned.codebook.data();
    const VectorQuantizer2D moved = std::move(assigned);
    EXPECT_EQ(moved.codebook.data(), values);
    EXPECT_EQ(moved.codebookSize, 2);
}

}  // namespace
