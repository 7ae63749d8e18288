#include "Listener.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

// In the C library's 2.36 this header forgets to say so itself.
extern "C" {
#include <sys/pidfd.h>
}

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "Limits.h"
#include "SshSetting.h"
#include "SystemCall.h"
#include "Text.h"

namespace Vorma {

namespace {

using Tul::Deadline;
using Tul::Descriptor;
using Tul::succeeding;

constexpr int decimal = 10;
constexpr int hexadecimal = 16;
constexpr std::size_t mostOfFile = std::size_t{4} * 1024 * 1024;

bool isGone(int error) {
    return error == ENOENT || error == ESRCH;
}

/** A file below /proc/PID; nothing when the process has ended. */
std::optional<std::string> readOf(pid_t pid, const char* name) {
    const std::string path = "/proc/" + std::to_string(pid) + "/" + name;
    try {
        const Descriptor file(succeeding(path.c_str(), [&path] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
        return readAll(file, mostOfFile, path);
    } catch (const std::system_error& error) {
        if (isGone(error.code().value())) {
            return std::nullopt;
        }
        throw;
    }
}

/** What a process without words is. */
enum class Wordless {
    WithoutProgram, /**< it has ended, is the kernel's, or is somebody else's, whom we are not told of */
    BeingReplaced,  /**< it is just getting a new program */
    Settled,        /**< its words have come meanwhile, or it has none */
};

Wordless wordlessProcess(pid_t pid) {
    constexpr std::size_t endOfWords = 48;  // counted from the state; the kernel sets it last
    char program[1];
    if (readlink(("/proc/" + std::to_string(pid) + "/exe").c_str(), program, sizeof program) < 0) {
        return Wordless::WithoutProgram;
    }
    const std::string status = readOf(pid, "stat").value_or("");
    const auto fields = partsOf(std::string_view(status).substr(status.rfind(')') + 1), ' ');
    return fields.size() > endOfWords && fields[endOfWords] == "0" ? Wordless::BeingReplaced : Wordless::Settled;
}

/** Nothing when the process has ended. To take a moment without words for an answer would be to overlook a listener.
 */
std::optional<std::string> commandLineOf(pid_t pid, const Deadline& deadline) {
    bool mayStillCome = true;
    for (;;) {
        std::optional<std::string> words = readOf(pid, "cmdline");
        if (!words || !words->empty() || !mayStillCome || deadline.hasPassed()) {
            return words;
        }
        const Wordless process = wordlessProcess(pid);
        if (process == Wordless::WithoutProgram) {
            return words;
        }
        // They may have come just before this look: then they are read once more.
        mayStillCome = process == Wordless::BeingReplaced;
        if (mayStillCome) {
            sched_yield();  // not for each of the kernel's threads: on a busy machine it costs milliseconds
        }
    }
}

/** The names in a folder that are numbers; nothing when there is no such folder. */
template <class TakeT>
bool eachNumber(const std::string& path, TakeT take) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
    if (!folder && isGone(errno)) {
        return false;
    }
    if (!folder) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    errno = 0;
    while (const dirent* entry = readdir(folder.get())) {
        const long long value = number(entry->d_name, 0, 1LL << 31U);
        if (value >= 0) {
            take(value);
        }
        errno = 0;
    }
    if (errno != 0 && !isGone(errno)) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return true;
}

/** The number behind "NAME:\t" in a status file. */
unsigned long long fieldOf(const std::string& status, const char* name, int base) {
    const std::size_t at = status.find("\n" + std::string(name) + ":\t");
    return at == std::string::npos ? 0 : std::strtoull(status.c_str() + at + std::strlen(name) + 3, nullptr, base);
}

/** The number of a socket that a descriptor leads to; 0 when it leads elsewhere or is gone. */
unsigned long long socketBehind(const std::string& path) {
    char target[64] = "";
    if (readlink(path.c_str(), target, sizeof target - 1) < 0) {
        return isGone(errno) ? 0 : throw std::system_error(errno, std::generic_category(), path);
    }
    unsigned long long number = 0;
    return std::sscanf(target, "socket:[%llu]", &number) == 1 ? number : 0;
}

/**
 * Of parent and child that both look like the listener one is: a session's child that has just been made still looks
 * like its parent, and a script in place of sshd may wait for its child.
 */
void dropTwins(std::vector<Listener>& found) {
    const auto isTwinOf = [](const Listener& one, const Listener& other) {
        return (one.parent() == other.pid() && !other.sockets().empty()) ||
               (other.parent() == one.pid() && one.sockets().empty() && !other.sockets().empty());
    };
    std::vector<pid_t> twins;
    for (const Listener& one : found) {
        if (std::any_of(found.begin(), found.end(), [&](const Listener& other) { return isTwinOf(one, other); })) {
            twins.push_back(one.pid());
        }
    }
    std::erase_if(found, [&twins](const Listener& one) {
        return std::find(twins.begin(), twins.end(), one.pid()) != twins.end();
    });
}

}  // namespace

bool namesFile(std::string_view commandLine, const std::string& file) {
    std::string words(commandLine);
    std::replace(words.begin(), words.end(), '\0', ' ');
    words += ' ';
    const auto has = [&words](const std::string& word) { return words.find(" " + word + " ") != std::string::npos; };
    // A new session of sshd shows for a moment the words of the listener, and -R; who only asks sshd says -T, -t or
    // -G.
    const bool isSshd =
        words.starts_with("sshd: ") || words.substr(0, words.find(' ')).ends_with("sshd") || has("-D -f " + file);
    return isSshd && has("-f " + file) && !has("-R") && !has("-T") && !has("-t") && !has("-G");
}

std::optional<Listener> Listener::lookAt(pid_t pid, const std::string& file) {
    return lookAt(pid, file, Deadline(Limits::withoutWords));
}

std::optional<Listener> Listener::lookAt(pid_t pid, const std::string& file, const Deadline& deadline) {
    const std::optional<std::string> before = commandLineOf(pid, deadline);
    if (!before || !namesFile(*before, file)) {
        return std::nullopt;
    }
    const int pidfd = pidfd_open(pid, 0);
    if (pidfd < 0 && errno == ESRCH) {
        return std::nullopt;
    }
    Listener listener(pid, Descriptor(succeeding("a process cannot be watched", [pidfd] { return pidfd; })));
    // Only now is it certain that what is read is of the process that the descriptor holds.
    const std::optional<std::string> words = commandLineOf(pid, deadline);
    if (!words || !namesFile(*words, file) || !listener.readStatus() || listener._user != geteuid()) {
        return std::nullopt;
    }
    listener.readSockets();
    return listener.hasEnded() ? std::nullopt : std::optional(std::move(listener));
}

std::optional<Listener> Listener::ofChild(pid_t pid) {
    const int pidfd = pidfd_open(pid, 0);
    if (pidfd < 0 && errno == ESRCH) {
        return std::nullopt;
    }
    Listener listener(pid, Descriptor(succeeding("a process cannot be watched", [pidfd] { return pidfd; })));
    return listener.readStatus() ? std::optional(std::move(listener)) : std::nullopt;
}

std::vector<Listener> Listener::find(const std::string& file) {
    const Deadline deadline(Limits::withoutWords);  // for all of them together
    std::vector<Listener> found;
    const bool mounted = eachNumber("/proc", [&](long long pid) {
        if (auto listener = lookAt(static_cast<pid_t>(pid), file, deadline)) {
            found.push_back(std::move(*listener));
        }
    });
    if (!mounted) {
        throw std::system_error(ENOENT, std::generic_category(), "/proc");
    }
    dropTwins(found);
    return found;
}

bool Listener::readStatus() {
    const std::optional<std::string> status = readOf(_pid, "status");
    const std::size_t at = status ? status->find("\nState:\t") : std::string::npos;
    if (at == std::string::npos) {
        return false;
    }
    const char state = (*status)[at + std::strlen("\nState:\t")];
    _runs = std::strchr("TtZX", state) == nullptr;
    _parent = static_cast<pid_t>(fieldOf(*status, "PPid", decimal));
    _user = static_cast<uid_t>(fieldOf(*status, "Uid", decimal));
    _heedsReload = (fieldOf(*status, "SigCgt", hexadecimal) & 1U << (SIGHUP - 1U)) != 0;
    return state != 'Z' && state != 'X';
}

void Listener::readSockets() {
    const std::vector<ListeningSocket> all = listeningSockets();
    const std::string folder = "/proc/" + std::to_string(_pid) + "/fd";
    _sockets.clear();
    eachNumber(folder, [&](long long descriptor) {
        const unsigned long long number = socketBehind(folder + "/" + std::to_string(descriptor));
        const auto same = [number](const ListeningSocket& socket) { return socket.number == number; };
        const auto socket = number == 0 ? all.end() : std::find_if(all.begin(), all.end(), same);
        if (socket != all.end()) {
            _sockets.push_back(*socket);
        }
    });
}

std::vector<Endpoint> Listener::endpoints() const {
    std::vector<Endpoint> endpoints;
    for (const ListeningSocket& socket : _sockets) {
        endpoints.push_back(socket.endpoint);
    }
    return endpoints;
}

bool Listener::listensOn(int port) const {
    return std::any_of(_sockets.begin(), _sockets.end(),
                       [port](const ListeningSocket& socket) { return socket.endpoint.port == port; });
}

bool Listener::listensOn(const Endpoint& endpoint) const {
    return std::any_of(_sockets.begin(), _sockets.end(),
                       [&endpoint](const ListeningSocket& socket) { return socket.endpoint == endpoint; });
}

bool Listener::refresh() {
    if (!readStatus()) {
        return false;
    }
    readSockets();
    return !hasEnded();
}

bool Listener::hasEnded() const {
    return awaitEnd(Deadline(std::chrono::milliseconds(0)));
}

bool Listener::signal(int number) const {
    if (pidfd_send_signal(_pidfd.number(), number, nullptr, 0) == 0) {
        return true;
    }
    return errno == ESRCH ? false
                          : throw std::system_error(errno, std::generic_category(),
                                                    "process " + std::to_string(_pid) + " cannot be signalled");
}

bool Listener::awaitEnd(const Deadline& deadline) const {
    pollfd watched{_pidfd.number(), POLLIN, 0};
    return succeeding("a process cannot be watched", [&] { return poll(&watched, 1, deadline.milliseconds()); }) == 1;
}

}  // namespace Vorma
