#include "State.h"

#include <algorithm>
#include <limits>
#include <span>

#include "CheckSum.h"
#include "Refusal.h"
#include "SshSetting.h"
#include "Text.h"

namespace Vorma {

namespace {

constexpr std::string_view format = "vorma-state ";
constexpr std::string_view thisVersion = "2";
constexpr std::string_view sumMark = "sum";

/**
 * Of these lines, always all of them and in this order, the first release made its state; it knew no check sum. The
 * tables' first rows stay in this order for it.
 */
constexpr std::string_view firstFormat = "vorma-state 1\n";
constexpr const char* doorsOfFirst[] = {"clissh", "netconfssh"};
constexpr const char* settingsOfFirst[] = {"ciphers", "kexalgorithms", "macs", "dscp", "rekey"};

std::string written(const State& state) {
    std::string text = std::string(format) + std::string(thisVersion) + "\n";
    const auto add = [&text](const std::string& key, const std::string& value) { text += key + " " + value + "\n"; };
    for (std::size_t door = 0; door < doorCount; ++door) {
        const std::string name = doorRows[door].name;
        if (state.ports[door]) {
            add(name + ".port", std::to_string(*state.ports[door]));
        }
        if (state.since[door] != 0) {
            add(name + ".since", std::to_string(state.since[door]));
        }
    }
    for (std::size_t setting = 0; setting < sshSettings().size(); ++setting) {
        if (state.settings[setting]) {
            add(std::string("ssh.") + sshSettings()[setting].name, *state.settings[setting]);
        }
    }
    return text;
}

std::string_view afterBlank(std::string_view line) {
    const std::size_t blank = line.find(' ');
    return blank == std::string_view::npos ? "" : line.substr(blank + 1);
}

enum class Line { Taken, Unknown, Bad };

Line takenIf(bool good) {
    return good ? Line::Taken : Line::Bad;
}

Line takeDoorLine(State& state, std::size_t door, std::string_view what, std::string_view value) {
    if (what == ".port") {
        const long long port = number(value, 1, mostPort);
        state.ports[door] = static_cast<int>(port);
        return takenIf(port > 0);
    }
    if (what == ".since") {
        state.since[door] = number(value, 1, std::numeric_limits<std::int64_t>::max());
        return takenIf(state.since[door] > 0);
    }
    return Line::Unknown;
}

Line takeLine(State& state, std::string_view key, std::string_view value) {
    for (std::size_t door = 0; door < doorCount; ++door) {
        const std::string_view name = doorRows[door].name;
        if (key.starts_with(name)) {
            return takeDoorLine(state, door, key.substr(name.size()), value);
        }
    }
    for (std::size_t setting = 0; setting < sshSettings().size(); ++setting) {
        if (key == std::string("ssh.") + sshSettings()[setting].name) {
            state.settings[setting] = value;
            return takenIf(sshSettings()[setting].isAllowed(value));
        }
    }
    return Line::Unknown;
}

[[noreturn]] void refuseLater(const std::string& file, const std::string& what) {
    throw Refusal(Exit::Store, file + " was written by a later vorma: " + what + "; nothing was changed");
}

/** The check sum holds: whatever is not understood now was meant so by a later release. */
std::optional<State> readSound(std::string_view body, const std::string& file) {
    std::vector<std::string_view> lines = partsOf(body, '\n');
    if (lines.front() != std::string(format) + std::string(thisVersion)) {
        refuseLater(file, "its first line is '" + std::string(lines.front()) + "', this one reads up to version " +
                              std::string(thisVersion));
    }
    State state;
    for (const std::string_view line : std::span(lines).subspan(1)) {
        const std::string_view key = line.substr(0, line.find(' '));
        switch (takeLine(state, key, afterBlank(line))) {
            case Line::Taken:
                break;
            case Line::Unknown:
                refuseLater(file, "it sets '" + std::string(key) + "', which this one does not know");
            case Line::Bad:
                refuseLater(file, "it has '" + std::string(line) + "', whose value this one does not know");
        }
    }
    return state;
}

std::string writtenByFirst(const State& state) {
    std::string text(firstFormat);
    for (std::size_t i = 0; i < std::size(doorsOfFirst); ++i) {
        text += std::string(doorsOfFirst[i]) + " " + (state.ports[i] ? std::to_string(*state.ports[i]) : "") + "\n";
    }
    for (std::size_t i = 0; i < std::size(settingsOfFirst); ++i) {
        text += std::string(settingsOfFirst[i]) + " " + state.settings[i].value_or("") + "\n";
    }
    return text + "end\n";
}

/** Of the first format only what reads exactly as it was written is believed: it has no check sum. */
std::optional<State> readFirst(const std::string& text) {
    const std::vector<std::string_view> lines = partsOf(text, '\n');
    const std::size_t doors = std::size(doorsOfFirst);
    State state;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::string value(afterBlank(lines[i]));
        const long long port = number(value, 1, mostPort);
        if (i <= doors) {
            state.ports[i - 1] = port > 0 ? std::optional(static_cast<int>(port)) : std::nullopt;
        } else if (i <= doors + std::size(settingsOfFirst) && sshSettings()[i - 1 - doors].isAllowed(value)) {
            state.settings[i - 1 - doors] = value;
        }
    }
    return writtenByFirst(state) == text ? std::optional(state) : std::nullopt;
}

}  // namespace

State::State() : settings(sshSettings().size()) {}

std::string State::text() const {
    return withCheckSum(written(*this), sumMark);
}

std::optional<State> State::read(const std::string& text, const std::string& file) {
    if (text.starts_with(firstFormat)) {
        return readFirst(text);
    }
    const auto body = vouchedFor(text, sumMark);
    if (!body || !body->starts_with(format)) {
        return std::nullopt;
    }
    auto state = readSound(*body, file);
    if (state && state->text() != text) {
        refuseLater(file, "its lines are not as this one writes them");
    }
    return state;
}

}  // namespace Vorma
