#ifndef TUL_NODE_RUN_LOG_H
#define TUL_NODE_RUN_LOG_H

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "TulCommon_1.h"

namespace TulNode {

/** A finished run of the adapter. */
struct AdapterRun {
    unsigned int number; /**< from 1 */
    std::string command; /**< escaped; a word that is empty or has a blank stands in quotes */
    std::string failure; /**< escaped; empty: it succeeded */
    std::uint32_t milliseconds;

    /** "vorma clissh lock -> ok (12 ms)" or "... -> failed: why (12 ms)". */
    std::string line() const;
};

/**
 * The adapter runs that the component made: the last 1,000 are kept, and a listener gets each.
 *
 * Any thread. The listener is called under a lock and must not call the log.
 */
class RunLog {
public:
    static constexpr std::size_t mostRuns = 1000;

    void add(const TulCommonScriptRun_1& run);
    std::vector<AdapterRun> runs() const;
    void listen(std::function<void(const AdapterRun&)> listener);

private:
    mutable std::mutex _mutex;
    std::deque<AdapterRun> _runs;
    unsigned int _count = 0;
    std::function<void(const AdapterRun&)> _listener;
};

}  // namespace TulNode

#endif
