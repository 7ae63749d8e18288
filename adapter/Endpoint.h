#ifndef VORMA_ENDPOINT_H
#define VORMA_ENDPOINT_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "Deadline.h"

namespace Vorma {

/** An address and a port of this machine. An address of zeros is all of its family. */
struct Endpoint {
    int family = 0; /**< AF_INET or AF_INET6 */
    std::array<unsigned char, 16> address{};
    int port = 0;

    bool operator==(const Endpoint&) const = default;

    bool isWildcard() const { return address == decltype(address){}; }

    /** Who listens on the one gets, or is in the way of, connections to the other. */
    bool overlaps(const Endpoint& other) const;

    /** As `sshd -T` prints it: 127.0.0.1:22 or [::1]:22. */
    std::string text() const;

    /** Reads the above; nothing when it is something else. */
    static std::optional<Endpoint> parse(std::string_view text);
    static std::optional<Endpoint> parse(const std::string& address, int port);

    /** Where a client on this machine reaches it. */
    Endpoint fromInside() const;
};

/** False: this machine has no addresses of that family at all, and sshd does without them. */
bool hasFamily(const Endpoint& endpoint);

/** Why sshd could not listen there; nothing when it can. Looks by binding a socket as sshd does, and lets go again.
 */
std::optional<int> errorOfBinding(const Endpoint& endpoint);

/** What a client meets that connects. */
enum class Answer {
    Greeting, /**< an SSH server; one that has too many clients says so, and counts */
    Refusal,  /**< nobody listens */
    Queue,    /**< so many connections wait to be accepted that there is no room for one more */
    Silence,  /**< a connection, but no greeting before the moment had come */
    Other     /**< a greeting, but not of an SSH server */
};

Answer ask(const Endpoint& endpoint, const Tul::Deadline& deadline);

}  // namespace Vorma

#endif
