#include "Endpoint.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "Descriptor.h"
#include "SshSetting.h"
#include "State.h"
#include "SystemCall.h"

namespace Vorma {

namespace {

using Tul::Deadline;
using Tul::Descriptor;
using Tul::uninterrupted;

[[noreturn]] void fail(const char* what, int error) {
    throw std::system_error(error, std::generic_category(), what);
}

/** An endpoint as the system takes it. */
struct SocketAddress {
    explicit SocketAddress(const Endpoint& endpoint) {
        const auto port = htons(static_cast<in_port_t>(endpoint.port));
        if (endpoint.family == AF_INET) {
            sockaddr_in address{};
            address.sin_family = AF_INET;
            address.sin_port = port;
            std::memcpy(&address.sin_addr, endpoint.address.data(), sizeof address.sin_addr);
            std::memcpy(&storage, &address, size = sizeof address);
        } else {
            sockaddr_in6 address{};
            address.sin6_family = AF_INET6;
            address.sin6_port = port;
            std::memcpy(&address.sin6_addr, endpoint.address.data(), sizeof address.sin6_addr);
            std::memcpy(&storage, &address, size = sizeof address);
        }
    }

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }

    sockaddr_storage storage{};
    socklen_t size = 0;
};

Descriptor makeSocket(const Endpoint& endpoint, int flags) {
    return Descriptor(
        Tul::succeeding("no socket", [&] { return socket(endpoint.family, SOCK_STREAM | SOCK_CLOEXEC | flags, 0); }));
}

bool awaitEvent(const Descriptor& socket, short events, const Deadline& deadline) {
    pollfd watched{socket.number(), events, 0};
    int ready = 0;
    do {
        ready = poll(&watched, 1, deadline.milliseconds());
    } while (ready == -1 && errno == EINTR && !deadline.hasPassed());
    if (ready == -1 && errno != EINTR) {
        fail("a connection cannot be watched", errno);
    }
    return ready == 1;
}

/** The error of connecting; ETIMEDOUT when the moment has come before there was an answer. */
int connectTo(const Descriptor& socket, const Endpoint& endpoint, const Deadline& deadline) {
    const SocketAddress address(endpoint);
    if (connect(socket.number(), address.get(), address.size) == 0) {
        return 0;
    }
    if (errno != EINPROGRESS) {
        return errno;
    }
    if (!awaitEvent(socket, POLLOUT, deadline)) {
        return ETIMEDOUT;
    }
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(socket.number(), SOL_SOCKET, SO_ERROR, &error, &size);
    return error;
}

/** What sshd says of itself, or to a client for whom it has no time: at its limit, or to one who came too often. */
bool isOfSshServer(std::string_view said) {
    return said.starts_with("SSH-2.0-") || said.starts_with("Exceeded MaxStartups") ||
           said.starts_with("Not allowed at this time");
}

/** Who was accepted and let go without a word met a listener that just ended: he would be refused by now. */
Answer listen(const Descriptor& socket, const Deadline& deadline) {
    constexpr std::size_t longestLine = 255;
    std::string said;
    char block[256];
    while (said.find('\n') == std::string::npos && said.size() <= longestLine) {
        if (!awaitEvent(socket, POLLIN, deadline)) {
            return Answer::Silence;
        }
        const ssize_t size = uninterrupted([&] { return read(socket.number(), block, sizeof block); });
        if (size <= 0) {
            break;
        }
        said.append(block, static_cast<std::size_t>(size));
    }
    if (said.empty()) {
        return Answer::Refusal;
    }
    return isOfSshServer(said) ? Answer::Greeting : Answer::Other;
}

}  // namespace

bool Endpoint::overlaps(const Endpoint& other) const {
    return port == other.port && family == other.family &&
           (address == other.address || isWildcard() || other.isWildcard());
}

std::string Endpoint::text() const {
    char digits[INET6_ADDRSTRLEN];
    inet_ntop(family, address.data(), digits, sizeof digits);
    const std::string host = family == AF_INET ? digits : "[" + std::string(digits) + "]";
    return host + ":" + std::to_string(port);
}

std::optional<Endpoint> Endpoint::parse(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view host = text.substr(0, colon);
    if (host.starts_with('[') && host.ends_with(']')) {
        host = host.substr(1, host.size() - 2);
    }
    const auto endpoint = parse(std::string(host), static_cast<int>(number(text.substr(colon + 1), 1, mostPort)));
    return endpoint && endpoint->text() == text ? endpoint : std::nullopt;
}

std::optional<Endpoint> Endpoint::parse(const std::string& address, int port) {
    Endpoint endpoint{AF_INET, {}, port};
    if (inet_pton(AF_INET, address.c_str(), endpoint.address.data()) != 1) {
        endpoint.family = AF_INET6;
        if (inet_pton(AF_INET6, address.c_str(), endpoint.address.data()) != 1) {
            return std::nullopt;
        }
    }
    return port > 0 ? std::optional(endpoint) : std::nullopt;
}

Endpoint Endpoint::fromInside() const {
    return isWildcard() ? *parse(family == AF_INET ? "127.0.0.1" : "::1", port) : *this;
}

bool hasFamily(const Endpoint& endpoint) {
    const Descriptor probe(socket(endpoint.family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!probe.isOpen() && errno != EAFNOSUPPORT) {
        fail("no socket", errno);
    }
    if (!probe.isOpen() || endpoint.family == AF_INET) {
        return probe.isOpen();
    }
    // The kernel may know the family and yet have every address of it switched off.
    const SocketAddress anything(Endpoint{AF_INET6, {}, 0});
    return bind(probe.number(), anything.get(), anything.size) == 0 || errno != EADDRNOTAVAIL;
}

std::optional<int> errorOfBinding(const Endpoint& endpoint) {
    const Descriptor probe = makeSocket(endpoint, 0);
    const int on = 1;
    setsockopt(probe.number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (endpoint.family == AF_INET6) {
        setsockopt(probe.number(), IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    }
    const SocketAddress address(endpoint);
    return bind(probe.number(), address.get(), address.size) == 0 ? std::nullopt : std::optional(errno);
}

Answer ask(const Endpoint& endpoint, const Deadline& deadline) {
    const Endpoint inside = endpoint.fromInside();
    const Descriptor socket = makeSocket(inside, SOCK_NONBLOCK);
    const int error = connectTo(socket, inside, deadline);
    switch (error) {
        case 0:
            return listen(socket, deadline);
        case ECONNREFUSED:
        case ECONNRESET:
            return Answer::Refusal;
        case ETIMEDOUT:
            return Answer::Queue;
        default:
            fail(("no connection to " + inside.text()).c_str(), error);
    }
}

}  // namespace Vorma
