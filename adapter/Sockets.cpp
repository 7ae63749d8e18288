#include "Sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "Descriptor.h"
#include "SystemCall.h"
#include "Text.h"

namespace Vorma {

namespace {

constexpr std::size_t largestTable = std::size_t{256} * 1024 * 1024;
constexpr unsigned stateListening = 0x0A;
constexpr const char* askingTheKernel = "listening sockets cannot be told";

using Tul::Descriptor;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

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
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        if (mayBeMissing && errno == ENOENT) {
            return;  // a kernel without IPv6
        }
        fail(path);
    }
    const std::string table = readAll(file, largestTable, path);
    for (const std::string_view row : partsOf(table, '\n')) {
        if (const auto socket = parseRow(std::string(row))) {
            sockets.push_back(*socket);
        }
    }
}

/** A question to the kernel, in its first form: only that is answered for all families of addresses at once. */
struct Question {
    nlmsghdr header;
    inet_diag_req asked;
};

ListeningSocket socketOf(const inet_diag_msg& told) {
    ListeningSocket socket;
    socket.endpoint.family = told.idiag_family;
    socket.endpoint.port = ntohs(told.id.idiag_sport);
    const std::size_t size = told.idiag_family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
    std::memcpy(socket.endpoint.address.data(), told.id.idiag_src, size);
    socket.user = told.idiag_uid;
    socket.number = told.idiag_inode;
    return socket;
}

/** What one block of the answer tells; false: it goes on. */
bool takeAnswers(const char* block, std::size_t size, std::vector<ListeningSocket>& sockets) {
    for (std::size_t at = 0; at + sizeof(nlmsghdr) <= size;) {
        nlmsghdr header;
        std::memcpy(&header, block + at, sizeof header);
        const char* const content = block + at + NLMSG_HDRLEN;
        if (header.nlmsg_type == NLMSG_DONE) {
            return true;
        }
        if (header.nlmsg_type == NLMSG_ERROR) {
            nlmsgerr error;
            std::memcpy(&error, content, sizeof error);
            errno = -error.error;
            fail(askingTheKernel);
        }
        inet_diag_msg told;
        std::memcpy(&told, content, sizeof told);
        sockets.push_back(socketOf(told));
        at += NLMSG_ALIGN(header.nlmsg_len);
    }
    return false;
}

void askKernel(const Descriptor& kernel, std::vector<ListeningSocket>& sockets) {
    constexpr unsigned listening = 1U << stateListening;
    Question question{};
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = TCPDIAG_GETSOCK;
    question.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    question.asked.idiag_states = listening;
    Tul::succeeding(askingTheKernel, [&] { return send(kernel.number(), &question, sizeof question, 0); });
    for (bool done = false; !done;) {
        char block[16 * 1024];
        const ssize_t size =
            Tul::succeeding(askingTheKernel, [&] { return recv(kernel.number(), block, sizeof block, 0); });
        done = takeAnswers(block, static_cast<std::size_t>(size), sockets);
    }
}

/** False: this kernel, or an emulator in its place, cannot be asked. */
bool askKernel(std::vector<ListeningSocket>& sockets) {
    const Descriptor kernel(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!kernel.isOpen()) {
        return errno == EPROTONOSUPPORT || errno == EAFNOSUPPORT ? false : (fail(askingTheKernel), false);
    }
    try {
        askKernel(kernel, sockets);
    } catch (const std::system_error& error) {
        if (error.code().value() != ENOENT) {
            throw;
        }
        return false;  // its part for TCP is a module that is not there
    }
    return true;
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

std::vector<ListeningSocket> listeningSocketsByTable() {
    std::vector<ListeningSocket> sockets;
    addTable("/proc/net/tcp", false, sockets);
    addTable("/proc/net/tcp6", true, sockets);
    return sockets;
}

std::vector<ListeningSocket> listeningSockets() {
    std::vector<ListeningSocket> sockets;
    return askKernel(sockets) ? sockets : listeningSocketsByTable();
}

}  // namespace Vorma
