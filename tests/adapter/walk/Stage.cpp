#include "Stage.h"

#include <signal.h>

#include <algorithm>

namespace TulTest {

Stage::Stage(const Journey& journey, const Scenario& scenario, const std::filesystem::path& folder, PortSupply& ports)
    : _journey(journey), _scenario(scenario), _place(folder, journey.adapter, ports) {
    if (scenario.beginsWithoutStore()) {
        learnBegunState();
    }
    std::for_each(scenario.given.begin(), scenario.given.end(), [this](const std::string& line) { mustRun(line); });
    _origin = look();
    arrange();
    rehearse();
    goBack();
}

void Stage::mustRun(const std::string& line) const {
    const Ending ending = _place.run(line);
    require(ending.code == 0 && ending.output.empty() && !ending.outputHeld,
            "'vorma " + line + "' must succeed: " + ending.text());
}

void Stage::learnBegunState() {
    mustRun(_scenario.next);
    _begun = sansTimes(_place.look().state.value_or(""));
    std::filesystem::remove_all(_place.store());
}

/** A store in which nothing was done yet is as good as none. */
View Stage::look() const {
    View view = _place.lookCalmly();
    if (_scenario.beginsWithoutStore() && view.state && sansTimes(*view.state) == _begun) {
        view.state.reset();
    }
    return view;
}

void Stage::arrange() {
    _place.disturb(_scenario.pidFile);
    if (_scenario.isRecovery()) {
        cut();
    }
    _before = look();
}

void Stage::cut() {
    WalkedRun run(_place, _scenario);
    run.cutAtRename();
    run.perform(_scenario.cut);
    require(run.ending().signal == SIGKILL,
            "'vorma " + _scenario.cut + "' must put a file in place: " + run.ending().text());
    learn(run);
}

void Stage::learn(const WalkedRun& run) {
    for (const auto& [file, texts] : run.placed()) {
        _texts[file].insert(texts.begin(), texts.end());
    }
}

void Stage::rehearse() {
    WalkedRun run(_place, _scenario);
    run.record();
    run.perform(_scenario.walked);
    learn(run);
    _calls = run.recorded();
    _length = run.calls();
    requireProperEnd(run.ending());
    require(run.ending().code == _scenario.code,
            "undisturbed, it must end with " + std::to_string(_scenario.code) + ": " + run.ending().text());
    if (run.ending().code == 0 && !run.unsynced().empty()) {
        _flaw = "the store must be synced after the rename of " + run.unsynced();
    }
    require(run.leftovers().empty(), "it must leave nobody behind but listeners");
    _after = look();
    if (_scenario.code == 0) {
        requireAsked();
    } else {
        judgeRefusal(run.ending(), _after, Maker::Adapter);
    }
}

void Stage::requireAsked() const {
    const DoorView& cli = _after.doors[0];
    if (_scenario.isRecovery() || _scenario.walked == "settle") {
        const std::string text = difference(_origin, _after, Match::Meaning);
        require(text.empty(), "it must be as it was before anything was cut short: " + text);
    } else if (_scenario.walked == "clissh lock") {
        require(!cli.file && cli.greeting.empty() && cli.silent.empty() && cli.listeners.empty(),
                "the door must be closed");
    } else if (_scenario.walked.starts_with("clissh unlock")) {
        require(cli.greeting == std::vector{_place.port(_scenario.walked.back())},
                "the door must be open on its port alone");
    } else {
        requireSettings(0);
        requireSettings(1);
    }
    require(_after.remains.empty() && _place.isBystanderAlive(),
            "files of a change must not remain, and bystanders must live");
}

void Stage::requireSettings(std::size_t door) const {
    const std::string found = _place.effective(door);
    for (const std::string text : {"ciphers aes128-ctr", "kexalgorithms ecdh-sha2-nistp256", "macs hmac-sha2-512",
                                   "ipqos ef ef", "rekeylimit 0 3600"}) {
        require(!_after.doors[door].file || found.find("\n" + text + "\n") != std::string::npos,
                std::string(doorNames[door]) + ": sshd -T must show " + text);
    }
    require(!_after.doors[door].file || _after.doors[door].offer.find(" aes128-ctr ") != std::string::npos,
            std::string(doorNames[door]) + ": the listener must offer aes128-ctr alone");
}

void Stage::goBack() {
    std::for_each(_scenario.back.begin(), _scenario.back.end(), [this](const std::string& line) { mustRun(line); });
    if (_scenario.beginsWithoutStore()) {
        std::filesystem::remove_all(_place.store());
    }
    const std::string text = difference(_origin, look(), Match::Meaning);
    require(text.empty(), "undoing it must lead to where it began: " + text);
}

Stage::Visit Stage::visit(const Fault& fault, unsigned seed) {
    arrange();
    WalkedRun run(_place, _scenario);
    run.setFault(fault);
    run.perform(_scenario.walked);
    const bool isKilled = run.ending().signal == SIGKILL && run.hit() != 0 && fault.mode != Mode::Fail;
    if (isKilled) {
        judgeKill(run);
    } else {
        judgeEnd(run, fault.address.maker);
    }
    if (isKilled && _journey.isTwice) {
        killNext(seed);
    }
    runNext(isKilled);
    requireOldOrNew();
    runAgain();
    goBack();
    return {run.hit(), run.ending().code == 9 ? run.ending().text() : ""};
}

}  // namespace TulTest
