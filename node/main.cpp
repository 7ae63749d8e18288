// The development node: reads its options, brings the component up, carries out commands, and takes it down.

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>

#include "Defaults.h"
#include "LineSource.h"
#include "ModelCommands.h"
#include "Node.h"
#include "NodeCommands.h"
#include "Options.h"
#include "Prompt.h"
#include "Shell.h"
#include "Text.h"

namespace {

using namespace TulNode;

enum ExitCode { AllWell = 0, SomethingFailed = 1, CannotBegin = 2, NotStarted = 3 };

// --- signals: the first asks for an orderly end, the second does not wait for it -------------------------------

std::array<int, 2> wakeUpPipe{-1, -1};
std::atomic<int> signalsReceived{0};

void onSignal(int /*signal*/) {
    if (signalsReceived.fetch_add(1) > 0) {
        _exit(SomethingFailed);
    }
    const int saved = errno;
    [[maybe_unused]] const ssize_t written = write(wakeUpPipe[1], "", 1);
    errno = saved;
}

void onStopLimit(int /*signal*/) {
    constexpr char text[] = "error: stopping takes longer than --stop-limit allows; giving up\n";
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text, sizeof text - 1);
    _exit(SomethingFailed);
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

void handleSignals() {
    if (pipe2(wakeUpPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::runtime_error(std::string("no pipe for the signals: ") + std::strerror(errno));
    }
    handle(SIGINT, onSignal);
    handle(SIGTERM, onSignal);
    handle(SIGHUP, onSignal);
    handle(SIGALRM, onStopLimit);
    handle(SIGPIPE, SIG_IGN);  // a reader of our output that went away must not end the node in mid-change
}

bool isInterrupted() {
    return signalsReceived.load() > 0;
}

// --- the node --------------------------------------------------------------------------------------------------

/** In a build folder the one that was built with the program, else the installed one. */
std::string defaultComponent() {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    const auto built = program.parent_path().parent_path() / "lib" / "libtul_sshd_manager.so";
    return std::filesystem::exists(built) ? built.string() : TUL_INSTALLED_COMPONENT;
}

Node::Settings settingsFrom(const Options& options) {
    return {options.stateFile, options.componentFile.empty() ? defaultComponent() : options.componentFile,
            options.scriptDirectory};
}

void prepare(Node& node, const Options& options) {
    node.services.journal.setLevel(options.logLevel);
    node.configuration = options.configuration;
    node.configuration.keepAsDefaults();
    if (!options.configurationFile.empty()) {
        node.configuration.useFile(options.configurationFile);
    }
    if (options.modelFile.empty()) {
        node.applyInitialModel(defaultModel, "built-in model");
    } else {
        node.applyInitialModel(readFile(options.modelFile), options.modelFile);
    }
}

std::vector<Command> together(std::vector<Command> commands, const std::vector<Command>& more) {
    commands.insert(commands.end(), more.begin(), more.end());
    return commands;
}

/** False when a command failed; at a terminal that is the operator's business and does not count. */
bool carryOut(Shell& shell, LineSource& source, bool isTerminal, bool stopOnError) {
    bool allWell = true;
    for (std::size_t number = 1; !shell.isOver() && !isInterrupted(); ++number) {
        const std::optional<std::string> line = source.next();
        if (!line) {
            break;
        }
        const std::string place = isTerminal ? "" : "line " + std::to_string(number) + ": ";
        if (!shell.execute(*line, place)) {
            allWell = isTerminal && allWell;
            if (stopOnError) {
                break;
            }
        }
    }
    return allWell;
}

bool carryOutCommands(Shell& shell, Output& output, const Options& options) {
    if (!options.commandsFile.empty()) {
        const int file = open(options.commandsFile.c_str(), O_RDONLY | O_CLOEXEC);
        DescriptorLines lines(file, wakeUpPipe[0]);
        const bool allWell = carryOut(shell, lines, false, options.stopOnError);
        close(file);
        return allWell;
    }
    if (isatty(STDIN_FILENO) != 0) {
        Prompt prompt(shell, output, wakeUpPipe[0]);
        return carryOut(shell, prompt, true, false);
    }
    DescriptorLines lines(STDIN_FILENO, wakeUpPipe[0]);
    return carryOut(shell, lines, false, options.stopOnError);
}

template <class Step>
bool succeeds(Output& output, Step&& step) {
    try {
        step();
        return true;
    } catch (const std::exception& e) {
        output.line("error: " + escape(e.what()));
        return false;
    }
}

ExitCode run(const Options& options) {
    handleSignals();
    Node node(settingsFrom(options));
    prepare(node, options);
    Output output(stdout);
    NodeCommands nodeCommands(node, output, isInterrupted);
    ModelCommands modelCommands(node.services.transactions, output);
    Shell shell(together(nodeCommands.commands(), modelCommands.commands()), output);

    const bool started = options.noLoad || succeeds(output, [&] { nodeCommands.loadAndStart(BRY_REASON_NORMAL); });
    const bool carriedOut = (!started && options.stopOnError) || carryOutCommands(shell, output, options);
    alarm(static_cast<unsigned int>(options.stopLimit));
    const bool stopped = succeeds(output, [&] { nodeCommands.unload(BRY_REASON_NORMAL); });
    if (!started) {
        return NotStarted;
    }
    const bool behaved = node.services.journal.accusations() == 0;
    return carriedOut && stopped && behaved ? AllWell : SomethingFailed;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    try {
        options.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return options.exit(error);
    }
    try {
        return run(options);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tul-node: %s\n", escape(e.what()).c_str());
        return CannotBegin;
    }
}
