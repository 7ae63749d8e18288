#ifndef TUL_WALK_CLOCK_H
#define TUL_WALK_CLOCK_H

#include <chrono>
#include <thread>

namespace TulTest {

using Clock = std::chrono::steady_clock;
using Moment = Clock::time_point;

/** Looks again and again, for what gives no event: a port, or a process of somebody else's. False when time is up. */
template <class IsTrueT>
bool await(Moment end, IsTrueT isTrue) {
    while (!isTrue()) {
        if (Clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    return true;
}

}  // namespace TulTest

#endif
