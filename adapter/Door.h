#ifndef VORMA_DOOR_H
#define VORMA_DOOR_H

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Configuration.h"
#include "Deadline.h"
#include "Listener.h"
#include "Store.h"

namespace Vorma {

/** Why a door is not as it should be. */
class DoorFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** Its listener listens, and a client got no greeting: to end it would only close the door. */
class NoGreeting : public DoorFailure {
public:
    using DoorFailure::DoorFailure;
};

/** What becomes of a listener that was started and did not come up in time: on the way back it may still do so. */
enum class Unproven { Ends, Stays };

/** A door as it is: its file in the store, and the listener behind it. Failures to do are DoorFailures. */
class Door {
public:
    Door(std::size_t index, const Store& store, const std::string& sshd)
        : _index(index), _store(store), _sshd(sshd) {}

    std::size_t index() const { return _index; }
    std::string name() const { return doorRows[_index].name; }
    std::string file() const { return Store::fileOf(_index); }

    /** The text of its file, if there is one. */
    std::optional<std::string> text() const { return _store.folder.read(file()); }

    /** Its listeners, by a look at every process. */
    std::vector<Listener> listeners() const;

    /** Where they listen. */
    std::vector<Endpoint> held() const;

    /** The listener that runs and listens on the port: a quick look, as long as its pid file names it. */
    std::optional<Listener> listenerOn(int port) const;

    /** One listener serves the door at all the endpoints, seen. Reload: also when one does so already. */
    void serve(const std::vector<Endpoint>& endpoints, bool reload, Unproven unproven,
               const Tul::Deadline& deadline) const;

    /** No listener is left, its file is gone, and nobody listens at the endpoints where it was. One may be known. */
    void close(const std::optional<Listener>& known, const std::vector<Endpoint>& endpoints,
               const Tul::Deadline& deadline) const;

    /**
     * Why its listener, which holds the one, could not listen at the other: an error of bind(2). Binding tells also
     * of what does not listen: a connection of somebody's that has the port.
     */
    std::optional<int> obstacleAt(const Endpoint& endpoint, const std::vector<Endpoint>& held) const;

    /** Who listens in the way of its endpoints and is not of its listeners. */
    std::optional<ListeningSocket> stranger(const std::vector<Endpoint>& endpoints) const;

    /** The same where its listeners are known. */
    static std::optional<ListeningSocket> stranger(const std::vector<Endpoint>& endpoints,
                                                   std::span<const Listener> own);

private:
    std::string path() const { return _store.folder.pathOf(file()); }
    std::optional<Listener> named() const;
    std::optional<Listener> one(const Tul::Deadline& deadline) const;
    Listener start() const;
    void bringUp(Listener& listener, const std::vector<Endpoint>& endpoints, bool reload,
                 const Tul::Deadline& deadline) const;
    void writeDown(const Listener& listener) const;
    static bool end(const Listener& listener, const Tul::Deadline& deadline);
    static void stop(const Listener& listener, const Tul::Deadline& deadline);
    void expectGreeting(const Endpoint& endpoint, const Tul::Deadline& deadline) const;

    std::size_t _index;
    const Store& _store;
    const std::string& _sshd;
};

}  // namespace Vorma

#endif
