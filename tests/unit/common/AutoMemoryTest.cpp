#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "AllocationWatch.h"
#include "AutoMemory.h"

namespace {

using namespace TulTest;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

/** Tells when it goes. */
struct Mortal {
    Mortal() = default;
    ~Mortal() { AllocationWatch::noteReleased(this); }
    Mortal(const Mortal&) = delete;
    Mortal& operator=(const Mortal&) = delete;

    std::string text = "built";
};

struct Unbuildable {
    Unbuildable() { throw std::runtime_error("cannot be built"); }
};

TEST(AutoMemory, HandsOutBlocksFilledWithZeros) {
    AllocationWatch watch;
    Tul::AutoMemory memory;
    const auto* const block = memory.malloc<long>(16);

    EXPECT_THAT(std::vector<long>(block, block + 16), Each(0));
    ASSERT_EQ(1u, watch.taken().size());
    EXPECT_EQ(16u, watch.taken()[0].count);
    EXPECT_EQ(sizeof(long), watch.taken()[0].size);
}

TEST(AutoMemory, HandsOutNullWhenThereIsNoMemoryAndGoesOn) {
    AllocationWatch watch;
    watch.exhaustMemory();
    Tul::AutoMemory memory;

    EXPECT_EQ(nullptr, memory.malloc<char*>(1));
    EXPECT_EQ("built", memory.newObj<Mortal>()->text);
    memory.free();
    EXPECT_EQ(1u, watch.released().size());
}

TEST(AutoMemory, HandsOutDefaultConstructedObjects) {
    Tul::AutoMemory memory;
    EXPECT_EQ("built", memory.newObj<Mortal>()->text);
}

TEST(AutoMemory, ReleasesBlocksBeforeObjectsAndTheNewestFirst) {
    AllocationWatch watch;
    Tul::AutoMemory memory;
    const void* const firstObject = memory.newObj<Mortal>();
    const void* const firstBlock = memory.malloc<char>(1);
    const void* const secondObject = memory.newObj<Mortal>();
    const void* const secondBlock = memory.malloc<char>(100);
    const void* const thirdBlock = memory.malloc<char>(10);

    memory.free();
    EXPECT_THAT(watch.released(), ElementsAre(thirdBlock, secondBlock, firstBlock, secondObject, firstObject));
}

TEST(AutoMemory, ReleasesNothingTwice) {
    AllocationWatch watch;
    {
        Tul::AutoMemory memory;
        memory.malloc<char>(1);
        memory.newObj<Mortal>();
        memory.free();
        memory.free();
    }
    EXPECT_EQ(2u, watch.released().size());
}

TEST(AutoMemory, ReleasesInItsDestructorWhatIsLeft) {
    AllocationWatch watch;
    const void* block = nullptr;
    const void* object = nullptr;
    {
        Tul::AutoMemory memory;
        block = memory.malloc<char>(1);
        object = memory.newObj<Mortal>();
        EXPECT_THAT(watch.released(), IsEmpty());
    }
    EXPECT_THAT(watch.released(), ElementsAre(block, object));
}

TEST(AutoMemory, StaysUsableAfterFree) {
    AllocationWatch watch;
    Tul::AutoMemory memory;
    memory.newObj<Mortal>();
    memory.free();
    const void* const object = memory.newObj<Mortal>();
    const void* const block = memory.malloc<char>(1);

    memory.free();
    ASSERT_EQ(3u, watch.released().size());
    EXPECT_EQ(block, watch.released()[1]);
    EXPECT_EQ(object, watch.released()[2]);
}

TEST(AutoMemory, PassesOnTheExceptionOfAConstructorAndGoesOn) {
    AllocationWatch watch;
    Tul::AutoMemory memory;
    const void* const object = memory.newObj<Mortal>();

    EXPECT_THROW(memory.newObj<Unbuildable>(), std::runtime_error);
    memory.free();
    EXPECT_THAT(watch.released(), ElementsAre(object));
}

TEST(AutoMemory, IsReleasedThroughAPointerToItsBase) {
    struct Derived : Tul::AutoMemory {};
    AllocationWatch watch;
    std::unique_ptr<Tul::AutoMemory> memory = std::make_unique<Derived>();
    memory->newObj<Mortal>();

    memory.reset();
    EXPECT_EQ(1u, watch.released().size());
}

}  // namespace
