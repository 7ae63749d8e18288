#ifndef TUL_BENCH_DOOR_H
#define TUL_BENCH_DOOR_H

#include <sys/types.h>

#include <ctime>
#include <filesystem>
#include <string>

#include "Descriptor.h"

namespace TulBench {

/** A door as a client sees it: a port of loopback, and the file in which its listener leaves its number. */
class Door {
public:
    Door(int port, std::filesystem::path pidFile) : _port(port), _pidFile(std::move(pidFile)) {}

    /** Notes what the listener's file says, for awaitGreeting(). */
    void remember();

    /**
     * Until the listener has left its number anew, and greets. Sleeps until something happens to the file's folder:
     * to look all the time would take from the time of those who are waited for. std::runtime_error after ten
     * seconds, here and below.
     */
    void awaitGreeting() const;

    /** Until the listener has gone, and the port refuses. */
    void awaitRefusal(pid_t listener) const;

    /** Whether the server offers that list of algorithms to a new connection. */
    bool offers(const std::string& list) const;

    /** The listener's process; std::runtime_error when it left no number. */
    pid_t listener() const;

    std::string port() const { return std::to_string(_port); }

private:
    bool listenerHasBegun() const;

    int _port;
    std::filesystem::path _pidFile;
    Tul::Descriptor _changes; /**< of the file's folder. Kept for good: its end costs the kernel some 15 ms */
    std::timespec _written{};
};

}  // namespace TulBench

#endif
