#include "Shell.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "ModelText.h"
#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

std::string usage(const Command& command) {
    return command.name + (command.arguments.empty() ? "" : " " + command.arguments);
}

}  // namespace

Shell::Shell(std::vector<Command> commands, Output& output) : _commands(std::move(commands)), _output(output) {
    const auto commandNames = [this](const Words& given) { return given.empty() ? names() : Words{}; };
    _commands.push_back({"echo", "TEXT", "Prints the text.", 0, anyNumber,
                         [this](const Words& given) { _output.line(escape(join(given, " "))); }, nullptr});
    _commands.push_back({"help", "[COMMAND]", "Shows the commands, or one of them.", 0, 1,
                         [this](const Words& given) { help(given); }, commandNames});
    _commands.push_back({"quit", "", "Stops and unloads the component and ends.", 0, 0,
                         [this](const Words&) { _over = true; }, nullptr});
}

bool Shell::execute(const std::string& line, const std::string& place) {
    try {
        run(splitWords(line));
        return true;
    } catch (const std::exception& e) {
        _output.line("error: " + place + escape(e.what()));
        return false;
    }
}

void Shell::run(const Words& words) {
    if (words.empty() || words[0].starts_with('#')) {
        return;
    }
    const Command& command = find(words[0]);
    const Words arguments(words.begin() + 1, words.end());
    if (arguments.size() < command.least || arguments.size() > command.most) {
        throw Refusal(BRY_INVALID_ARGUMENT, "usage: " + usage(command));
    }
    command.run(arguments);
}

const Command& Shell::find(const std::string& name) const {
    const auto found = std::find_if(_commands.begin(), _commands.end(),
                                    [&name](const Command& command) { return command.name == name; });
    if (found == _commands.end()) {
        throw Refusal(BRY_NOT_FOUND, "there is no command \"" + name + "\"; help lists them");
    }
    return *found;
}

void Shell::help(const Words& arguments) const {
    if (!arguments.empty()) {
        const Command& command = find(arguments[0]);
        _output.line(usage(command));
        _output.line("  " + command.help);
        return;
    }
    for (const Command& command : _commands) {
        _output.line(usage(command));
        _output.line("    " + command.help);
    }
}

Words Shell::names() const {
    Words result;
    for (const Command& command : _commands) {
        result.push_back(command.name);
    }
    return result;
}

Words Shell::completions(const std::string& text) const {
    const std::size_t blank = text.find_last_of(" \t");
    const std::string begun = blank == std::string::npos ? text : text.substr(blank + 1);
    Words result;
    try {
        Words words = splitWords(text.substr(0, text.size() - begun.size()));
        if (words.empty()) {
            result = names();
        } else if (const Command& command = find(words[0]); command.candidates) {
            words.erase(words.begin());
            result = command.candidates(words);
        }
    } catch (const Refusal&) {
        return {};  // what stands before is wrong: there is nothing to offer
    }
    std::erase_if(result, [&begun](const std::string& word) { return !word.starts_with(begun); });
    std::sort(result.begin(), result.end());
    return result;
}

}  // namespace TulNode
