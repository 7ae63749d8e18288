#include "Restoring.h"

#include <cerrno>

#include "DoorFile.h"
#include "Limits.h"
#include "Sshd.h"
#include "Surroundings.h"

namespace Vorma {

namespace {

using Tul::Deadline;

/**
 * The file that was in force for the door: the one that was kept, or the one in place, or else what the state makes
 * of it. Only the last, when both others are damaged, needs room on the disk.
 */
class OldFile {
public:
    OldFile(const Store& store, const Configuration& configuration, const Door& door, const State& state)
        : _store(store), _file(door.file()), _port(state.ports[door.index()].value()), _inPlace(door.text()) {
        const std::string old = Store::oldFileOf(door.index());
        const auto kept = store.cutShortAt() ? store.candidates.read(old) : std::nullopt;
        if (isSound(kept)) {
            _text = *kept;
            _path = store.candidates.pathOf(old);
            _kept = old;
        } else if (isSound(_inPlace)) {
            _text = *_inPlace;
            _path = store.folder.pathOf(_file);
        } else {
            _text = DoorFile::render(door.index(), _port, state, configuration);
            _path = store.candidates.pathOf(_file);
            sync(store.candidates.write(_file, _text), _path);
        }
    }

    const std::string& path() const { return _path; }
    const std::string& text() const { return _text; }
    int port() const { return _port; }

    /** False when it was there already. The one that was kept stays: what is put back may be cut short, too. */
    bool putInPlace() const {
        if (_inPlace == _text) {
            return false;
        }
        if (!_kept.empty()) {
            _store.candidates.link(_kept, _store.candidates, _file);
        }
        _store.candidates.rename(_file, _store.folder, _file);
        return true;
    }

private:
    bool isSound(const std::optional<std::string>& text) const { return text && DoorFile::portIn(*text) == _port; }

    const Store& _store;
    const std::string _file;
    const int _port;
    const std::optional<std::string> _inPlace;
    std::string _text;
    std::string _path;
    std::string _kept; /**< the name under which it was kept; empty: it was not */
};

/** sshd ends itself when it is told to reload a file that it does not take. */
std::vector<Endpoint> admitted(const Configuration& configuration, const OldFile& old, const Deadline& deadline) {
    return Question(configuration.sshd, old.path(), old.port()).answer(deadline).endpoints();
}

std::vector<Endpoint> endpointsOf(const OldFile& old) {
    std::vector<Endpoint> endpoints = DoorFile::endpointsIn(old.text());
    std::erase_if(endpoints, [](const Endpoint& endpoint) { return !hasFamily(endpoint); });
    return endpoints;
}

/** A live listener is not told to go where it could not listen. */
void expectFree(const Door& door, const std::vector<Endpoint>& endpoints) {
    const std::vector<Endpoint> held = door.held();
    for (const Endpoint& endpoint : endpoints) {
        if (door.obstacleAt(endpoint, held) == EADDRINUSE) {
            throw DoorFailure("port " + std::to_string(endpoint.port) + " is taken");
        }
    }
}

void restore(const Store& store, const Configuration& configuration, const Door& door, const State& state,
             bool concerned, const Deadline& deadline) {
    shedTheCaller();
    if (!state.ports[door.index()]) {
        door.close(std::nullopt, {}, deadline);
        return;
    }
    const OldFile old(store, configuration, door, state);
    const std::vector<Endpoint> endpoints = admitted(configuration, old, deadline);
    expectFree(door, endpoints);
    const bool changed = old.putInPlace();
    door.serve(endpoints, concerned || changed, Unproven::Stays, deadline);
}

/** Whether the change that was cut short may have touched the door. */
bool isConcerned(const Store& store, const Door& door, const State& state) {
    return store.owes(door.index()) || (store.cutShortAt() && (!state.ports[door.index()] ||
                                                               store.candidates.has(Store::oldFileOf(door.index()))));
}

/** Whatever has become of its listener, its file is the old one again, and the door is tried anew by every run. */
void remember(const Store& store, const Configuration& configuration, const Door& door, const State& state) {
    try {
        if (state.ports[door.index()]) {
            OldFile(store, configuration, door, state).putInPlace();
        }
        store.owe(door.index());
    } catch (const std::exception&) {
        // No room for a mark: then the missing file of a door that is to be open is one.
        if (state.ports[door.index()]) {
            store.folder.remove(door.file());
        }
    }
}

/**
 * What fails is tried once more: a call that failed need not fail again, and the next run may be far. What comes out
 * is the complaint.
 */
std::optional<std::string> restoreOrComplain(const Store& store, const Configuration& configuration, const Door& door,
                                             const State& state, bool concerned, const Deadline& deadline) {
    constexpr int attempts = 2;
    std::string complaint;
    for (int i = 0; i < attempts && (i == 0 || !deadline.hasPassed()); ++i) {
        try {
            restore(store, configuration, door, state, concerned, deadline);
            store.settleDebt(door.index());
            return std::nullopt;
        } catch (const std::exception& failure) {
            complaint = door.name() + ": " + failure.what();
        }
    }
    remember(store, configuration, door, state);
    return complaint;
}

}  // namespace

bool isInLine(const Store& store, const Door& door, const State& state, std::optional<Listener>& listener) {
    const std::optional<int> port = state.ports[door.index()];
    const std::optional<std::string> text = door.text();
    if (store.owes(door.index())) {
        return false;
    }
    if (!port) {
        return !text && !store.folder.has(Store::pidFileOf(door.index()));
    }
    if (!text || DoorFile::portIn(*text) != port) {
        return false;
    }
    listener = door.listenerOn(*port);
    return listener.has_value();
}

Sight restoreAll(const Store& store, const Configuration& configuration, const State& state,
                 const Tul::Deadline& deadline) {
    Sight sight;
    const bool cutShort = store.cutShortAt().has_value();
    for (std::size_t index = 0; index < doorCount; ++index) {
        const Door door(index, store, configuration.sshd);
        const bool concerned = isConcerned(store, door, state);
        auto& [listener, complaint] = sight[index];
        if (concerned || !isInLine(store, door, state, listener)) {
            complaint = restoreOrComplain(store, configuration, door, state, concerned, deadline);
            store.note(index, complaint.value_or(""));
        }
    }
    if (cutShort) {
        store.folder.sync();
        store.abandon();
    } else {
        store.tidy();
    }
    return sight;
}

State adopted(const Store& store) {
    State found;
    for (std::size_t door = 0; door < doorCount; ++door) {
        for (const Listener& listener : Listener::find(store.folder.pathOf(Store::fileOf(door)))) {
            if (!listener.sockets().empty()) {
                found.ports[door] = listener.sockets().front().endpoint.port;
            }
        }
    }
    return found;
}

void putBack(const Store& store, const Configuration& configuration, const Door& door, const State& state,
             const std::vector<Endpoint>& held, const Deadline& deadline) {
    if (!state.ports[door.index()]) {
        door.close(std::nullopt, {}, deadline);
        return;
    }
    const OldFile old(store, configuration, door, state);
    old.putInPlace();
    const bool wasThere = !held.empty() && held.front().port == old.port();
    door.serve(wasThere ? held : endpointsOf(old), true, Unproven::Stays, deadline);
}

std::string inForce(const Store& store, const Configuration& configuration) {
    std::string text;
    for (std::size_t index = 0; index < doorCount; ++index) {
        const Door door(index, store, configuration.sshd);
        std::string ports;
        try {
            for (const Listener& listener : door.listeners()) {
                for (const ListeningSocket& socket : listener.sockets()) {
                    ports += " " + socket.endpoint.text();
                }
            }
        } catch (const std::exception& failure) {
            ports = std::string(" unknown, ") + failure.what();
        }
        text += (text.empty() ? "" : "; ") + door.name() + (ports.empty() ? " is closed" : " is open on" + ports);
    }
    return text;
}

}  // namespace Vorma
