#include "Options.h"

#include "Refusal.h"

namespace TulNode {

namespace {

constexpr int exitBadOptions = 2;

}  // namespace

Options::Options() {
    _parser.name("tul-node");
    _parser.set_version_flag("--version", "tul-node " TUL_NODE_VERSION);
    _parser.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    _parser
        .add_option("--component", componentFile,
                    "The component's library; default: ../lib beside the program, else the installed one")
        ->option_text("FILE");
    _parser.add_option("--script-dir", scriptDirectory, "Where the adapter script is; default: the installed folder")
        ->option_text("DIR")
        ->check(CLI::ExistingDirectory);
    _parser.add_option("--state", stateFile, "Keeps the model in this file; default: in memory, gone at the end")
        ->option_text("FILE");
    _parser.add_option("--model", modelFile, "What to make when the state is empty; default: the built-in model")
        ->option_text("FILE")
        ->check(CLI::ExistingFile);
    _parser.add_option("--config", configurationFile, "The component's configuration (XML)")
        ->option_text("FILE")
        ->check(CLI::ExistingFile);
    addSetting("--cli-port", "cliPort", "In the built-in configuration: the port of the CLI");
    addSetting("--netconf-port", "netconfPort", "In the built-in configuration: the port of NETCONF");
    addSetting("--renegotiation-time", "renegotiationTime", "In the built-in configuration: seconds; 0: none");
    _parser.add_option("--commands", commandsFile, "Takes the commands from this file instead of standard input")
        ->option_text("FILE")
        ->check(CLI::ExistingFile);
    _parser.add_option("--log-level", logLevel, "3 errors, 4 warnings, 6 information, 8 and above traces too")
        ->option_text("LEVEL")
        ->check(CLI::Range(0, 15));
    _parser.add_option("--stop-limit", stopLimit, "How long stopping may take at the end before the node gives up")
        ->option_text("SECONDS")
        ->check(CLI::Range(1, 3600));
    _parser.add_flag("--no-load", noLoad, "Does not load and start the component");
    _parser.add_flag("--stop-on-error", stopOnError, "Ends at the first command that fails");
}

void Options::addSetting(const std::string& option, const std::string& setting, const std::string& help) {
    const auto set = [this, option, setting](const std::string& value) {
        try {
            configuration.set(setting, value);
        } catch (const Refusal& refusal) {
            throw CLI::ValidationError(option, refusal.what());
        }
    };
    _parser.add_option_function<std::string>(option, set, help)->option_text("NUMBER")->excludes("--config");
}

int Options::exit(const CLI::ParseError& error) const {
    return _parser.exit(error) == 0 ? 0 : exitBadOptions;
}

}  // namespace TulNode
