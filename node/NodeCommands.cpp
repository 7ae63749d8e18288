#include "NodeCommands.h"

#include <chrono>

#include "ModelText.h"
#include "Refusal.h"
#include "ScriptWrapper.h"
#include "Text.h"

namespace TulNode {

namespace {

constexpr const char* adapterName = "vorma";

Words onlyFirst(const Words& given, Words candidates) {
    return given.empty() ? std::move(candidates) : Words{};
}

long long numberFrom(const std::string& what, const std::string& text, long long least, long long most) {
    const auto number = toNumber(text);
    if (!number || *number < least || *number > most) {
        throw Refusal(BRY_OUT_OF_RANGE, what + " is \"" + escape(text) + "\"; allowed: a number from " +
                                            std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
}

}  // namespace

NodeCommands::NodeCommands(Node& node, Output& output, std::function<bool()> interrupted)
    : _node(node), _output(output), _interrupted(std::move(interrupted)) {
    _followed["log"] = true;
    _followed["runs"] = true;
    _followed["events"] = false;
    _node.services.journal.listen([this](const Record& record) { lineIfFollowed("log", "log: " + record.line()); });
    _node.services.runs.listen([this](const AdapterRun& run) { lineIfFollowed("runs", "run: " + run.line()); });
    _node.services.onChange = [this](const MoChange& change) {
        lineIfFollowed("events", "event: " + formatChange(change));
    };
}

NodeCommands::~NodeCommands() {
    _node.services.journal.listen(nullptr);
    _node.services.runs.listen(nullptr);
    _node.services.onChange = nullptr;
}

std::vector<Command> NodeCommands::commands() {
    const auto followed = [](const Words& given) {
        return given.empty() ? Words{"log", "runs", "events", "all"} : Words{"on", "off"};
    };
    const auto settings = [this](const Words& given) {
        Words names{"default"};
        for (const auto& setting : _node.configuration.settings()) {
            names.push_back(setting.name + "=");
        }
        return onlyFirst(given, names);
    };
    return {
        {"load", "", "Loads and initialises the component.", 0, 0, [this](const Words&) { load(); }, nullptr},
        {"start", "", "Starts the loaded component.", 0, 0, [this](const Words&) { start(BRY_REASON_OPERATOR); },
         nullptr},
        {"stop", "", "Stops the component.", 0, 0, [this](const Words&) { stop(BRY_REASON_OPERATOR); }, nullptr},
        {"unload", "", "Stops the component if need be, terminates and unloads it.", 0, 0,
         [this](const Words&) { unload(BRY_REASON_OPERATOR); }, nullptr},
        {"reload", "", "Takes the component down and brings it up again, with the configuration that is set.", 0, 0,
         [this](const Words&) {
             unload(BRY_REASON_RELOAD);
             loadAndStart(BRY_REASON_RELOAD);
         },
         nullptr},
        {"configure", "[FILE|default|setting=value ...]",
         "Shows the component's configuration, or sets the one for the next load.", 0, anyNumber,
         [this](const Words& given) { configure(given); }, settings},
        {"status", "", "Shows the component and its state.", 0, 0, [this](const Words&) { status(); }, nullptr},
        {"ports", "", "Asks the adapter for the ports and settings of sshd.", 0, 0, [this](const Words&) { ports(); },
         nullptr},
        {"runs", "", "Lists the adapter's runs so far.", 0, 0, [this](const Words&) { runs(); }, nullptr},
        {"log", "[COUNT]", "Shows the last records, with their times.", 0, 1,
         [this](const Words& given) { log(given); }, nullptr},
        {"log-level", "[LEVEL]", "Shows or sets the level: 3 errors, 4 warnings, 6 information, 8 traces too.", 0, 1,
         [this](const Words& given) { logLevel(given); }, nullptr},
        {"follow", "log|runs|events|all on|off", "Says what is printed as it happens.", 2, 2,
         [this](const Words& given) { follow(given); }, followed},
        {"wait", "[SECONDS]", "Waits until all notifications have been handled.", 0, 1,
         [this](const Words& given) { wait(given); }, nullptr},
    };
}

void NodeCommands::lineIfFollowed(const std::string& what, const std::string& text) {
    if (_followed.at(what)) {
        _output.line(text);
    }
}

void NodeCommands::lines(const std::string& text) {
    for (const std::string& line : split(text, '\n')) {
        if (!line.empty()) {
            _output.line(escape(line));
        }
    }
}

void NodeCommands::load() {
    _node.load();
    _output.line("component: loaded " + _node.loader.name());
}

void NodeCommands::start(BryStateChangeReason reason) {
    _node.loader.start(reason);
    _output.line("component: started");
}

void NodeCommands::stop(BryStateChangeReason reason) {
    const BryReturnT result = _node.loader.stop(reason);
    _output.line("component: stopped");
    if (result != BRY_OK) {
        throw Refusal(result, "stop returned " + codeText(result));
    }
}

void NodeCommands::unload(BryStateChangeReason reason) {
    const ComponentLoader::State state = _node.loader.state();
    const BryReturnT result = _node.loader.unload(reason);
    if (state == ComponentLoader::State::Started) {
        _output.line("component: stopped");
    }
    if (state != ComponentLoader::State::Unloaded) {
        _output.line("component: unloaded");
    }
    if (result != BRY_OK) {
        throw Refusal(result, "stop returned " + codeText(result));
    }
}

void NodeCommands::loadAndStart(BryStateChangeReason reason) {
    load();
    start(reason);
}

void NodeCommands::status() {
    const ComponentLoader::State state = _node.loader.state();
    const std::string word = state == ComponentLoader::State::Started  ? "started"
                             : state == ComponentLoader::State::Loaded ? "loaded"
                                                                       : "unloaded";
    _output.line("component: " + word + (_node.loader.name().empty() ? "" : " " + _node.loader.name()));
    _output.line("file: " + _node.componentFile);
    _output.line("misbehaved: " + std::to_string(_node.services.journal.accusations()));
}

void NodeCommands::ports() {
    lines(Tul::ScriptWrapper(adapterName).invoke({"status"}, statusTimeout));
}

void NodeCommands::configure(const Words& arguments) {
    if (arguments.empty()) {
        lines(_node.configuration.xml());
        return;
    }
    // On a copy, so that a refused setting leaves all as they were.
    ComponentConfiguration changed = _node.configuration;
    for (const std::string& word : arguments) {
        const std::size_t equals = word.find('=');
        if (equals != std::string::npos) {
            changed.set(word.substr(0, equals), word.substr(equals + 1));
        } else if (word == "default") {
            changed.useDefaults();
        } else {
            changed.useFile(word);
        }
    }
    _node.configuration = changed;
}

void NodeCommands::logLevel(const Words& arguments) {
    if (arguments.empty()) {
        _output.line("log-level: " + std::to_string(_node.services.journal.level()));
        return;
    }
    const long long level = numberFrom("the level", arguments[0], 0, highestLevel);
    _node.services.journal.setLevel(static_cast<std::int32_t>(level));
}

void NodeCommands::log(const Words& arguments) {
    const long long count = arguments.empty() ? 20 : numberFrom("the count", arguments[0], 1, Journal::mostRecords);
    for (const Record& record : _node.services.journal.last(static_cast<std::size_t>(count))) {
        _output.line(record.lineWithTime());
    }
}

void NodeCommands::follow(const Words& arguments) {
    const std::string& what = arguments[0];
    if ((what != "all" && !_followed.contains(what)) || (arguments[1] != "on" && arguments[1] != "off")) {
        throw Refusal(BRY_INVALID_ARGUMENT, "cannot follow \"" + escape(what) + " " + escape(arguments[1]) +
                                                "\"; allowed: log, runs, events or all, then on or off");
    }
    for (auto& [name, isOn] : _followed) {
        if (what == "all" || what == name) {
            isOn = arguments[1] == "on";
        }
    }
}

void NodeCommands::runs() {
    for (const AdapterRun& run : _node.services.runs.runs()) {
        _output.line(std::to_string(run.number) + " " + run.line());
    }
}

void NodeCommands::wait(const Words& arguments) {
    const long long most = arguments.empty() ? defaultWait : numberFrom("the time", arguments[0], 1, 86'400);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(most);
    // In slices, because a signal has to end it.
    while (!_node.services.router.waitUntilIdle(std::chrono::milliseconds(100))) {
        if (_interrupted() || std::chrono::steady_clock::now() >= deadline) {
            throw Refusal(BRY_TIMED_OUT, "notifications are still being handled");
        }
    }
}

}  // namespace TulNode
