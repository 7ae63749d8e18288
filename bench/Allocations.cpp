#include "Allocations.h"

#include <atomic>

namespace TulBench {

namespace {

constinit std::atomic<std::size_t> count = 0;

}  // namespace

std::size_t allocations() {
    return count;
}

}  // namespace TulBench

// The program's own definitions come before the C library's, for all libraries of the process; operator new calls
// malloc.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t number, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
    ++TulBench::count;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t number, std::size_t size) {
    ++TulBench::count;
    return __libc_calloc(number, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
    ++TulBench::count;
    return __libc_realloc(block, size);
}
}
