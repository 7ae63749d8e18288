#include "Door.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

// In the C library's 2.36 this header forgets to say so itself.
extern "C" {
#include <sys/pidfd.h>
}

#include <chrono>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "Deadline.h"
#include "SystemCall.h"

namespace TulBench {

namespace {

constexpr std::chrono::milliseconds longest(10'000);
const std::string greeting = "SSH-2.0-";

[[noreturn]] void waitedInVain(const char* what) {
    throw std::runtime_error(std::string("waited in vain until ") + what);
}

bool becomesReadable(int descriptor, const Tul::Deadline& giveUp) {
    pollfd watched{descriptor, POLLIN, 0};
    return Tul::succeeding("poll", [&] { return poll(&watched, 1, giveUp.milliseconds()); }) > 0;
}

/** Becomes readable when a file of the folder was written and closed. */
Tul::Descriptor changesOf(const std::filesystem::path& folder) {
    Tul::Descriptor changes(Tul::succeeding("inotify_init1", [] { return inotify_init1(IN_CLOEXEC | IN_NONBLOCK); }));
    Tul::succeeding(folder.c_str(),
                    [&] { return inotify_add_watch(changes.number(), folder.c_str(), IN_CLOSE_WRITE); });
    return changes;
}

void forget(const Tul::Descriptor& changes) {
    char block[4096];
    while (read(changes.number(), block, sizeof block) > 0) {
    }
}

/** A connection to a port of loopback, if there is somebody to take it. */
class Connection {
public:
    explicit Connection(int port)
        : _socket(Tul::succeeding("socket", [] { return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); })) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const timeval limit{longest.count() / 1000, 0};
        setsockopt(_socket.number(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        _open = connect(_socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }

    bool isOpen() const { return _open; }

    bool says(const std::string& wanted) {
        char block[4096];
        while (_text.find(wanted) == std::string::npos) {
            const ssize_t size = read(_socket.number(), block, sizeof block);
            if (size <= 0) {
                return false;
            }
            _text.append(block, static_cast<std::size_t>(size));
        }
        return true;
    }

    void say(const std::string& text) {
        if (write(_socket.number(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("a connection takes no text");
        }
    }

private:
    Tul::Descriptor _socket;
    bool _open;
    std::string _text;
};

struct stat statusOf(const std::filesystem::path& file) {
    struct stat status {};
    stat(file.c_str(), &status);  // all zeros when there is no such file
    return status;
}

}  // namespace

void Door::awaitRefusal(pid_t listener) const {
    const Tul::Deadline giveUp(longest);
    // Its end is waited for first: each connection that it still took would cost it, and us, a process.
    const Tul::Descriptor process(pidfd_open(listener, 0));  // none when it has ended already
    if (process.isOpen() && !becomesReadable(process.number(), giveUp)) {
        waitedInVain("a listener has ended");
    }
    // Once it has ended only a session that is just being made may hold the port, and that for a moment.
    while (Connection(_port).isOpen()) {
        if (giveUp.milliseconds() == 0) {
            waitedInVain("a port refuses");
        }
        std::this_thread::yield();
    }
}

void Door::remember() {
    if (!_changes.isOpen()) {
        _changes = changesOf(_pidFile.parent_path());
    }
    _written = statusOf(_pidFile).st_mtim;
}

bool Door::listenerHasBegun() const {
    const struct stat now = statusOf(_pidFile);
    return now.st_size > 0 && std::memcmp(&now.st_mtim, &_written, sizeof _written) != 0;
}

void Door::awaitGreeting() const {
    const Tul::Deadline giveUp(longest);
    forget(_changes);
    while (!listenerHasBegun()) {
        if (!becomesReadable(_changes.number(), giveUp)) {
            waitedInVain("a listener has begun");
        }
        forget(_changes);
    }
    // It listens before it leaves its number: there is always somebody to take the connection.
    Connection connection(_port);
    if (!connection.isOpen() || !connection.says(greeting)) {
        throw std::runtime_error("port " + port() + " does not greet");
    }
}

bool Door::offers(const std::string& list) const {
    Connection connection(_port);
    connection.say(greeting + "bench\r\n");
    return connection.says(list);
}

pid_t Door::listener() const {
    pid_t pid = 0;
    if (!(std::ifstream(_pidFile) >> pid)) {
        throw std::runtime_error(_pidFile.string() + " holds no number");
    }
    return pid;
}

}  // namespace TulBench
