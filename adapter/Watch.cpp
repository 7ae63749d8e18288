#include "Watch.h"

#include <fcntl.h>
#include <poll.h>

#include <cerrno>
#include <ctime>
#include <system_error>

namespace Vorma {

namespace {

/** The signal ends a wait, and does nothing else. */
void wakeUp(int) {}

}  // namespace

Watch::Watch(const Directory& folder)
    : _folder(openat(folder.descriptor().number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    struct sigaction action {};
    action.sa_handler = wakeUp;
    sigaction(SIGIO, &action, nullptr);
    sigset_t change;
    sigemptyset(&change);
    sigaddset(&change, SIGIO);
    sigprocmask(SIG_BLOCK, &change, &_before);
    fcntl(_folder.number(), F_NOTIFY, DN_CREATE | DN_MODIFY | DN_MULTISHOT);
}

Watch::~Watch() {
    _folder.close();
    signal(SIGIO, SIG_IGN);  // what is still to come
    sigprocmask(SIG_SETMASK, &_before, nullptr);
}

void Watch::await(const Tul::Descriptor& process, const Tul::Deadline& deadline) const {
    constexpr int perSecond = 1000;
    constexpr long nanoseconds = 1'000'000;
    const int left = deadline.milliseconds();
    const timespec time{left / perSecond, left % perSecond * nanoseconds};
    pollfd watched{process.number(), POLLIN, 0};
    // A change since the latest look has left its signal waiting: then this ends at once.
    if (ppoll(&watched, 1, &time, &_before) < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "a listener cannot be watched");
    }
}

}  // namespace Vorma
