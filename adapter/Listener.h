#ifndef VORMA_LISTENER_H
#define VORMA_LISTENER_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Deadline.h"
#include "Descriptor.h"
#include "Endpoint.h"
#include "Sockets.h"

namespace Vorma {

/**
 * A process of ours that was started from a door's file. It is known by what cannot be lost or taken by another:
 * its command line names the file, its user is ours, and it is held by a pidfd, which stays this process's even when
 * its number is used again. What it listens on was looked up through its own descriptors.
 */
class Listener {
public:
    /** The process of that number, if it is one from the file; std::system_error when that cannot be told. */
    static std::optional<Listener> lookAt(pid_t pid, const std::string& file);

    /** A child of ours that was just started as one: its words may not be there yet. Nothing when it has ended. */
    static std::optional<Listener> ofChild(pid_t pid);

    /** All of them, by a look at every process. Those that serve a session are none. */
    static std::vector<Listener> find(const std::string& file);

    pid_t pid() const { return _pid; }
    pid_t parent() const { return _parent; }
    const Tul::Descriptor& descriptor() const { return _pidfd; }

    /** Neither stopped, nor traced, nor dead at the time of the look. */
    bool isRunning() const { return _runs; }

    /** SIGHUP would make it reload. Before it is so far it would die of it, or not notice. */
    bool heedsReload() const { return _heedsReload; }

    const std::vector<ListeningSocket>& sockets() const { return _sockets; }
    std::vector<Endpoint> endpoints() const;
    bool listensOn(int port) const;
    bool listensOn(const Endpoint& endpoint) const;

    /** Looks again at what it listens on, and whether it runs. False: it has ended. */
    bool refresh();

    bool hasEnded() const;

    /** False when it has ended; std::system_error when it must not be signalled. */
    bool signal(int number) const;

    /** False when it was still there at the deadline. */
    bool awaitEnd(const Tul::Deadline& deadline) const;

private:
    Listener(pid_t pid, Tul::Descriptor pidfd) : _pid(pid), _pidfd(std::move(pidfd)) {}

    static std::optional<Listener> lookAt(pid_t pid, const std::string& file, const Tul::Deadline& deadline);
    bool readStatus();
    void readSockets();

    pid_t _pid;
    pid_t _parent = 0;
    uid_t _user = 0;
    Tul::Descriptor _pidfd;
    bool _runs = false;
    bool _heedsReload = false;
    std::vector<ListeningSocket> _sockets;
};

/**
 * Whether a command line, its words ended by NUL or joined by blanks as sshd shows itself, is that of a listener
 * which reads the file.
 */
bool namesFile(std::string_view commandLine, const std::string& file);

}  // namespace Vorma

#endif
