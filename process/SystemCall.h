#ifndef TUL_SYSTEM_CALL_H
#define TUL_SYSTEM_CALL_H

#include <cerrno>
#include <system_error>

namespace Tul {

/**
 * Repeats a system call that a signal interrupted and returns its result. Only so often: a call that is always
 * interrupted ends as a failure with EINTR and not in an endless loop.
 */
template <class CallT>
auto uninterrupted(CallT call) {
    constexpr int attempts = 1000;
    auto result = call();
    for (int i = 1; i < attempts && result == -1 && errno == EINTR; ++i) {
        result = call();
    }
    return result;
}

/** As above; a failure becomes std::system_error with the text. */
template <class CallT>
auto succeeding(const char* failure, CallT call) {
    const auto result = uninterrupted(call);
    if (result == -1) {
        throw std::system_error(errno, std::generic_category(), failure);
    }
    return result;
}

}  // namespace Tul

#endif
