#include "Change.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <system_error>

#include "Careless.h"
#include "DoorFile.h"
#include "Refusal.h"
#include "Restoring.h"
#include "Surroundings.h"
#include "Text.h"

namespace Vorma {

namespace {

using Tul::Deadline;

/** In place of the port of a closed door when sshd is asked whether it could be opened some day. */
constexpr int standInPort = 65535;

/** The code of a failure before anything was touched: without room, descriptors or memory it is the store's. */
Exit codeOf(const std::exception& failure) {
    const auto* refusal = dynamic_cast<const Refusal*>(&failure);
    return refusal == nullptr ? Exit::Store : refusal->code();
}

/** As far as it can be told so: a change that seems cut short is put right by the next run, and nothing is lost. */
void giveUp(const Store& store) {
    try {
        store.abandon();
    } catch (const std::system_error&) {
    }
}

}  // namespace

Change::Change(const Store& store, const Configuration& configuration, Sight sight, const Deadline& forward,
               const Deadline& whole)
    : _store(store), _configuration(configuration), _sight(std::move(sight)), _forward(forward), _whole(whole) {}

void Change::make(const State& before, State after, const std::vector<std::size_t>& doors, bool look) {
    _look = look;
    _newSettings = before.settings != after.settings;
    plan(before, after, doors);
    if (!isDue(before, after)) {
        return;
    }
    for (const Step& step : _steps) {
        if (step.fileChanges() || step.before != step.after) {
            after.since[step.door.index()] = std::time(nullptr);
        }
    }
    shedTheCaller();
    try {
        prepare(after);
    } catch (const std::exception& failure) {
        refuse(failure, before);
    }
    carryOut(before);
}

/** Nothing was touched. That the old state is in force is said only when it was seen. */
void Change::refuse(const std::exception& failure, const State& before) const {
    const std::string why = std::string(failure.what()) + "; nothing was changed, ";
    giveUp(_store);
    noteAll(failure.what());
    for (std::size_t index = 0; index < doorCount; ++index) {
        const std::optional<std::string>& complaint = _sight[index].complaint;
        if (complaint) {
            throw Refusal(Exit::Lost, why + "but the old state is not in force either: " + *complaint + ": " +
                                          inForce(_store, _configuration));
        }
        std::optional<Listener> listener;
        if (!isInLine(_store, Door(index, _store, _configuration.sshd), before, listener)) {
            throw Refusal(Exit::Lost,
                          why + "but the old state is not in force either: " + inForce(_store, _configuration));
        }
    }
    throw Refusal(codeOf(failure), why + "the old state is in force");
}

bool Change::isDue(const State& before, const State& after) const {
    return _look || before != after ||
           !std::all_of(_steps.begin(), _steps.end(), [this](const Step& step) { return isIdle(step); });
}

void Change::carryOut(const State& before) {
    const Step* current = nullptr;
    try {
        for (Step& step : _steps) {
            current = &step;
            apply(step);
        }
        current = nullptr;
        _store.commit();
        for (const Step& step : _steps) {
            _store.settleDebt(step.door.index());
        }
    } catch (const NotDurable&) {
        throw;
    } catch (const std::exception& failure) {
        goBack(before, current, failure.what());
    }
    noteAll("");
}

void Change::noteAll(const std::string& failure) const {
    for (const Step& step : _steps) {
        _store.note(step.door.index(), failure);
    }
}

void Change::plan(const State& before, const State& after, const std::vector<std::size_t>& doors) {
    for (const std::size_t index : doors) {
        Step step{Door(index, _store, _configuration.sshd), before.ports[index], after.ports[index], "",
                  std::nullopt};
        step.inPlace = step.door.text();
        step.text = DoorFile::render(index, step.after.value_or(standInPort), after, _configuration);
        _steps.push_back(std::move(step));
    }
}

/** restoreAll() has just seen to it that the doors are in line, and complains of those that are not. */
bool Change::isIdle(const Step& step) const {
    const bool fileStays = step.after ? !step.fileChanges() : !step.inPlace;
    return step.before == step.after && fileStays && !_sight[step.door.index()].complaint;
}

void Change::prepare(const State& after) {
    refuseCommonPorts(after);
    if constexpr (careless == Careless::StopsBeforeCheck) {
        std::for_each(_steps.begin(), _steps.end(),
                      [this](const Step& step) { step.door.close(std::nullopt, {}, _forward); });
    }
    // sshd looks at the candidates while they, and all that a way back needs, are being written to the disk.
    for (Step& step : _steps) {
        ask(step);
    }
    for (Step& step : _steps) {
        keepWhatIsInForce(step);
    }
    _store.begin(after);
    for (Step& step : _steps) {
        judge(step, after);
    }
}

void Change::refuseCommonPorts(const State& after) const {
    for (const Step& step : _steps) {
        for (std::size_t other = 0; other < doorCount; ++other) {
            if (other != step.door.index() && step.after && step.after == after.ports[other]) {
                throw Refusal(Exit::Taken, step.door.name() + ": port " + std::to_string(*step.after) +
                                               " is the other door's, " + doorRows[other].name);
            }
        }
    }
}

/**
 * A closed door is asked about as well when settings change: they must not be what keeps it from being opened some
 * day. To close a door nobody is asked.
 */
void Change::ask(Step& step) const {
    if (!step.after && !_newSettings) {
        return;
    }
    const std::string file = step.door.file();
    const auto candidate = _store.candidates.write(file, step.text);
    const int port = step.after.value_or(standInPort);
    step.question = std::make_unique<Question>(_configuration.sshd, _store.candidates.pathOf(file), port);
    sync(candidate, _store.candidates.pathOf(file));
}

void Change::keepWhatIsInForce(Step& step) {
    if (step.inPlace) {
        _store.folder.link(step.door.file(), _store.candidates, Store::oldFileOf(step.door.index()));
    }
    step.listener = std::move(_sight[step.door.index()].listener);
    if (!step.listener && step.before) {
        step.listener = step.door.listenerOn(*step.before);
    }
    step.held = step.listener ? step.listener->endpoints() : step.door.held();
    if (!step.after) {
        step.asked = step.held;
        if (step.asked.empty() && step.before) {
            const std::size_t door = step.door.index();
            step.asked = DoorFile::endpointsIn(DoorFile::render(door, *step.before, State(), _configuration));
        }
        expectNoStranger(step);
    }
}

/** Where somebody else listens the door would stay open, whatever is done to its own listener. */
void Change::expectNoStranger(const Step& step) const {
    if (step.listener && !Door::stranger(step.asked, std::span(&*step.listener, 1))) {
        return;
    }
    if (const auto stranger = step.door.stranger(step.asked)) {
        throw Refusal(Exit::Taken, step.door.name() + ": port " + std::to_string(stranger->endpoint.port) +
                                       " is not its listener's, but of a process of user " +
                                       std::to_string(stranger->user) + ", and would stay open");
    }
}

void Change::judge(Step& step, const State& after) const {
    if (!step.question) {
        return;
    }
    const int port = step.after.value_or(standInPort);
    try {
        const Effective effective = step.question->answer(_forward);
        check(effective, step.door.index(), port, after, _configuration);
        if (!step.fileChanges()) {
            _store.candidates.remove(step.door.file());
        }
        if (!step.after) {
            return;
        }
        step.asked = effective.endpoints();
    } catch (const Refusal& refusal) {
        const std::string name = step.door.name() + ": ";
        const std::string why = refusal.what();
        throw Refusal(refusal.code(), why.starts_with(name) ? why : name + why);
    }
    expectFree(step);
}

/** A reload onto a taken port kills the listener, and of several addresses sshd is content with what it gets. */
void Change::expectFree(const Step& step) const {
    const std::string port = step.door.name() + ": port " + std::to_string(*step.after);
    if (step.asked.empty()) {
        throw Refusal(Exit::Refused, port + " cannot be opened, this machine has no such address");
    }
    for (const Endpoint& endpoint : step.asked) {
        const std::optional<int> error = step.door.obstacleAt(endpoint, step.held);
        if (error == EADDRINUSE) {
            throw Refusal(Exit::Taken, port + " is taken");
        }
        if (error) {
            throw Refusal(Exit::Refused,
                          port + " cannot be opened at " + endpoint.text() + ": " + std::strerror(*error));
        }
    }
}

void Change::apply(Step& step) const {
    if (!step.after) {
        if (step.before || step.inPlace || _look) {
            step.door.close(step.listener, step.asked, _forward);
        }
        return;
    }
    if (step.fileChanges()) {
        const std::string file = step.door.file();
        if constexpr (careless == Careless::WritesInPlace) {
            _store.candidates.remove(file);
            const auto inPlace = _store.folder.write(file, "");
            for (const char letter : step.text) {
                writeAll(inPlace, std::string(1, letter), file);
            }
        } else {
            _store.candidates.rename(file, _store.folder, file);
        }
    }
    step.door.serve(step.asked, step.fileChanges(), Unproven::Ends, _forward);
}

bool Change::isTaken(const Step& step) {
    try {
        return std::any_of(step.asked.begin(), step.asked.end(), [&step](const Endpoint& endpoint) {
            return step.door.obstacleAt(endpoint, step.held) == EADDRINUSE;
        });
    } catch (const std::system_error&) {
        return false;  // it is not known why; that it was rolled back is
    }
}

void Change::goBack(const State& before, const Step* failed, const std::string& failure) const {
    std::string blame = failed == nullptr ? failure : failed->door.name() + ": " + failure;
    Exit code = Exit::RolledBack;
    try {
        if constexpr (careless != Careless::RollsNothingBack) {
            for (const Step& step : _steps) {
                putBack(_store, _configuration, step.door, before, step.held, _whole);
                if (&step == failed) {
                    break;  // those behind it were not touched
                }
            }
        }
        _store.folder.sync();
    } catch (const std::exception& further) {
        noteAll(blame + "; and the old state could not be put back: " + further.what());
        throw Refusal(Exit::Lost, blame + "; and the old state could not be put back (" + further.what() +
                                      "): " + inForce(_store, _configuration));
    }
    giveUp(_store);
    if (failed != nullptr && failed->after != failed->before && isTaken(*failed)) {
        code = Exit::Taken;
        blame = failed->door.name() + ": port " + std::to_string(failed->after.value_or(0)) + " is taken";
    }
    noteAll(blame);
    throw Refusal(code, blame + "; the old state is back in force");
}

}  // namespace Vorma
