#include "AllocationFaults.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>

// Named by the linker, which sends the calls of this program's own objects to the wrapped ones.
extern "C" {
void* realMalloc(std::size_t size) __asm__("__real_malloc");
void* realCalloc(std::size_t count, std::size_t size) __asm__("__real_calloc");
void realFree(void* block) __asm__("__real_free");
void* wrappedMalloc(std::size_t size) __asm__("__wrap_malloc");
void* wrappedCalloc(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
void wrappedFree(void* block) __asm__("__wrap_free");

void* wrappedMalloc(std::size_t size) {
    return TulTest::AllocationFaults::allocate(size, TulTest::AllocationFaults::Source::C_LIBRARY,
                                               __builtin_return_address(0));
}

void* wrappedCalloc(std::size_t count, std::size_t size) {
    return TulTest::AllocationFaults::allocate(count * size, TulTest::AllocationFaults::Source::C_LIBRARY,
                                               __builtin_return_address(0), true);
}

void wrappedFree(void* block) {
    TulTest::AllocationFaults::release(block);
}
}

namespace TulTest {

namespace {

/** For the list of blocks itself, which must not count. */
template <class T>
struct RealAllocator {
    using value_type = T;

    RealAllocator() = default;
    template <class OtherT>
    explicit RealAllocator(const RealAllocator<OtherT>& /*other*/) {}

    T* allocate(std::size_t count) { return static_cast<T*>(realMalloc(count * sizeof(T))); }
    void deallocate(T* block, std::size_t /*count*/) { realFree(block); }
    bool operator==(const RealAllocator&) const { return true; }
};

/** Address to caller. */
using Blocks =
    std::unordered_map<void*, void*, std::hash<void*>, std::equal_to<>, RealAllocator<std::pair<void* const, void*>>>;

constinit thread_local AllocationFaults* armed = nullptr;
constinit thread_local bool paused = false;
constinit std::mutex guard;
constinit std::atomic<std::size_t> liveBlocks = 0;

/** Never destroyed: blocks are freed until the very end of the process. */
Blocks& blocks() {
    alignas(Blocks) static unsigned char storage[sizeof(Blocks)];
    static Blocks& blocks = *new (storage) Blocks;
    return blocks;
}

void follow(void* block, void* caller) {
    const std::lock_guard lock(guard);
    blocks().emplace(block, caller);
    liveBlocks = blocks().size();
}

void forget(void* block) {
    if (liveBlocks == 0 || block == nullptr) {
        return;
    }
    const std::lock_guard lock(guard);
    blocks().erase(block);
    liveBlocks = blocks().size();
}

/** A copy, so that the strings made while looking at it may be freed. */
Blocks snapshot() {
    const std::lock_guard lock(guard);
    return blocks();
}

/** Its mangled name; for functions that are not exported the name of the file. */
std::string functionAt(void* address) {
    Dl_info found{};
    const bool isKnown = dladdr(address, &found) != 0;
    if (!isKnown) {
        return "unknown";
    }
    return found.dli_sname == nullptr ? found.dli_fname : found.dli_sname;
}

}  // namespace

AllocationFaults::Armed::Armed(AllocationFaults& faults) {
    armed = &faults;
}

AllocationFaults::Armed::~Armed() {
    armed = nullptr;
}

AllocationFaults::Pause::Pause(bool now) : _before(paused) {
    paused = now;
}

AllocationFaults::Pause::~Pause() {
    paused = _before;
}

std::vector<std::string> AllocationFaults::live() {
    std::vector<std::string> functions;
    for (const auto& [block, caller] : snapshot()) {
        functions.push_back(functionAt(caller));
    }
    return functions;
}

void AllocationFaults::forgetLive() {
    const std::lock_guard lock(guard);
    blocks().clear();
    liveBlocks = 0;
}

std::size_t AllocationFaults::releaseAllocatedIn(const char* functionPart) {
    std::size_t count = 0;
    for (const auto& [block, caller] : snapshot()) {
        if (functionAt(caller).find(functionPart) != std::string::npos) {
            release(block);
            ++count;
        }
    }
    return count;
}

bool AllocationFaults::fails(Source source) {
    if (onAllocation) {
        const Pause pause;
        onAllocation(source);
    }
    const bool failing = isHit(++_counted, _failing, _persistence);
    _delivered += failing ? 1 : 0;
    return failing;
}

void* AllocationFaults::allocate(std::size_t size, Source source, void* caller, bool zeroed) {
    const bool counts = armed != nullptr && !paused;
    if (counts && armed->fails(source)) {
        return nullptr;
    }
    const std::size_t atLeastOne = size == 0 ? 1 : size;
    void* const block = zeroed ? realCalloc(1, atLeastOne) : realMalloc(atLeastOne);
    if (counts && block != nullptr) {
        follow(block, caller);
    }
    return block;
}

void AllocationFaults::release(void* block) {
    forget(block);  // first: once it is free another thread may be given the address
    realFree(block);
}

}  // namespace TulTest

using TulTest::AllocationFaults;

namespace {

void* allocateOrThrow(std::size_t size, void* caller) {
    void* const block = AllocationFaults::allocate(size, AllocationFaults::Source::NEW, caller);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocationFaults::allocate(size, AllocationFaults::Source::NEW, __builtin_return_address(0));
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocationFaults::allocate(size, AllocationFaults::Source::NEW, __builtin_return_address(0));
}

void operator delete(void* block) noexcept {
    AllocationFaults::release(block);
}

void operator delete[](void* block) noexcept {
    AllocationFaults::release(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    AllocationFaults::release(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept {
    AllocationFaults::release(block);
}

void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    AllocationFaults::release(block);
}

void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    AllocationFaults::release(block);
}
