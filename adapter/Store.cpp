#include "Store.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Careless.h"
#include "Refusal.h"
#include "SystemCall.h"
#include "Text.h"
#include "TrustedPath.h"

namespace Vorma {

namespace {

using Tul::Deadline;
using Tul::Descriptor;

constexpr mode_t ownFolder = 0700;
constexpr std::size_t failureSize = 1024;

std::string parentOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

/** Makes the folder when only its parent is there, and opens it. */
Descriptor openIn(const Descriptor& parent, const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    int folder = openat(parent.number(), name.c_str(), flags);
    if (folder < 0 && errno == ENOENT) {
        // Another run may have been quicker.
        const int made = mkdirat(parent.number(), name.c_str(), ownFolder);
        Tul::succeeding(path.c_str(), [made] { return made != 0 && errno == EEXIST ? 0 : made; });
        folder = openat(parent.number(), name.c_str(), flags);
    }
    if (folder < 0 && (errno == ELOOP || errno == ENOTDIR)) {
        throw Distrust(path + " must be a directory of the user who runs vorma, and no link");
    }
    return Descriptor(Tul::succeeding(path.c_str(), [folder] { return folder; }));
}

void trustStore(const Descriptor& folder, const std::string& path) {
    struct stat status {};
    Tul::succeeding(path.c_str(), [&] { return fstat(folder.number(), &status); });
    if (status.st_uid != geteuid()) {
        throw Distrust(path + " must be a directory of the user who runs vorma, and no link");
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw Distrust(path + " may be written by others");
    }
}

Directory openStore(const std::string& path) {
    try {
        Descriptor folder = openIn(openTrusted(parentOf(path), Kind::Directory), path);
        trustStore(folder, path);
        return {std::move(folder), path};
    } catch (const std::system_error& error) {
        throw Refusal(Exit::Store, path + " cannot be made or opened: " + error.what() +
                                       "; its parent must be there and writable; nothing was changed");
    } catch (const Distrust& distrust) {
        throw Refusal(Exit::Store, std::string(distrust.what()) + "; nothing was changed");
    }
}

/** The alarm ends a wait for the lock, and does nothing else. */
void wakeUp(int) {}

/** Interrupts a waiting call at the deadline, and again and again after it: the first may come just before the call.
 */
class Alarm {
public:
    explicit Alarm(const Deadline& deadline) {
        struct sigaction action {};
        action.sa_handler = wakeUp;
        sigaction(SIGALRM, &action, nullptr);
        set(std::max(deadline.milliseconds(), 1));
    }
    ~Alarm() { set(0); }

    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    static void set(int milliseconds) {
        constexpr suseconds_t perSecond = 1000;
        constexpr suseconds_t again = 100;
        const itimerval timer{{0, milliseconds > 0 ? again * perSecond : 0},
                              {milliseconds / perSecond, milliseconds % perSecond * perSecond}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

}  // namespace

Store::Store(const std::string& stateDirectory)
    : folder(openStore(stateDirectory)), candidates(folder.subfolder("new")) {
    refuseLinks();
    _lock = folder.openOrMake("lock");
}

void Store::refuseLinks() const {
    for (const char* name : {"lock", stateName, copyName}) {
        folder.has(name);
    }
    for (std::size_t door = 0; door < doorCount; ++door) {
        // sshd would write its number through a link.
        for (const std::string& name : {fileOf(door), pidFileOf(door), failureFileOf(door)}) {
            folder.has(name);
        }
    }
}

void Store::lock(const Deadline& deadline) {
    if (flock(_lock.number(), LOCK_EX | LOCK_NB) == 0) {
        return;
    }
    const Alarm alarm(deadline);
    while (flock(_lock.number(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), folder.pathOf("lock"));
        }
        if (deadline.hasPassed()) {
            throw Refusal(Exit::Busy, "another vorma holds " + folder.pathOf("lock") + "; nothing was changed");
        }
    }
}

std::optional<State> Store::readState(const Directory& folder) {
    for (const char* name : {stateName, copyName}) {
        const std::optional<std::string> text = folder.read(name);
        std::optional<State> state = text ? State::read(*text, folder.pathOf(name)) : std::nullopt;
        if (state) {
            return state;
        }
    }
    return std::nullopt;
}

std::optional<Found> Store::load() const {
    const std::optional<std::string> text = folder.read(stateName);
    if (const auto state = text ? State::read(*text, folder.pathOf(stateName)) : std::nullopt) {
        if (folder.read(copyName) != text) {
            mendCopy(*text);
        }
        return Found{*state, true};
    }
    if (const auto state = readState(folder)) {
        return Found{*state, false};
    }
    expectNothing();
    return std::nullopt;
}

/** Doors that are rendered while there is no state would later look like doors whose state was lost. */
void Store::expectNothing() const {
    bool anything = folder.has(stateName) || folder.has(copyName);
    for (std::size_t door = 0; door < doorCount; ++door) {
        anything = anything || folder.has(fileOf(door));
    }
    if (anything) {
        throw Refusal(Exit::Store, folder.pathOf(stateName) +
                                       " and its copy are damaged or lost, the doors were left as they are; to begin "
                                       "anew stop their listeners and remove " +
                                       folder.pathOf(""));
    }
}

void Store::beginAnew(const State& first) const {
    begin(first);
    commit();
    for (std::size_t door = 0; door < doorCount; ++door) {
        note(door, "");
    }
}

void Store::begin(const State& next) const {
    const Descriptor copy = candidates.write(copyName, next.text());
    const Descriptor state = candidates.write(stateName, next.text());
    // The disk writes the one while the other is waited for; this is no more than a hint.
    sync_file_range(copy.number(), 0, 0, SYNC_FILE_RANGE_WRITE);
    sync(state, candidates.pathOf(stateName));
    sync(copy, candidates.pathOf(copyName));
    candidates.sync();
}

void Store::commit() const {
    candidates.rename(stateName, folder, stateName);
    // From here on the change has been made, whatever else fails.
    placeCopy();
    try {
        if constexpr (careless != Careless::SyncsNoDirectory) {
            folder.sync();
        }
    } catch (const std::exception& error) {
        throw NotDurable(error.what());
    }
    tidy();
}

void Store::abandon() const {
    // First of all: as long as it is there, the change counts as cut short.
    candidates.remove(stateName);
    tidy();
}

bool Store::owes(std::size_t door) const {
    return candidates.has(owedFileOf(door));
}

void Store::owe(std::size_t door) const {
    candidates.write(owedFileOf(door), "");
}

void Store::settleDebt(std::size_t door) const {
    discard(owedFileOf(door));
}

void Store::tidy() const {
    for (std::size_t door = 0; door < doorCount; ++door) {
        for (const std::string& name : {fileOf(door), oldFileOf(door), pidFileOf(door)}) {
            discard(name);
        }
    }
    discard(copyName);
}

/** What stays does no harm, and the next run tries again. */
void Store::discard(const std::string& name) const {
    try {
        candidates.remove(name);
    } catch (const std::exception&) {
    }
}

void Store::mendCopy(const std::string& text) const {
    try {
        sync(candidates.write(copyName, text), candidates.pathOf(copyName));
    } catch (const std::exception&) {
        return;
    }
    placeCopy();
}

/** The state itself is safe; when this fails the next run mends the copy. */
void Store::placeCopy() const {
    try {
        candidates.rename(copyName, folder, copyName);
    } catch (const std::exception&) {
    }
}

void Store::note(std::size_t door, const std::string& failure) const {
    try {
        std::string text = failure.substr(0, failureSize - 1);
        text.resize(failureSize - 1, ' ');
        const Descriptor file = folder.openOrMake(failureFileOf(door));
        writeAll(file, text + "\n", folder.pathOf(failureFileOf(door)));
    } catch (const std::exception&) {
        // It is for who asks for the status. What happened to the doors is said by the run itself.
    }
}

std::optional<Directory> Store::openForLooking(const std::string& stateDirectory) {
    try {
        return Directory(openTrusted(stateDirectory, Kind::Directory), stateDirectory);
    } catch (const std::system_error& error) {
        if (error.code().value() != ENOENT) {
            throw;
        }
        return std::nullopt;
    }
}

}  // namespace Vorma
