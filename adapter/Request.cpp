#include "Request.h"

#include <algorithm>

#include "Refusal.h"

namespace Vorma {

namespace {

using Words = std::vector<std::string>;

constexpr std::size_t longestShown = 80;

[[noreturn]] void refuse(const std::string& why) {
    throw Refusal(Exit::Usage, why + "; see vorma --help");
}

std::string quoted(const std::string& word) {
    return "'" + word.substr(0, longestShown) + "'";
}

[[noreturn]] void refuseValue(const std::string& what, const std::string& value, const std::string& allowed) {
    refuse(what + " " + quoted(value) + ": must be " + allowed);
}

Request parseDoor(std::size_t door, const Words& words) {
    Request request;
    request.kind = Request::Kind::Door;
    request.door = door;
    if (words.size() == 2 && words[1] == "lock") {
        return request;
    }
    if (words.size() != 4 || words[1] != "unlock" || words[2] != "port") {
        refuse("'" + words[0] + "' takes 'unlock port N' or 'lock'");
    }
    const long long port = number(words[3], 1, mostPort);
    if (port < 0) {
        refuseValue("port", words[3], "1 to 65535");
    }
    request.port = static_cast<int>(port);
    return request;
}

/** The row that an option sets, or takes away. */
std::size_t settingOf(const std::string& option) {
    const std::vector<SshSetting>& rows = sshSettings();
    const auto row = std::find_if(rows.begin(), rows.end(), [&option](const SshSetting& each) {
        return option == each.option || (each.removal != nullptr && option == each.removal);
    });
    if (row == rows.end()) {
        refuse(quoted(option) + " is no option of ssh");
    }
    return static_cast<std::size_t>(row - rows.begin());
}

Request::Assignment parseOption(const Words& words, std::size_t& at) {
    const std::size_t setting = settingOf(words[at]);
    const SshSetting& row = sshSettings()[setting];
    if (row.removal != nullptr && words[at] == row.removal) {
        ++at;
        return {row.removal, row.since, setting, std::nullopt};
    }
    if (at + 1 == words.size()) {
        refuse(words[at] + " needs a value");
    }
    const std::string& value = words[at + 1];
    if (!row.isAllowed(value)) {
        refuseValue(row.option, value, row.allowed);
    }
    at += 2;
    return {row.option, row.since, setting, value};
}

Request parseSsh(const Words& words) {
    Request request;
    request.kind = Request::Kind::Ssh;
    if (words.size() == 1) {
        refuse("ssh needs an option");
    }
    for (std::size_t at = 1; at < words.size();) {
        request.assignments.push_back(parseOption(words, at));
    }
    return request;
}

Request parsePlain(Request::Kind kind, const Words& words) {
    Request request;
    request.kind = kind;
    request.json = kind == Request::Kind::Status && words.size() == 2 && words[1] == "--json";
    if (words.size() > 1 && !request.json) {
        refuse(words[0] + " takes nothing more" + (kind == Request::Kind::Status ? " than --json" : ""));
    }
    return request;
}

std::string textOf(const Revision& revision) {
    return std::to_string(revision.major) + "." + std::to_string(revision.minor) + "." +
           std::to_string(revision.patch);
}

void describe(std::string& text, const std::string& option, const std::string& meaning) {
    constexpr std::size_t column = 36;
    text += "       " + option + std::string(column - std::min(option.size(), column - 2), ' ') + meaning + "\n";
}

}  // namespace

Request Request::parse(const Words& words) {
    if (words.empty()) {
        refuse("a command is missing");
    }
    const std::string& command = words[0];
    for (std::size_t door = 0; door < doorCount; ++door) {
        if (command == doorRows[door].name) {
            return parseDoor(door, words);
        }
    }
    if (command == "ssh") {
        return parseSsh(words);
    }
    constexpr std::pair<const char*, Kind> plain[] = {
        {"--help", Kind::Help}, {"spi-revision", Kind::Revision}, {"status", Kind::Status}, {"settle", Kind::Settle}};
    for (const auto& [name, kind] : plain) {
        if (command == name) {
            return parsePlain(kind, words);
        }
    }
    refuse(quoted(command) + " is no command");
}

void Request::checkKnownIn(const Revision& revision) const {
    for (const Assignment& assignment : assignments) {
        if (revision < assignment.since) {
            refuse(quoted(assignment.option) + " is not known in revision " + textOf(revision) + "; it came with " +
                   textOf(assignment.since));
        }
    }
}

State Request::applyTo(const State& state) const {
    State next = state;
    if (kind == Kind::Door) {
        next.ports[door] = port;
    }
    for (const Assignment& assignment : assignments) {
        next.settings[assignment.setting] = assignment.value;
    }
    return next;
}

std::vector<std::size_t> Request::doors() const {
    if (kind == Kind::Door) {
        return {door};
    }
    std::vector<std::size_t> all;
    for (std::size_t each = 0; each < doorCount; ++each) {
        all.push_back(each);
    }
    return all;
}

std::string help() {
    std::string doors;
    for (const DoorRow& row : doorRows) {
        doors += (doors.empty() ? "" : "|") + std::string(row.name);
    }
    std::string text =
        "usage: vorma " + doors + " unlock port N   open the door on port N, and on no other\n" + "       vorma " +
        doors + " lock            close the door\n" +
        "       vorma ssh OPTION...                     change how all doors serve, all or nothing\n"
        "       vorma settle                            bring everything in line with the state again\n"
        "       vorma spi-revision                      print the revision of this command line\n"
        "       vorma status [--json]                   print what is wanted, what is in force, and why\n"
        "ssh options (the later wins; what is not named keeps its value):\n";
    for (const SshSetting& row : sshSettings()) {
        describe(text, std::string(row.option) + " " + row.operand, row.allowed);
        if (row.removal != nullptr) {
            describe(text, row.removal, "sshd's own choice");
        }
    }
    text += "exit: 0 done  2 usage  3 settings  4 busy  5 store  6 refused  7 port taken  8 rolled back  9 lost\n";
    return text;
}

}  // namespace Vorma
