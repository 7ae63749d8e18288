#include "WalkedRun.h"

#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace TulTest {

namespace {

constexpr std::chrono::seconds runLimit(25);
constexpr int callsOfStart = 20;

}  // namespace

WalkedRun::WalkedRun(const Place& place, const Scenario& scenario) : _place(place), _scenario(scenario) {}

void WalkedRun::perform(const std::string& line) {
    Tracer tracer(*this, _place.store().string() + "/");
    for (std::size_t door = 0; door < std::size(doorNames); ++door) {
        for (const Process& listener : listenersOf(_place.file(door))) {
            tracer.join(listener.pid);
        }
    }
    if (_scenario.theft == Theft::Before) {
        steal();
    }
    AdapterRun run(_place.command(line));
    _adapter = run.pid();
    const bool isInTime = tracer.follow(run, Clock::now() + runLimit);
    _ending = run.ending();
    _ending.hung = !isInTime;
    _seen = tracer.seen();
    _thief.reset();
}

int WalkedRun::entering(const Call& call) {
    const CallAddress address{call.maker, call.code, ++_occurrences[{call.maker, call.code}]};
    if (++_calls == _lastCall) {
        kill();
    }
    if (_isRecording) {
        _recorded.push_back({address, hasEffect(call), failuresOf(call)});
    }
    _ownCalls += call.maker == Maker::Adapter ? 1 : 0;
    return _fault && address == _fault->address ? strike(call) : 0;
}

int WalkedRun::strike(const Call& call) {
    const std::vector<int> failures = failuresOf(call);
    if (_fault->mode == Mode::Fail) {
        const bool mayFail = std::find(failures.begin(), failures.end(), _fault->error) != failures.end();
        _hit = mayFail ? _calls : 0;
        _isHitAtStart = call.maker == Maker::Adapter && _ownCalls <= callsOfStart;
        return mayFail ? _fault->error : 0;
    }
    _hit = _calls;
    if (hasEffect(call) && !makesProcess(call)) {
        _victim = call.pid;
    } else {
        kill();
    }
    return 0;
}

void WalkedRun::kill() const {
    ::kill(_fault && _fault->mode == Mode::KillAlone ? _adapter : -_adapter, SIGKILL);
}

void WalkedRun::leaving(const Call& call, long result) {
    if (_victim == call.pid) {
        kill();
    }
    if (isRename(call) && result == 0) {
        renamed(renameTarget(call));
    } else if (isSync(call) && result == 0 && fileBehind(call.pid, call.arguments[0]) == _place.store()) {
        _unsynced.clear();
    }
}

void WalkedRun::renamed(const std::string& target) {
    const bool isDoor = target == _place.file(0) || target == _place.file(1);
    if (isDoor || target == _place.store() / "state") {
        _unsynced.insert(target);
        _placed[target].insert(contentOf(target).value_or(""));
    }
    if (target == _place.file(1) && _scenario.theft == Theft::AtReload) {
        _thief.reset();
    }
    if (isDoor && _isCutAtRename) {
        kill();
    }
    if (isDoor && _scenario.theft == Theft::AtRename) {
        steal();
    }
}

void WalkedRun::steal() {
    if (!_hasStolen) {
        _hasStolen = true;
        try {
            _thief = std::make_unique<Occupation>(_place.port(_scenario.stolen));
        } catch (const std::system_error&) {
            // The listener, or a probe of the adapter's, was there first: there is nothing to steal.
        }
    }
}

void WalkedRun::executed(const std::string& commandLine) {
    if (_scenario.theft == Theft::AtReload && !_hasStolen && isListenerOf(commandLine, _place.file(1))) {
        steal();
    }
}

std::string WalkedRun::unsynced() const {
    return joined({_unsynced.begin(), _unsynced.end()});
}

std::vector<pid_t> WalkedRun::leftovers() const {
    std::vector<pid_t> left = _seen;
    // Who was let go before it became a listener may have become one since.
    const auto isFine = [this](pid_t pid) {
        return !isAlive(pid) || isListenerOf(commandLine(pid), _place.store().string() + "/");
    };
    await(Clock::now() + std::chrono::seconds(10), [&] { return std::erase_if(left, isFine), left.empty(); });
    return left;
}

}  // namespace TulTest
