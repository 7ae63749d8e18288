#include "Port.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace TulTest {

namespace {

int newSocket() {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor == -1) {
        throw std::system_error(errno, std::generic_category(), "no socket");
    }
    return descriptor;
}

template <class CallT>
int with(int port, CallT call) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return call(reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(sizeof(address)));
}

/** What the other side of a connection says, so far as it is asked for. */
class Conversation {
public:
    Conversation(int socket, Moment end) : _socket(socket), _end(end) {}

    /** Until the text so far has the size; false when the other side ends or is late. */
    bool has(std::size_t size) {
        while (_text.size() < size && readMore()) {
        }
        return _text.size() >= size;
    }

    bool hasLine() {
        while (_text.find('\n') == std::string::npos && readMore()) {
        }
        return _text.find('\n') != std::string::npos;
    }

    std::size_t number(std::size_t at) {
        std::size_t value = 0;
        for (std::size_t i = at; has(at + 4) && i < at + 4; ++i) {
            value = value << 8 | static_cast<unsigned char>(_text[i]);
        }
        return value;
    }

    const std::string& text() const { return _text; }

private:
    bool readMore() {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(_end - Clock::now()).count();
        pollfd socket{_socket, POLLIN, 0};
        char data[4096];
        if (poll(&socket, 1, static_cast<int>(std::clamp<long long>(left, 0, 60000))) != 1) {
            return false;
        }
        const ssize_t size = recv(_socket, data, sizeof(data), 0);
        _text.append(data, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return size > 0;
    }

    const int _socket;
    const Moment _end;
    std::string _text;
};

/** The first lists of the packet of the key exchange: exchanges, host keys, ciphers there and back, MACs. */
std::string offerIn(Conversation& conversation) {
    constexpr std::size_t headSize = 4 + 1 + 1 + 16;
    constexpr int lists = 5;
    std::size_t at = conversation.text().find('\n') + 1 + headSize;
    std::string offer;
    for (int i = 0; i < lists; ++i) {
        const std::size_t size = conversation.number(at);
        if (!conversation.has(at + 4 + size)) {
            return "";
        }
        offer += conversation.text().substr(at + 4, size) + " ";
        at += 4 + size;
    }
    return offer;
}

Answer converse(int socket, Moment end) {
    constexpr char greeting[] = "SSH-2.0-walk\r\n";
    Conversation conversation(socket, end);
    send(socket, greeting, sizeof(greeting) - 1, MSG_NOSIGNAL);
    if (!conversation.hasLine() || !conversation.text().starts_with("SSH-2.0-")) {
        return {Answer::Silent, ""};
    }
    return {Answer::Greeting, offerIn(conversation)};
}

bool isFree(int port) {
    try {
        Occupation trial(port);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace

Answer ask(int port, Moment end) {
    const int descriptor = newSocket();
    const int result = with(port, [&](auto* address, auto size) { return connect(descriptor, address, size); });
    Answer answer = result == 0             ? converse(descriptor, end)
                    : errno == ECONNREFUSED ? Answer{}
                                            : Answer{Answer::Silent, ""};
    close(descriptor);
    return answer;
}

Occupation::Occupation(int port) : _socket(newSocket()) {
    const int on = 1;
    setsockopt(_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));  // sessions that have ended do not matter
    if (with(port, [this](auto* address, auto size) { return bind(_socket, address, size); }) == -1 ||
        listen(_socket, 8) == -1) {
        const int error = errno;
        close(_socket);
        throw std::system_error(error, std::generic_category(), "port " + std::to_string(port));
    }
}

Occupation::~Occupation() {
    close(_socket);
}

int PortSupply::take() {
    for (int port = _first; port < _first + _count; ++port) {
        if (!_taken.contains(port) && isFree(port)) {
            _taken.insert(port);
            return port;
        }
    }
    throw std::runtime_error("no free port is left for this job");
}

}  // namespace TulTest
