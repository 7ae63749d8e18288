#include "Sockets.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <system_error>

#include "Text.h"

namespace Vorma {

namespace {

constexpr std::size_t largestTable = std::size_t{256} * 1024 * 1024;
constexpr unsigned stateListening = 0x0A;

/** The address as the kernel prints it: words of 32 bits, each as a number of this machine. */
bool parseAddress(const std::string& digits, Endpoint& endpoint) {
    constexpr std::size_t digitsOfWord = 8;
    const bool four = digits.size() == digitsOfWord;
    if (!four && digits.size() != digitsOfWord * 4) {
        return false;
    }
    endpoint.family = four ? AF_INET : AF_INET6;
    for (std::size_t i = 0; i < digits.size() / digitsOfWord; ++i) {
        unsigned word = 0;
        if (std::sscanf(digits.substr(i * digitsOfWord, digitsOfWord).c_str(), "%8x", &word) != 1) {
            return false;
        }
        std::memcpy(endpoint.address.data() + i * sizeof word, &word, sizeof word);
    }
    return true;
}

void addTable(const char* path, bool mayBeMissing, std::vector<ListeningSocket>& sockets) {
    const Tul::Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        if (mayBeMissing && errno == ENOENT) {
            return;  // a kernel without IPv6
        }
        throw std::system_error(errno, std::generic_category(), path);
    }
    std::istringstream rows(readAll(file, largestTable, path));
    for (std::string row; std::getline(rows, row);) {
        if (const auto socket = parseRow(row)) {
            sockets.push_back(*socket);
        }
    }
}

}  // namespace

std::optional<ListeningSocket> parseRow(const std::string& row) {
    char address[33] = "";
    unsigned port = 0;
    unsigned state = 0;
    unsigned user = 0;
    ListeningSocket socket;
    const int fields =
        std::sscanf(row.c_str(), " %*d: %32[0-9A-F]:%4x %*[0-9A-F]:%*4x %2x %*x:%*x %*x:%*x %*x %u %*d %llu", address,
                    &port, &state, &user, &socket.number);
    if (fields != 5 || state != stateListening || !parseAddress(address, socket.endpoint)) {
        return std::nullopt;
    }
    socket.endpoint.port = static_cast<int>(port);
    socket.user = user;
    return socket;
}

std::vector<ListeningSocket> listeningSockets() {
    std::vector<ListeningSocket> sockets;
    addTable("/proc/net/tcp", false, sockets);
    addTable("/proc/net/tcp6", true, sockets);
    return sockets;
}

}  // namespace Vorma
