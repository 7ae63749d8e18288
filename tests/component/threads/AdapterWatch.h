#ifndef TUL_TEST_ADAPTER_WATCH_H
#define TUL_TEST_ADAPTER_WATCH_H

#include <array>
#include <atomic>
#include <string>

#include "ScriptedRunner.h"

namespace TulTest {

/**
 * Answers every adapter run and looks at it. It counts with relaxed atomics and takes no lock, so that it orders
 * nothing that the component does not order itself. One may live at a time.
 */
class AdapterWatch {
public:
    AdapterWatch();

    /** Marks the calling thread as one that delivers notifications: its runs must exclude one another. */
    static void thisThreadDelivers();

    std::atomic<unsigned> runs{0};      /**< of all threads */
    std::atomic<unsigned> overlaps{0};  /**< runs of handlers that began while another one's was under way */
    std::atomic<unsigned> repeated{0};  /**< ports that a handler opened or closed once more than needed */
    std::atomic<unsigned> malformed{0}; /**< batches of handlers other than those that one handler makes */

    /** True while the adapter last opened the port of the subsystem. */
    bool isOpen(const std::string& subsystem) const;

private:
    std::string answer(const AdapterRun& run);
    void watch(const AdapterRun& run, bool byHandler);

    std::array<std::atomic<bool>, 2> _isOpen{};
    std::atomic<bool> _handlerRuns{false};
    ScriptedRunner _runner;
};

}  // namespace TulTest

#endif
