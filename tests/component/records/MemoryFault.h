#ifndef TUL_TEST_MEMORY_FAULT_H
#define TUL_TEST_MEMORY_FAULT_H

namespace TulTest {

/** While one lives, calloc gives null to all code that is linked into this program itself. */
class MemoryFault {
public:
    MemoryFault();
    ~MemoryFault();

    MemoryFault(const MemoryFault&) = delete;
    MemoryFault& operator=(const MemoryFault&) = delete;
};

}  // namespace TulTest

#endif
