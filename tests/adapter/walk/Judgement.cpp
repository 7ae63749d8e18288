#include <algorithm>
#include <random>

#include "Stage.h"

// What a stage asks after each point.

namespace TulTest {

void Stage::judgeKill(const WalkedRun& run) const {
    const std::vector<pid_t> left = run.leftovers();
    require(left.empty(),
            "a killed run must leave nobody but listeners: " + (left.empty() ? "" : commandLine(left.front())));
    const View found = look();
    requireKnownTexts(found);
    requireOtherDoor(found);
}

void Stage::requireKnownTexts(const View& found) const {
    const auto isKnown = [this](const std::string& file, const std::string& text) {
        return _texts.contains(file) && _texts.at(file).contains(text);
    };
    for (std::size_t door = 0; door < std::size(doorNames); ++door) {
        const auto& file = found.doors[door].file;
        const bool isOldOrNew = !file || file == _before.doors[door].file || file == _after.doors[door].file;
        require(isOldOrNew || isKnown(_place.file(door), *file),
                std::string(doorNames[door]) + ".conf is neither old nor new: " + file.value_or(""));
        require(isOldOrNew || _place.effective(door).ends_with("exit 0"),
                std::string(doorNames[door]) + ".conf is not what sshd takes");
    }
    const std::string state = sansTimes(found.state.value_or(""));
    const auto& known = _texts.find(_place.store() / "state");
    const bool isPlaced =
        known != _texts.end() && std::any_of(known->second.begin(), known->second.end(),
                                             [&](const std::string& text) { return sansTimes(text) == state; });
    require(!found.state || state == sansTimes(_before.state.value_or("")) ||
                state == sansTimes(_after.state.value_or("")) || isPlaced,
            "state is neither old nor new: " + found.state.value_or(""));
}

void Stage::requireOtherDoor(const View& found) const {
    for (std::size_t door = 0; door < std::size(doorNames); ++door) {
        require(
            _scenario.names(door) || _scenario.isRecovery() || isUntouched(_before.doors[door], found.doors[door]),
            std::string(doorNames[door]) +
                ": the other door must not be touched: " + difference(_before, found, Match::Meaning));
    }
    require(_place.isBystanderAlive(), "a process that is not its own must live");
}

void Stage::judgeEnd(const WalkedRun& run, Maker struck) const {
    const Ending& ending = run.ending();
    if (!hasNotBegun(ending, run.isHitAtStart())) {
        requireProperEnd(ending);
    }
    require(run.leftovers().empty(), "it must leave nobody behind but listeners");
    const View found = look();
    if (ending.code == 0) {
        const std::string text = difference(_after, found, Match::Meaning);
        require(_scenario.code == 0, "it must not succeed: " + ending.text());
        // A candidate that could not be removed may stay until the next run, after which there must be none.
        require(text.empty(), "0 must mean that all is as asked for: " + text);
        if (struck != Maker::Listener) {
            requireOtherDoor(found);
        }
    } else if (ending.code != 9) {
        judgeRefusal(ending, found, struck);
    }
}

void Stage::judgeRefusal(const Ending& ending, const View& found, Maker struck) const {
    const std::string said = ending.text() + " must mean that the old state is in force: ";
    if (_scenario.isRecovery()) {
        requireKnownTexts(found);
        return;
    }
    const std::string text = difference(_before, found, Match::Bytes);
    require(text.empty(), said + text);
    const bool mustBeSame =
        (ending.code <= 6 || ending.code == 127 || _scenario.theft == Theft::Before) && struck != Maker::Listener;
    for (std::size_t door = 0; door < std::size(doorNames) && mustBeSame; ++door) {
        require(isUntouched(_before.doors[door], found.doors[door]),
                said + doorNames[door] + " has another listener");
    }
    require(_place.isBystanderAlive(), said + "a process that is not its own is gone");
}

void Stage::killNext(unsigned seed) const {
    std::mt19937 random(seed);
    const Scenario quiet{_scenario.name, {}, _scenario.next, {}, _scenario.next};
    WalkedRun run(_place, quiet);
    run.killAt(std::uniform_int_distribution(1, _length)(random));
    run.perform(_scenario.next);
    require(run.leftovers().empty(), "a killed run must leave nobody but listeners");
    requireKnownTexts(_place.lookCalmly());
}

bool Stage::mustServe(std::size_t door) const {
    return !_before.doors[door].greeting.empty() && !(_scenario.names(door) && _scenario.walked.ends_with("lock"));
}

bool Stage::greets(std::size_t door, Moment end) const {
    const std::string letters = door == 0 ? "AB" : "N";
    return std::any_of(letters.begin(), letters.end(),
                       [&](char letter) { return ask(_place.port(letter), end).kind == Answer::Greeting; });
}

void Stage::runNext(bool isMeasured) const {
    const auto limit = std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(1) * _journey.patience);
    std::vector<std::size_t> shut;
    for (std::size_t door = 0; door < std::size(doorNames) && isMeasured; ++door) {
        if (mustServe(door) && !greets(door, Clock::now() + limit)) {
            shut.push_back(door);
        }
    }
    const Moment end = Clock::now() + limit;
    AdapterRun run(_place.command(_scenario.next));
    run.release();
    for (const std::size_t door : shut) {
        require(await(end, [&] { return greets(door, end); }),
                std::string(doorNames[door]) + " must greet 1 s after the next run has begun");
    }
    const Ending ending = run.await(Clock::now() + std::chrono::seconds(25));
    require(ending.code == 0 && ending.output.empty(),
            "the next run, 'vorma " + _scenario.next + "', must succeed: " + ending.text());
}

void Stage::requireOldOrNew() const {
    const View found = look();
    const std::string fromOld = difference(_scenario.isRecovery() ? _origin : _before, found, Match::Meaning);
    const std::string fromNew = difference(_after, found, Match::Meaning);
    require(fromOld.empty() || fromNew.empty(),
            "the next run must put all in order: not old: " + fromOld + "; not new: " + fromNew);
    require(_place.isBystanderAlive(), "a process that is not its own must live");
}

void Stage::runAgain() const {
    if (_scenario.code != 0) {
        return;
    }
    mustRun(_scenario.walked);
    const View found = look();
    const std::string text = difference(_after, found, Match::Meaning);
    require(text.empty() && found.remains.empty(),
            "the same command again must do what it says: " + text + joined(found.remains));
}

}  // namespace TulTest
