#ifndef TUL_NODE_JOURNAL_H
#define TUL_NODE_JOURNAL_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace TulNode {

/** Severities, and levels of what is wanted. */
enum Severity : std::int32_t { Error = 3, Warning = 4, Information = 6, TraceLevel = 14 };

/** One log or trace record. */
struct Record {
    std::chrono::system_clock::time_point time;
    std::int32_t severity;
    std::string function; /**< escaped */
    std::string text;     /**< escaped */

    bool isTrace() const { return severity == TraceLevel; }

    /** "warning start: text", escaped and on one line. */
    std::string line() const;

    /** line() with the time in UTC in front, with milliseconds. */
    std::string lineWithTime() const;
};

/**
 * Where the records of the component and of the node itself go: the last 1,000 are kept, and a listener gets each.
 *
 * Any thread. The listener is called under a lock, so that it gets the records in their order; it must not call the
 * journal.
 */
class Journal {
public:
    static constexpr std::size_t mostRecords = 1000;
    static constexpr std::int32_t defaultLevel = 6;

    /** The level that is wanted; cheap. What is logged above it is dropped. */
    std::int32_t level() const { return _level.load(std::memory_order_relaxed); }
    void setLevel(std::int32_t level) { _level.store(level, std::memory_order_relaxed); }

    void log(std::int32_t severity, std::string_view function, std::string_view text);

    /** Traces are wanted from level 8 on. */
    void trace(std::string_view function, std::string_view text);

    /** An error that is the component's fault: "component misbehaves: NAME TEXT". Never dropped, and counted. */
    void accuse(std::string_view text);
    unsigned int accusations() const { return _accusations.load(); }

    /** Names the component for accuse(): its file until it is registered, then its name. */
    void setComponent(const std::string& name);

    std::vector<Record> last(std::size_t most) const;
    void listen(std::function<void(const Record&)> listener);

private:
    void keep(std::int32_t severity, std::string_view function, const std::string& text);

    std::atomic<std::int32_t> _level{defaultLevel};
    std::atomic<unsigned int> _accusations{0};
    mutable std::mutex _mutex;
    std::string _component = "the component";
    std::deque<Record> _records;
    std::function<void(const Record&)> _listener;
};

}  // namespace TulNode

#endif
