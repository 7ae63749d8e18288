#ifndef TUL_TEST_ELSEWHERE_H
#define TUL_TEST_ELSEWHERE_H

#include <chrono>
#include <functional>
#include <future>

namespace TulTest {

/** Does something on a thread of its own, where a lock that this thread forgot to release would hold it up. */
class Elsewhere {
public:
    explicit Elsewhere(std::function<void()> operation)
        : _done(std::async(std::launch::async, std::move(operation))) {}

    /** False: it is still held up. The patience is generous; only what waits for ever uses it up. */
    bool isDone(std::chrono::milliseconds patience = std::chrono::seconds(30)) {
        return _done.wait_for(patience) == std::future_status::ready;
    }

private:
    std::future<void> _done;  // its destructor waits
};

}  // namespace TulTest

#endif
