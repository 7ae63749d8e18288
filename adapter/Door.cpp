#include "Door.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "Careless.h"
#include "Limits.h"
#include "Spawn.h"
#include "SshSetting.h"
#include "SystemCall.h"
#include "Watch.h"

namespace Vorma {

namespace {

using Tul::Deadline;
using Tul::Descriptor;

using Numbers = std::vector<unsigned long long>;

Numbers numbersOf(const Listener& listener) {
    Numbers numbers;
    for (const ListeningSocket& socket : listener.sockets()) {
        numbers.push_back(socket.number);
    }
    return numbers;
}

bool contains(const Numbers& numbers, unsigned long long number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool listensOnAll(const Listener& listener, const std::vector<Endpoint>& endpoints) {
    return !endpoints.empty() && std::all_of(endpoints.begin(), endpoints.end(),
                                             [&listener](const Endpoint& one) { return listener.listensOn(one); });
}

/** With sockets that are none of the old ones: what it reads from its file it has read anew. */
bool isUp(const Listener& listener, const std::vector<Endpoint>& endpoints, const Numbers& old) {
    return listener.isRunning() && listener.heedsReload() && listensOnAll(listener, endpoints) &&
           std::none_of(listener.sockets().begin(), listener.sockets().end(),
                        [&old](const ListeningSocket& socket) { return contains(old, socket.number); });
}

std::string portOf(const std::vector<Endpoint>& endpoints) {
    return endpoints.empty() ? "none" : std::to_string(endpoints.front().port);
}

/** Waits until the condition holds for the listener, or for another one that came in its place. */
class ComingUp {
public:
    ComingUp(const Directory& folder, std::string file) : _watch(folder), _file(std::move(file)) {}

    /** False at the deadline, or when there is no listener any more. */
    template <class ConditionT>
    bool await(Listener& listener, const Deadline& deadline, ConditionT holds) const {
        for (bool first = true;; first = false) {
            bool there = listener.refresh();
            if (there && holds(listener)) {
                return true;
            }
            if (!there || !first) {
                there = replace(listener, holds) || there;
            }
            if (there && holds(listener)) {
                return true;
            }
            if (!there || deadline.hasPassed()) {
                return false;
            }
            _watch.await(listener.descriptor(), deadline.within(Limits::withoutEvent));
        }
    }

private:
    /** One that forks when it begins anew, or a script that waits for the real one, has another number. */
    template <class ConditionT>
    bool replace(Listener& listener, ConditionT holds) const {
        for (Listener& other : Listener::find(_file)) {
            if (listener.hasEnded() || holds(other)) {
                listener = std::move(other);
                return true;
            }
        }
        return false;
    }

    Watch _watch;
    std::string _file;
};

}  // namespace

std::optional<Listener> Door::named() const {
    const std::string text = _store.folder.read(Store::pidFileOf(_index)).value_or("");
    const long long pid = number(text.substr(0, text.find('\n')), 2, 1LL << 31U);
    return pid > 0 ? Listener::lookAt(static_cast<pid_t>(pid), path()) : std::nullopt;
}

std::vector<Listener> Door::listeners() const {
    if constexpr (careless != Careless::BelievesPidFile) {
        return Listener::find(path());
    }
    std::vector<Listener> listeners;
    if (auto listener = named()) {
        listeners.push_back(std::move(*listener));
    }
    return listeners;
}

std::vector<Endpoint> Door::held() const {
    std::vector<Endpoint> held;
    for (const Listener& listener : listeners()) {
        const std::vector<Endpoint> endpoints = listener.endpoints();
        held.insert(held.end(), endpoints.begin(), endpoints.end());
    }
    return held;
}

std::optional<Listener> Door::listenerOn(int port) const {
    const auto serves = [port](const Listener& one) { return one.isRunning() && one.listensOn(port); };
    auto listener = named();
    if (listener && serves(*listener)) {
        return listener;
    }
    for (Listener& other : listeners()) {
        if (serves(other)) {
            writeDown(other);
            return std::move(other);
        }
    }
    return std::nullopt;
}

/** The listener that is to go on: the one that listens, if any. All others end. */
std::optional<Listener> Door::one(const Deadline& deadline) const {
    std::vector<Listener> all = listeners();
    std::stable_partition(all.begin(), all.end(), [](const Listener& each) { return !each.sockets().empty(); });
    for (std::size_t i = 1; i < all.size(); ++i) {
        stop(all[i], deadline);
    }
    if (all.empty()) {
        return std::nullopt;
    }
    Listener& listener = all.front();
    listener.signal(SIGCONT);  // it may have been stopped
    const auto isSafe = [](const Listener& each) { return each.isRunning() && each.heedsReload(); };
    if (!ComingUp(_store.folder, path()).await(listener, deadline.within(Limits::ending), isSafe)) {
        stop(listener, deadline);
        return std::nullopt;
    }
    return std::move(listener);
}

void Door::serve(const std::vector<Endpoint>& endpoints, bool reload, Unproven unproven,
                 const Deadline& deadline) const {
    if (std::optional<Listener> listener = one(deadline)) {
        try {
            bringUp(*listener, endpoints, reload, deadline);
            return;
        } catch (const NoGreeting&) {
            throw;
        } catch (const DoorFailure&) {
            if (deadline.hasPassed()) {
                throw;
            }
            stop(*listener, deadline);  // it hangs, or has ended
        }
    }
    Listener listener = start();
    try {
        bringUp(listener, endpoints, false, deadline);
    } catch (const std::exception&) {
        if (unproven == Unproven::Ends) {
            end(listener, deadline);
            ::kill(-listener.pid(),
                   SIGKILL);  // a script in place of sshd may have left a child in the session it leads
        }
        throw;
    }
}

/** So that the next run finds it quickly. It finds it anyhow: sshd's own number may have got lost. */
void Door::writeDown(const Listener& listener) const {
    const std::string text = std::to_string(listener.pid()) + "\n";
    const std::string name = Store::pidFileOf(_index);
    try {
        if (_store.folder.read(name) != text) {
            _store.candidates.write(name, text);
            _store.candidates.rename(name, _store.folder, name);
        }
    } catch (const std::system_error&) {
    }
}

void Door::bringUp(Listener& listener, const std::vector<Endpoint>& endpoints, bool reload,
                   const Deadline& deadline) const {
    const ComingUp coming(_store.folder, path());
    Numbers old;
    if (reload || (!listener.sockets().empty() && !listensOnAll(listener, endpoints))) {
        old = numbersOf(listener);
        listener.signal(SIGHUP);
    }
    const auto isUpAnew = [&](const Listener& each) { return isUp(each, endpoints, old); };
    if (!coming.await(listener, deadline.within(Limits::comingUp), isUpAnew)) {
        throw DoorFailure("its listener did not come up on port " + portOf(endpoints));
    }
    for (const Endpoint& endpoint : endpoints) {
        expectGreeting(endpoint, deadline.within(Limits::greeting));
    }
    writeDown(listener);
}

/**
 * It is not detached by sshd itself (-D): so it is known at once which process it is, and it stays that one when it
 * reloads. It leads a session of its own.
 */
Listener Door::start() const {
    std::string words[] = {_sshd, "-D", "-f", path()};
    char* const argv[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    try {
        const Descriptor nothing = Tul::aboveStandard(
            Descriptor(Tul::succeeding("/dev/null", [] { return open("/dev/null", O_RDWR | O_CLOEXEC); })));
        const int stream = nothing.number();
        const pid_t pid = Tul::spawn(argv, stream, stream, stream, Tul::Leads::Session);
        if (auto listener = Listener::ofChild(pid)) {
            return std::move(*listener);
        }
    } catch (const std::system_error& error) {
        throw DoorFailure(std::string("its listener cannot be started: ") + error.what());
    }
    throw DoorFailure("its listener did not come up, it ended at once");
}

void Door::expectGreeting(const Endpoint& endpoint, const Deadline& deadline) const {
    Answer answer = ask(endpoint, deadline);
    while (answer == Answer::Refusal && !deadline.hasPassed()) {
        // A listener that cannot fork for a moment accepts and lets go. Nothing tells when it can again.
        poll(nullptr, 0, deadline.within(Limits::withoutEvent).milliseconds());
        answer = ask(endpoint, deadline);
    }
    // So many clients wait that there is no room for us. The listener is there, and works its way through them.
    if (answer != Answer::Greeting && answer != Answer::Queue) {
        const std::string why = "its port " + std::to_string(endpoint.port) + " does not answer";
        if (answer == Answer::Refusal) {
            throw NoGreeting(why);
        }
        throw DoorFailure(why);
    }
}

bool Door::end(const Listener& listener, const Deadline& deadline) {
    for (const int number : {SIGTERM, SIGKILL}) {
        if (!listener.signal(number)) {
            return true;
        }
        listener.signal(SIGCONT);
        if (listener.awaitEnd(deadline.within(Limits::ending))) {
            return true;
        }
    }
    // Its sessions are processes of their own and do not notice.
    return false;
}

void Door::stop(const Listener& listener, const Deadline& deadline) {
    if (!end(listener, deadline)) {
        throw DoorFailure("its listener " + std::to_string(listener.pid()) + " cannot be ended");
    }
}

void Door::close(const std::optional<Listener>& known, const std::vector<Endpoint>& endpoints,
                 const Deadline& deadline) const {
    if (known) {
        known->signal(SIGTERM);  // it ends while others are looked for
    }
    for (const Listener& listener : listeners()) {
        stop(listener, deadline);
    }
    if (known) {
        stop(*known, deadline);
    }
    _store.folder.remove(file());
    _store.folder.remove(Store::pidFileOf(_index));
    for (const Endpoint& endpoint : endpoints) {
        if (careless != Careless::BelievesPidFile &&
            ask(endpoint, deadline.within(Limits::greeting)) != Answer::Refusal) {
            throw DoorFailure("its port " + std::to_string(endpoint.port) + " still accepts connections");
        }
    }
}

std::optional<int> Door::obstacleAt(const Endpoint& endpoint, const std::vector<Endpoint>& held) const {
    if (std::find(held.begin(), held.end(), endpoint) != held.end()) {
        return std::nullopt;
    }
    const std::optional<int> error = errorOfBinding(endpoint);
    const bool ownInTheWay =
        std::any_of(held.begin(), held.end(), [&](const Endpoint& own) { return own.overlaps(endpoint); });
    return error == EADDRINUSE && ownInTheWay && !stranger({endpoint}) ? std::nullopt : error;
}

/** Seen twice: a socket of its own may come or go between the looks at the processes and at the sockets. */
std::optional<ListeningSocket> Door::stranger(const std::vector<Endpoint>& endpoints) const {
    const auto first = stranger(endpoints, listeners());
    const auto second = first ? stranger(endpoints, listeners()) : std::nullopt;
    return second && second->number == first->number ? second : std::nullopt;
}

std::optional<ListeningSocket> Door::stranger(const std::vector<Endpoint>& endpoints, std::span<const Listener> own) {
    for (const ListeningSocket& socket : listeningSockets()) {
        const bool isInTheWay = std::any_of(endpoints.begin(), endpoints.end(), [&socket](const Endpoint& endpoint) {
            return socket.endpoint.overlaps(endpoint);
        });
        const bool isOwn = std::any_of(own.begin(), own.end(), [&socket](const Listener& listener) {
            return contains(numbersOf(listener), socket.number);
        });
        if (isInTheWay && !isOwn) {
            return socket;
        }
    }
    return std::nullopt;
}

}  // namespace Vorma
