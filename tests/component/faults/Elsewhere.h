#ifndef TUL_TEST_ELSEWHERE_H
#define TUL_TEST_ELSEWHERE_H

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <iostream>

namespace TulTest {

/**
 * Does something on a thread of its own, where a lock that this thread forgot to release would hold it up.
 *
 * It has until its patience is over, which is generous: only what waits for ever uses it up. A thread that is held
 * up can be neither left behind nor waited for: the destructor ends the process then.
 */
class Elsewhere {
public:
    using Clock = std::chrono::steady_clock;

    explicit Elsewhere(std::function<void()> operation, std::chrono::milliseconds patience = std::chrono::seconds(30))
        : _end(Clock::now() + patience), _done(std::async(std::launch::async, std::move(operation))) {}

    ~Elsewhere() {
        if (!isDone()) {
            std::cerr << "still held up: a lock is held" << std::endl;
            std::abort();
        }
    }

    /** Waits until the patience is over. False: it is held up. */
    bool isDone() { return isDoneAt(_end); }

    /** Waits so long. False: it is still held up. */
    bool isDoneWithin(std::chrono::milliseconds time) { return isDoneAt(Clock::now() + time); }

    Elsewhere(const Elsewhere&) = delete;
    Elsewhere& operator=(const Elsewhere&) = delete;

private:
    bool isDoneAt(Clock::time_point end) { return _done.wait_until(end) == std::future_status::ready; }

    const Clock::time_point _end;
    std::future<void> _done;
};

}  // namespace TulTest

#endif
