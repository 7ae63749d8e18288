// Lets a client see only packets with a certain DSCP.
//   dscp-gate HOST PORT TOS PIDFILE   a ProxyCommand for ssh. It passes bytes both ways; after SIGUSR1 the kernel
//                                     drops every packet that arrives on the connection with another TOS byte (its
//                                     DSCP bits) than TOS. A session that still answers then is proof of what the
//                                     server's packets carry.
//   dscp-gate --allowed               exits 0 if this kernel lets this user filter a socket of his own.

#include <arpa/inet.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

volatile sig_atomic_t closed = 0;

void onSignal(int /*signal*/) {
    closed = 1;
}

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "dscp-gate: %s: %s\n", what, std::strerror(errno));
    std::exit(1);
}

int connectTo(const char* host, const char* port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (inet_pton(AF_INET, host, &address.sin_addr) != 1 ||
        connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        fail("cannot connect");
    }
    return connection;
}

bool admitOnly(int connection, unsigned int tos) {
    const __u32 tosOfPacket = static_cast<__u32>(SKF_NET_OFF) + 1;
    const __u32 dscpBits = 0xfc;
    const __u32 whole = 0xffffffff;
    sock_filter program[] = {BPF_STMT(BPF_LD | BPF_B | BPF_ABS, tosOfPacket),
                             BPF_STMT(BPF_ALU | BPF_AND | BPF_K, dscpBits),
                             BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, tos, 0, 1), BPF_STMT(BPF_RET | BPF_K, whole),
                             BPF_STMT(BPF_RET | BPF_K, 0)};
    const sock_fprog filter{sizeof program / sizeof *program, program};
    if (setsockopt(connection, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) != 0) {
        return false;
    }
    // Behind the filter the server's acknowledgements are lost, and with them an orderly end: end by a reset, so
    // that the server's session does not wait for a client that is gone.
    const linger reset{1, 0};
    return setsockopt(connection, SOL_SOCKET, SO_LINGER, &reset, sizeof reset) == 0;
}

/** False at the end of the input. */
bool pass(int from, int to) {
    char buffer[16384];
    const ssize_t got = read(from, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) {
        return true;
    }
    for (ssize_t done = 0; done < got;) {
        const ssize_t written = write(to, buffer + done, static_cast<std::size_t>(got - done));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        done += written < 0 ? 0 : written;
    }
    return got > 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--allowed") == 0) {
        return admitOnly(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), 0) ? 0 : 1;
    }
    if (argc != 5) {
        std::fprintf(stderr, "usage: dscp-gate HOST PORT TOS PIDFILE | dscp-gate --allowed\n");
        return 2;
    }
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigaction(SIGUSR1, &action, nullptr);
    std::ofstream(argv[4]) << getpid() << "\n";
    const int connection = connectTo(argv[1], argv[2]);
    pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {connection, POLLIN, 0}};
    for (;;) {
        const timespec tick{0, 50'000'000};  // a signal between the test and the poll must not be missed for long
        const int ready = ppoll(sources, 2, &tick, nullptr);
        if (closed == 1) {
            closed = 2;
            if (!admitOnly(connection, static_cast<unsigned int>(std::strtoul(argv[3], nullptr, 0)))) {
                fail("cannot filter");
            }
            std::ofstream(argv[4]) << "closed\n";
        }
        if (ready <= 0) {
            continue;
        }
        if ((sources[0].revents != 0 && !pass(STDIN_FILENO, connection)) ||
            (sources[1].revents != 0 && !pass(connection, STDOUT_FILENO))) {
            return 0;
        }
    }
}
