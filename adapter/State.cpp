#include "State.h"

#include <algorithm>
#include <limits>
#include <sstream>

#include "CheckSum.h"
#include "Refusal.h"
#include "SshSetting.h"

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
    std::ostringstream text;
    text << format << thisVersion << '\n';
    for (std::size_t door = 0; door < doorCount; ++door) {
        const std::string name = doorRows[door].name;
        if (state.ports[door]) {
            text << name << ".port " << *state.ports[door] << '\n';
        }
        if (state.since[door] != 0) {
            text << name << ".since " << state.since[door] << '\n';
        }
    }
    for (std::size_t setting = 0; setting < sshSettings().size(); ++setting) {
        if (state.settings[setting]) {
            text << "ssh." << sshSettings()[setting].name << ' ' << *state.settings[setting] << '\n';
        }
    }
    return text.str();
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
std::optional<State> readSound(const std::string& body, const std::string& file) {
    std::istringstream lines(body);
    std::string line;
    std::getline(lines, line);
    if (line != std::string(format) + std::string(thisVersion)) {
        refuseLater(file,
                    "its first line is '" + line + "', this one reads up to version " + std::string(thisVersion));
    }
    State state;
    while (std::getline(lines, line)) {
        const std::string_view key = std::string_view(line).substr(0, line.find(' '));
        switch (takeLine(state, key, afterBlank(line))) {
            case Line::Taken:
                break;
            case Line::Unknown:
                refuseLater(file, "it sets '" + std::string(key) + "', which this one does not know");
            case Line::Bad:
                refuseLater(file, "it has '" + line + "', whose value this one does not know");
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
    std::istringstream lines(text.substr(firstFormat.size()));
    State state;
    std::string line;
    for (std::size_t i = 0; i < std::size(doorsOfFirst) && std::getline(lines, line); ++i) {
        const long long port = number(afterBlank(line), 1, mostPort);
        state.ports[i] = port > 0 ? std::optional(static_cast<int>(port)) : std::nullopt;
    }
    for (std::size_t i = 0; i < std::size(settingsOfFirst) && std::getline(lines, line); ++i) {
        const std::string value(afterBlank(line));
        state.settings[i] = sshSettings()[i].isAllowed(value) ? std::optional(value) : std::nullopt;
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
    return readSound(std::string(*body), file);
}

}  // namespace Vorma
