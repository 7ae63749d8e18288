#ifndef TUL_NODE_OPTIONS_H
#define TUL_NODE_OPTIONS_H

#include <CLI/CLI.hpp>
#include <string>

#include "ComponentConfiguration.h"

namespace TulNode {

/** The command line of tul-node. */
class Options {
public:
    Options();

    /** CLI::ParseError, also for --help and --version; exit() below prints what it has to say. */
    void parse(int argc, const char* const* argv) { _parser.parse(argc, argv); }

    /** Prints the text and returns the exit code: 0 for help and version, else 2. */
    int exit(const CLI::ParseError& error) const;

    std::string help() const { return _parser.help(); }

    std::string componentFile; /**< empty: the one beside the program, or the installed one */
    std::string configurationFile;
    std::string modelFile;
    std::string stateFile;
    std::string scriptDirectory;
    std::string commandsFile;
    int logLevel = 6;
    int stopLimit = 120; /**< seconds */
    bool noLoad = false;
    bool stopOnError = false;

    /** The settings that were given, and else the built-in ones. */
    ComponentConfiguration configuration;

    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

private:
    void addSetting(const std::string& option, const std::string& setting, const std::string& help);

    CLI::App _parser{"The management framework of one development node."};
};

}  // namespace TulNode

#endif
