#ifndef TUL_DEADLINE_H
#define TUL_DEADLINE_H

#include <algorithm>
#include <chrono>
#include <limits>

namespace Tul {

/** A moment by the monotonic clock: setting the time of day does not move it. */
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds fromNow) : _at(std::chrono::steady_clock::now() + fromNow) {}

    /** So long from now, but not beyond this one. */
    Deadline within(std::chrono::milliseconds fromNow) const {
        Deadline other(fromNow);
        other._at = std::min(_at, other._at);
        return other;
    }

    bool hasPassed() const { return milliseconds() == 0; }

    /** What is left, as poll() takes it: 0 only when the moment has come. */
    int milliseconds() const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(_at - std::chrono::steady_clock::now());
        return static_cast<int>(std::clamp<long long>(left.count(), 0, std::numeric_limits<int>::max()));
    }

private:
    std::chrono::steady_clock::time_point _at;
};

}  // namespace Tul

#endif
