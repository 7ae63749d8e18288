/*
 * Any bytes as a command line, its words ended by NUL: against a reference, and through to the state that is kept of
 * it and to the file that sshd gets.
 */

#include <map>
#include <set>

#include "Allowed.h"
#include "ArgumentsSubject.h"
#include "DoorFile.h"
#include "Refusal.h"
#include "Target.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;
using Vorma::Request;
using Vorma::State;
using Words = std::vector<std::string>;

const std::map<std::string, std::size_t> options{
    {"--ciphers", 0}, {"--kexAlgorithms", 1}, {"--macs", 2}, {"--ipQos", 3}, {"--renegotiationTime", 4}};

const std::map<std::string, Request::Kind> kinds{
    {"clissh", Request::Kind::Door},   {"netconfssh", Request::Kind::Door}, {"ssh", Request::Kind::Ssh},
    {"settle", Request::Kind::Settle}, {"status", Request::Kind::Status},   {"spi-revision", Request::Kind::Revision},
    {"--help", Request::Kind::Help}};

std::optional<State> afterDoor(const Words& words, State state) {
    std::optional<int>& port = state.ports[words[0] == "clissh" ? 0 : 1];
    if (words.size() == 2 && words[1] == "lock") {
        port.reset();
        return state;
    }
    if (words.size() == 4 && words[1] == "unlock" && words[2] == "port" && isPort(words[3])) {
        port = std::stoi(words[3]);
        return state;
    }
    return {};
}

std::optional<State> afterOptions(const Words& words, State state) {
    for (std::size_t at = 1; at < words.size(); ++at) {
        if (words[at] == "--removeIpQoS") {
            state.settings[3].reset();
            continue;
        }
        const auto option = options.find(words[at]);
        if (option == options.end() || ++at == words.size() ||
            !isSetting(Vorma::sshSettings()[option->second].name, words[at])) {
            return {};
        }
        state.settings[option->second] = words[at];
    }
    return words.size() > 1 ? std::optional(state) : std::nullopt;
}

/** What a state becomes; nothing when the command line is none. */
std::optional<State> expectedAfter(const Words& words, const State& state) {
    const auto kind = words.empty() ? kinds.end() : kinds.find(words[0]);
    if (kind == kinds.end()) {
        return {};
    }
    if (kind->second == Request::Kind::Door) {
        return afterDoor(words, state);
    }
    if (kind->second == Request::Kind::Ssh) {
        return afterOptions(words, state);
    }
    const bool json = words.size() == 2 && kind->second == Request::Kind::Status && words[1] == "--json";
    return words.size() == 1 || json ? std::optional(state) : std::nullopt;
}

std::optional<Request> reading(const Words& words) {
    try {
        return readArguments(words);
    } catch (const Vorma::Refusal& refusal) {
        require(refusal.code() == Vorma::Exit::Usage, "a command line is refused with the code for it");
        require(std::string(refusal.what()).ends_with("; see vorma --help"), "a refusal says where to look");
        return {};
    }
}

/** How many words each line of a door's file has, by its first. */
const std::map<std::string, std::size_t> wordsOfLine{{"Port", 2},    {"ListenAddress", 2}, {"PidFile", 2},
                                                     {"Ciphers", 2}, {"MACs", 2},          {"KexAlgorithms", 2},
                                                     {"Include", 2}, {"IPQoS", 2},         {"RekeyLimit", 3}};

void checkLine(const std::string& line, std::set<std::string>& seen) {
    const Words words = split(line, ' ');
    const auto known = wordsOfLine.find(words[0]);
    require(known != wordsOfLine.end(), "each line begins with a keyword that was meant");
    require(words.size() == known->second, "each line has as many words as were meant");
    require(line.find_first_of("\t\r\v\f\"'\\") == std::string::npos && line.find('\0') == std::string::npos,
            "no line has what sshd reads otherwise");
    require(seen.insert(words[0]).second || words[0] == "Include", "no keyword comes twice");
    require(!seen.contains("Include") || words[0] == "Include" || words[0] == "IPQoS",
            "behind the operator's files stands nothing but what has to");
    require(words[0] != "IPQoS" || seen.contains("Include"), "of IPQoS the last value counts");
}

void checkFile(const State& state, std::size_t door, int port) {
    Vorma::Configuration configuration;
    configuration.stateDirectory = "/s";
    configuration.baseConfig = "/base";
    configuration.doorConfigs = {"/cli", "/netconf"};
    configuration.listenAddress = "::1";
    const std::string text = Vorma::DoorFile::render(door, port, state, configuration);
    const std::string body = text.substr(0, text.find("\n# sum ") + 1);
    require(text == body + sumOf(body, "# sum"), "the file ends with its sum");
    require(Vorma::DoorFile::portIn(text) == port, "the file tells its port");
    std::set<std::string> seen;
    Words lines = split(body, '\n');
    lines.pop_back();
    for (std::size_t i = 1; i < lines.size(); ++i) {
        checkLine(lines[i], seen);
    }
}

void check(const Words& words, const State& before) {
    const std::optional<Request> request = reading(words);
    const std::optional<State> expected = expectedAfter(words, before);
    require(request.has_value() == expected.has_value(), "taken exactly when the reference takes it");
    if (!request) {
        return;
    }
    require(request->kind == kinds.at(words[0]) && request->json == (words.back() == "--json"), "it is what it says");
    const State after = request->applyTo(before);
    require(after == *expected, "the state becomes that of the reference");
    require(State::read(after.text(), "state") == after, "what is kept of it reads the same");
    for (std::size_t door = 0; door < Vorma::doorCount; ++door) {
        checkFile(after, door, after.ports[door].value_or(1));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Words words = split(std::string_view(reinterpret_cast<const char*>(data), size), '\0');
    words.pop_back();
    State before;
    check(words, before);
    before.ports = {22, 830};
    before.settings = {"aes256-ctr", "curve25519-sha256", "hmac-sha2-256", "46", "3600"};
    check(words, before);
    return 0;
}
