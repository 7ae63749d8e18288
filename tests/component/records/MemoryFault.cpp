#include "MemoryFault.h"

#include <cstddef>

namespace {

bool isExhausted = false;

}  // namespace

// The linker gives these names to calloc (-Wl,--wrap=calloc).
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return isExhausted ? nullptr : __real_calloc(count, size);
}

namespace TulTest {

MemoryFault::MemoryFault() {
    isExhausted = true;
}

MemoryFault::~MemoryFault() {
    isExhausted = false;
}

}  // namespace TulTest
