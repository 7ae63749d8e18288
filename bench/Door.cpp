#include "Door.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
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

namespace TulBench {

namespace {

constexpr std::chrono::milliseconds longest(10'000);
constexpr std::chrono::microseconds pause(100);
const std::string greeting = "SSH-2.0-";

template <class Condition>
void awaitThat(const char* what, const Condition& holds) {
    const auto giveUp = std::chrono::steady_clock::now() + longest;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > giveUp) {
            throw std::runtime_error(std::string("waited in vain until ") + what);
        }
        std::this_thread::sleep_for(pause);
    }
}

/** A connection to a port of loopback, if there is somebody to take it. */
class Connection {
public:
    explicit Connection(int port) : _socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const timeval limit{longest.count() / 1000, 0};
        setsockopt(_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        _open = connect(_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~Connection() { close(_socket); }

    bool isOpen() const { return _open; }

    bool says(const std::string& wanted) {
        char block[4096];
        while (_text.find(wanted) == std::string::npos) {
            const ssize_t size = read(_socket, block, sizeof block);
            if (size <= 0) {
                return false;
            }
            _text.append(block, static_cast<std::size_t>(size));
        }
        return true;
    }

    void say(const std::string& text) {
        if (write(_socket, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("a connection takes no text");
        }
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

private:
    int _socket;
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
    // Its end is waited for first: each connection that it still took would cost it, and us, a process.
    const int process = pidfd_open(listener, 0);
    if (process >= 0) {
        pollfd watched{process, POLLIN, 0};
        poll(&watched, 1, static_cast<int>(longest.count()));
        close(process);
    }
    awaitThat("a port refuses", [this] { return !Connection(_port).isOpen(); });
}

void Door::remember() {
    _written = statusOf(_pidFile).st_mtim;
}

void Door::awaitGreeting() const {
    awaitThat("a listener has begun", [this] {
        const struct stat now = statusOf(_pidFile);
        return now.st_size > 0 && std::memcmp(&now.st_mtim, &_written, sizeof _written) != 0;
    });
    awaitThat("a port greets", [this] {
        Connection connection(_port);
        return connection.isOpen() && connection.says(greeting);
    });
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
