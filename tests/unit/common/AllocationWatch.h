#ifndef TUL_TEST_ALLOCATION_WATCH_H
#define TUL_TEST_ALLOCATION_WATCH_H

#include <cstddef>
#include <vector>

namespace TulTest {

/**
 * Notes, while it lives, every block that this program's own code takes with calloc, and in which order those
 * blocks and the objects that tell of themselves are released. One at a time, one thread.
 */
class AllocationWatch {
public:
    struct Block {
        const void* address;
        std::size_t count;
        std::size_t size;
    };

    AllocationWatch();
    ~AllocationWatch();

    /** For destructors of instrumented objects; nothing happens while nobody watches. */
    static void noteReleased(const void* object);

    /** From now on calloc gives null. */
    void exhaustMemory() { _exhausted = true; }

    const std::vector<Block>& taken() const { return _taken; }
    const std::vector<const void*>& released() const { return _released; }

    // What calloc and free of the program come to.
    static void* takeBlock(std::size_t count, std::size_t size);
    static void releaseBlock(void* block);

    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

private:
    std::vector<Block> _taken;
    std::vector<const void*> _released;
    bool _exhausted = false;
};

}  // namespace TulTest

#endif
