#include "SystemCallFaults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>

namespace TulTest {

namespace {

thread_local SystemCallFault* current = nullptr;
thread_local int sent = 0;
std::atomic<int> timeOfDayStep = 0;

/** The C library's function that the one here stands in front of. */
template <class FunctionT>
FunctionT* next(const char* name) {
    return reinterpret_cast<FunctionT*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

SystemCallFault::SystemCallFault(const std::string& call, int error, int times)
    : _call(call), _error(error), _left(times) {
    current = this;
}

SystemCallFault::~SystemCallFault() {
    current = nullptr;
}

bool SystemCallFault::strikes(const char* call) {
    if (current == nullptr || current->_call != call) {
        return false;
    }
    ++current->_calls;
    if (current->_left <= 0) {
        return false;
    }
    --current->_left;
    errno = current->_error;
    return true;
}

int signalsSent() {
    return sent;
}

void stepTimeOfDay(int seconds) {
    timeOfDayStep = seconds;
}

}  // namespace TulTest

using TulTest::next;
using TulTest::SystemCallFault;

// The functions below are called by libtul_common because a program comes before the libraries it uses.
#define TUL_EXPORTED extern "C" __attribute__((visibility("default")))

TUL_EXPORTED int pipe2(int* ends, int flags) {
    static auto* const real = next<int(int*, int)>("pipe2");
    return SystemCallFault::strikes("pipe2") ? -1 : real(ends, flags);
}

TUL_EXPORTED int open(const char* path, int flags, ...) {
    static auto* const real = next<int(const char*, int, ...)>("open");
    va_list args;
    va_start(args, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    return SystemCallFault::strikes("open") ? -1 : real(path, flags, mode);
}

TUL_EXPORTED int fcntl(int descriptor, int command, ...) {
    static auto* const real = next<int(int, int, ...)>("fcntl");
    va_list args;
    va_start(args, command);
    void* const argument = va_arg(args, void*);
    va_end(args);
    return SystemCallFault::strikes("fcntl") ? -1 : real(descriptor, command, argument);
}

TUL_EXPORTED int poll(pollfd* watched, nfds_t count, int milliseconds) {
    static auto* const real = next<int(pollfd*, nfds_t, int)>("poll");
    return SystemCallFault::strikes("poll") ? -1 : real(watched, count, milliseconds);
}

TUL_EXPORTED ssize_t read(int descriptor, void* data, size_t size) {
    static auto* const real = next<ssize_t(int, void*, size_t)>("read");
    return SystemCallFault::strikes("read") ? -1 : real(descriptor, data, size);
}

TUL_EXPORTED int waitid(idtype_t type, id_t which, siginfo_t* info, int options) {
    static auto* const real = next<int(idtype_t, id_t, siginfo_t*, int)>("waitid");
    return SystemCallFault::strikes("waitid") ? -1 : real(type, which, info, options);
}

TUL_EXPORTED int pidfd_open(pid_t pid, unsigned int flags) noexcept {
    static auto* const real = next<int(pid_t, unsigned int)>("pidfd_open");
    return SystemCallFault::strikes("pidfd_open") ? -1 : real(pid, flags);
}

TUL_EXPORTED int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                             const posix_spawnattr_t* attributes, char* const* argv, char* const* environment) {
    static auto* const real = next<int(pid_t*, const char*, const posix_spawn_file_actions_t*,
                                       const posix_spawnattr_t*, char* const*, char* const*)>("posix_spawn");
    return SystemCallFault::strikes("posix_spawn") ? errno : real(pid, path, actions, attributes, argv, environment);
}

TUL_EXPORTED int kill(pid_t pid, int signal) noexcept {
    static auto* const real = next<int(pid_t, int)>("kill");
    ++TulTest::sent;
    return real(pid, signal);
}

TUL_EXPORTED int clock_gettime(clockid_t clock, timespec* now) noexcept {
    static auto* const real = next<int(clockid_t, timespec*)>("clock_gettime");
    const int result = real(clock, now);
    if (clock == CLOCK_REALTIME) {
        now->tv_sec += TulTest::timeOfDayStep;
    }
    return result;
}
