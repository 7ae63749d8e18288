#ifndef TUL_TEST_SYSTEM_CALL_FAULTS_H
#define TUL_TEST_SYSTEM_CALL_FAULTS_H

#include <limits>
#include <string>

namespace TulTest {

/**
 * Makes a system call of this thread fail, while the object lives. The program defines the functions that
 * libtul_common calls in front of those of the C library; without such an object they only hand on.
 */
class SystemCallFault {
public:
    static constexpr int forEver = std::numeric_limits<int>::max();

    /** The next `times` calls of that name set errno to `error` and fail. One object at a time in a thread. */
    SystemCallFault(const std::string& call, int error, int times);
    ~SystemCallFault();

    /** How often the call was reached. */
    int calls() const { return _calls; }

    SystemCallFault(const SystemCallFault&) = delete;
    SystemCallFault& operator=(const SystemCallFault&) = delete;

    /** For the functions themselves: true, and errno set, when this call is to fail. */
    static bool strikes(const char* call);

private:
    const std::string _call;
    const int _error;
    int _left;
    int _calls = 0;
};

/** How many signals this thread has sent with kill(). */
int signalsSent();

/** Moves this program's clock of the time of day, for std::chrono::system_clock. */
void stepTimeOfDay(int seconds);

}  // namespace TulTest

#endif
