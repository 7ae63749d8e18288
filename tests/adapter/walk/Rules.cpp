#include "Rules.h"

#include <algorithm>
#include <sstream>

namespace TulTest {

namespace {

std::string stateDifference(const View& wanted, const View& found, Match match) {
    const auto text = [match](const View& view) {
        return match == Match::Bytes || !view.state ? view.state : std::optional(sansTimes(*view.state));
    };
    return text(wanted) == text(found) ? "" : "state is not as it should be: " + found.state.value_or("absent");
}

std::string doorDifference(const DoorView& wanted, const DoorView& found) {
    const std::size_t listeners = wanted.greeting.empty() ? 0 : 1;
    if (wanted.file != found.file) {
        return "its file is not as it should be: " + found.file.value_or("absent");
    }
    if (!found.silent.empty()) {
        return "port " + std::to_string(found.silent.front()) + " takes connections and does not greet";
    }
    if (wanted.greeting != found.greeting) {
        return "it greets on " + (found.greeting.empty() ? "no port"
                                                         : "port " + std::to_string(found.greeting.front()) +
                                                               (found.greeting.size() > 1 ? " and another" : ""));
    }
    if (wanted.offer != found.offer) {
        return "its listener offers " + found.offer;
    }
    return found.listeners.size() == listeners ? ""
                                               : "it has " + std::to_string(found.listeners.size()) + " listeners";
}

}  // namespace

void require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw Violation(otherwise);
    }
}

std::string sansTimes(const std::string& state) {
    std::istringstream lines(state);
    std::vector<std::string> kept;
    for (std::string line; std::getline(lines, line);) {
        if (line.find(".since") == std::string::npos) {
            kept.push_back(line + "\n");
        }
    }
    if (!kept.empty()) {
        kept.pop_back();
    }
    return joined(kept);
}

std::string difference(const View& wanted, const View& found, Match match) {
    for (std::size_t door = 0; door < std::size(doorNames); ++door) {
        const std::string text = doorDifference(wanted.doors[door], found.doors[door]);
        if (!text.empty()) {
            return std::string(doorNames[door]) + ": " + text;
        }
    }
    return stateDifference(wanted, found, match);
}

bool isUntouched(const DoorView& before, const DoorView& after) {
    return before.file == after.file && before.listeners == after.listeners && before.greeting == after.greeting &&
           before.offer == after.offer;
}

bool hasNotBegun(const Ending& ending, bool isHitAtStart) {
    const bool isLoaders = ending.output.find("error while loading shared libraries") != std::string::npos;
    return (ending.code == 127 && isLoaders) || (ending.signal != 0 && isHitAtStart);
}

void requireProperEnd(const Ending& ending) {
    const std::string& said = ending.output;
    require(!ending.hung && ending.signal == 0, "it must end by itself: " + ending.text());
    require(!ending.outputHeld, "somebody whom it left behind holds its output");
    require(ending.code == 0 || (ending.code >= 2 && ending.code <= 9),
            "it must end with a code of its own: " + ending.text());
    require(ending.code != 0 || said.empty(), "it must say nothing when all went well: " + ending.text());
    require(ending.code == 0 || (said.starts_with("vorma: ") && std::count(said.begin(), said.end(), '\n') == 1 &&
                                 said.back() == '\n'),
            "it must say in one line what was refused: " + ending.text());
}

}  // namespace TulTest
