#include "AllocationWatch.h"

#include <algorithm>

// Named by the linker, which sends the program's calls of calloc and free here.
extern "C" {
void* realCalloc(std::size_t count, std::size_t size) __asm__("__real_calloc");
void realFree(void* block) __asm__("__real_free");
void* wrappedCalloc(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
void wrappedFree(void* block) __asm__("__wrap_free");

void* wrappedCalloc(std::size_t count, std::size_t size) {
    return TulTest::AllocationWatch::takeBlock(count, size);
}

void wrappedFree(void* block) {
    TulTest::AllocationWatch::releaseBlock(block);
}
}

namespace TulTest {

namespace {

AllocationWatch* current = nullptr;

}  // namespace

AllocationWatch::AllocationWatch() {
    current = this;
}

AllocationWatch::~AllocationWatch() {
    current = nullptr;
}

void AllocationWatch::noteReleased(const void* object) {
    if (current != nullptr) {
        current->_released.push_back(object);
    }
}

void* AllocationWatch::takeBlock(std::size_t count, std::size_t size) {
    if (current == nullptr) {
        return realCalloc(count, size);
    }
    void* const block = current->_exhausted ? nullptr : realCalloc(count, size);
    current->_taken.push_back({block, count, size});
    return block;
}

void AllocationWatch::releaseBlock(void* block) {
    const bool known = block != nullptr && current != nullptr &&
                       std::any_of(current->_taken.begin(), current->_taken.end(),
                                   [block](const Block& taken) { return taken.address == block; });
    if (known) {
        noteReleased(block);
    }
    realFree(block);
}

}  // namespace TulTest
