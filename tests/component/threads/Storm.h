#ifndef TUL_TEST_STORM_H
#define TUL_TEST_STORM_H

#include <array>
#include <atomic>
#include <functional>

#include "LightFramework.h"

namespace TulTest {

/** What a storm is let loose on. */
struct StormTarget {
    std::function<void()> start; /**< subscribes; on the thread that called blow() */
    std::function<void()> stop;  /**< unsubscribes */
    std::size_t consumers;       /**< how many it has */
};

/**
 * Eight threads that deliver notifications to all consumers of a target, as fast as they can, while the calling
 * thread starts and stops the target again and again.
 *
 * The last two consumers are held back until start has returned. The first two are not, and start is held up until
 * something has come through.
 */
class Storm {
public:
    static constexpr unsigned threads = 8;

    Storm(LightFramework& framework, StormTarget target);
    ~Storm();

    /** Delivers exactly this many notifications, a multiple of the number of threads. */
    void blow(unsigned notifications);

    unsigned delivered() const { return _delivered.load(std::memory_order_relaxed); }
    unsigned deliveredTo(std::size_t consumer) const {
        return _deliveredTo.at(consumer).load(std::memory_order_relaxed);
    }

    /** Notifications that came through while start was under way. */
    unsigned deliveredDuringStart() const { return _duringStart.load(std::memory_order_relaxed); }

    /** Pairs of start and stop. */
    unsigned cycles = 0;

    Storm(const Storm&) = delete;
    Storm& operator=(const Storm&) = delete;

private:
    // At least, unless the storm is over.
    static constexpr unsigned deliveriesInACycle = 400;
    static constexpr unsigned deliveriesInAStart = 10;

    void deliverAll(unsigned share);
    void count(std::size_t consumer);
    void startAndStop();
    void waitForDeliveries(unsigned number) const;

    LightFramework& _framework;
    StormTarget _target;
    unsigned _notifications = 0;
    std::atomic<unsigned> _delivered{0};
    std::array<std::atomic<unsigned>, CONSUMERS> _deliveredTo{};
    std::atomic<bool> _starting{false};
    std::atomic<unsigned> _duringStart{0};
};

}  // namespace TulTest

#endif
