#include "Watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace Vorma {

Watch::Watch(const Directory& folder) : _events(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    const std::string path = "/proc/self/fd/" + std::to_string(folder.descriptor().number());
    if (_events.isOpen() && inotify_add_watch(_events.number(), path.c_str(), IN_CLOSE_WRITE) < 0) {
        _events.close();
    }
}

void Watch::await(const Tul::Descriptor& process, const Tul::Deadline& deadline) const {
    pollfd watched[] = {{_events.number(), POLLIN, 0}, {process.number(), POLLIN, 0}};
    if (poll(watched, std::size(watched), deadline.milliseconds()) < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "a listener cannot be watched");
    }
    char events[4096];
    while (_events.isOpen() && read(_events.number(), events, sizeof events) > 0) {
    }
}

}  // namespace Vorma
