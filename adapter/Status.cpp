#include "Status.h"

#include <ctime>
#include <nlohmann/json.hpp>
#include <set>

#include "DoorFile.h"
#include "Limits.h"
#include "Listener.h"
#include "Refusal.h"
#include "SshSetting.h"
#include "Sshd.h"
#include "Store.h"

namespace Vorma {

namespace {

using Json = nlohmann::ordered_json;

std::string timeText(std::time_t seconds) {
    char text[32];
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

std::set<int> portsOf(const std::vector<Listener>& listeners) {
    std::set<int> ports;
    for (const Listener& listener : listeners) {
        for (const ListeningSocket& socket : listener.sockets()) {
            ports.insert(socket.endpoint.port);
        }
    }
    return ports;
}

std::string joined(const std::set<int>& ports) {
    std::string text;
    for (const int port : ports) {
        text += (text.empty() ? "" : " ") + std::to_string(port);
    }
    return text;
}

/** One door, as far as it can be looked at. */
class DoorStatus {
public:
    DoorStatus(std::size_t door, const Configuration& configuration, const Directory* folder, const State& state)
        : _door(door), _configuration(configuration), _folder(folder), _state(state), _port(state.ports[door]) {}

    Json tell() {
        Json facts;
        facts["wanted"] = _port ? Json(*_port) : Json("closed");
        const std::vector<Listener> listeners = Listener::find(path());
        const std::set<int> ports = portsOf(listeners);
        facts["effective"] = ports.empty()       ? Json("closed")
                             : ports.size() == 1 ? Json(*ports.begin())
                                                 : Json(joined(ports));
        facts["since"] = _state.since[_door] == 0 ? "unknown" : timeText(_state.since[_door]);
        facts["pid"] = listeners.empty() ? Json("none") : Json(listeners.front().pid());
        facts["differs"] = difference(listeners, ports);
        facts["failure"] = failure();
        addEffective(facts);
        return facts;
    }

private:
    std::string path() const { return _configuration.stateDirectory + "/" + Store::fileOf(_door); }

    std::string difference(const std::vector<Listener>& listeners, const std::set<int>& ports) const {
        if (!_port) {
            return listeners.empty() ? "no" : "it is to be closed, but a listener is there";
        }
        if (listeners.empty()) {
            return "its listener is gone";
        }
        if (listeners.size() > 1) {
            return "it has more than one listener";
        }
        if (!listeners.front().isRunning()) {
            return "its listener is stopped";
        }
        if (ports != std::set{*_port}) {
            return ports.empty() ? "its listener does not listen" : "its listener is on another port";
        }
        const auto text = _folder == nullptr ? std::nullopt : _folder->read(Store::fileOf(_door));
        const bool same = text == DoorFile::render(_door, *_port, _state, _configuration);
        return same ? "no" : "its file is not what state and settings make of it";
    }

    std::string failure() const {
        const auto text = _folder == nullptr ? std::nullopt : _folder->read(Store::failureFileOf(_door));
        const std::string said = text ? text->substr(0, text->find_last_not_of(" \n") + 1) : "";
        return said.empty() ? "none" : said;
    }

    /** What sshd itself makes of the door's file. */
    void addEffective(Json& facts) const {
        if (!_port || _folder == nullptr || !_folder->has(Store::fileOf(_door))) {
            return;
        }
        try {
            const Effective effective =
                Question(_configuration.sshd, path(), *_port).answer(Tul::Deadline(Limits::question));
            for (const char* keyword : {"listenaddress", "ciphers", "kexalgorithms", "macs", "ipqos", "rekeylimit"}) {
                facts[keyword] = effective.of(keyword);
            }
        } catch (const Refusal& refusal) {
            facts["refused"] = refusal.what();
        }
    }

    const std::size_t _door;
    const Configuration& _configuration;
    const Directory* const _folder;
    const State& _state;
    const std::optional<int> _port;
};

Json settingsOf(const State& state) {
    Json facts;
    for (std::size_t i = 0; i < sshSettings().size(); ++i) {
        facts[sshSettings()[i].name] = state.settings[i].value_or("default");
    }
    return facts;
}

/** A change that is under way or was cut short. */
std::string changeIn(const Directory* folder) {
    if (folder == nullptr || !folder->hasFolder("new")) {
        return "none";
    }
    const auto begun = folder->subfolder("new").writtenAt(Store::stateName);
    return begun ? "begun at " + timeText(*begun) + ", and not ended" : "none";
}

std::string textOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/** The same facts one a line: the group, a dot, the name, a blank, the value. */
std::string flat(const Json& facts) {
    std::string text;
    const auto add = [&text](const std::string& name, const Json& value) {
        text.append(name).append(" ").append(textOf(value)).append("\n");
    };
    for (const auto& [group, members] : facts.items()) {
        if (!members.is_object()) {
            add(group, members);
            continue;
        }
        for (const auto& [name, value] : members.items()) {
            add(std::string(group).append(".").append(name), value);
        }
    }
    return text;
}

}  // namespace

std::string status(const Configuration& configuration, bool json) {
    const std::optional<Directory> folder = Store::openForLooking(configuration.stateDirectory);
    const Directory* const looked = folder ? &*folder : nullptr;
    const std::optional<State> state = folder ? Store::readState(*folder) : std::nullopt;
    const State known = state.value_or(State());
    Json facts;
    facts["state"] = state ? "sound" : folder ? "damaged or lost" : "not written yet";
    facts["change"] = changeIn(looked);
    for (std::size_t door = 0; door < doorCount; ++door) {
        Json& told = facts[doorRows[door].name] = DoorStatus(door, configuration, looked, known).tell();
        if (folder && !state) {
            told["wanted"] = "unknown";
            told["differs"] = "the state is damaged or lost";
        }
    }
    facts["settings"] = state || !folder ? settingsOf(known) : Json("unknown");
    return json ? facts.dump(2, ' ', true, Json::error_handler_t::replace) + "\n" : flat(facts);
}

}  // namespace Vorma
