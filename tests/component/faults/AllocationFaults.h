#ifndef TUL_TEST_ALLOCATION_FAULTS_H
#define TUL_TEST_ALLOCATION_FAULTS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Persistence.h"

namespace TulTest {

/**
 * Counts the allocations of one thread and lets one of them fail, or all from one on.
 *
 * Counted is every `new` in the process, the platform's and the libraries' included, and the calloc and malloc of
 * this program's own objects, the component's among them. What was allocated meanwhile is followed until it is
 * freed, so that what is left can be told.
 */
class AllocationFaults {
public:
    enum class Source { NEW, C_LIBRARY };

    /** The number of the first allocation that fails, from 1; 0: none does. */
    AllocationFaults(unsigned int failing, Persistence persistence) : _failing(failing), _persistence(persistence) {}

    /** Counting and failing happens on this thread, while one of these lives. */
    class Armed {
    public:
        explicit Armed(AllocationFaults& faults);
        ~Armed();
        Armed(const Armed&) = delete;
        Armed& operator=(const Armed&) = delete;
    };

    /** For the code of the framework and of the test: nothing is counted and nothing fails. */
    class Pause {
    public:
        explicit Pause(bool paused = true);
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        const bool _before;
    };

    unsigned int counted() const { return _counted; }
    unsigned int delivered() const { return _delivered; } /**< how many failed */

    /** Called, paused, before each allocation that is counted. */
    std::function<void(Source)> onAllocation;

    /** Of all that was ever counted and has not been freed, on whatever thread: which functions allocated it. */
    static std::vector<std::string> live();

    /** What lives now stays for good and is followed no longer: caches that the libraries have filled. */
    static void forgetLive();

    /** Frees what is live of the functions whose mangled names contain that text: what a library is known to leak. */
    static std::size_t releaseAllocatedIn(const char* functionPart);

    /** What operator new and malloc come to, called from that address; null for a failure. */
    static void* allocate(std::size_t size, Source source, void* caller, bool zeroed = false);
    static void release(void* block);

    AllocationFaults(const AllocationFaults&) = delete;
    AllocationFaults& operator=(const AllocationFaults&) = delete;

private:
    bool fails(Source source);

    const unsigned int _failing;
    const Persistence _persistence;
    unsigned int _counted = 0;
    unsigned int _delivered = 0;
};

}  // namespace TulTest

#endif
