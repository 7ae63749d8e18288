// Walks the adapter through its system calls: one command is run again and again under ptrace, and each time one call
// of it, or of a program that it runs, or of the listeners meanwhile, becomes the moment of a misfortune.
//
//     adapter-walk --vorma PROGRAM [--scenario NAME]... [--mode kill-group|kill-alone|fail]... [--all | --seconds S]
//
// kill-group   The adapter's process group gets SIGKILL, as at its caller's time limit. Files are old or new and
// never
//              half written, the door that was not meant is untouched, doors that were open serve at the latest 1 s
//              after the next run has begun, that run puts all in order, and the same command again does what it
//              says.
// kill-alone   The same when only the adapter itself dies.
// fail         The call fails, as it may when memory, descriptors, processes or the disk run short. The exit code
//              tells the truth: 0 all is as asked for, 2 to 8 the old state is in force, 9 it is neither (counted and
//              listed). The next run mends it.
//
// Undisturbed runs are judged as well: their effect, and that what was renamed into the store is synced. Listeners
// are asked for what they offer, so that a file which nobody has read does not pass for one in force.
//
// A point is named by who makes the call, the call, and the how manyeth it is: "adapter.renameat2#2=EIO". A violation
// is printed with the words that repeat it. What waits is not the same twice, so a point may be missed: that run has
// to succeed. Exit code: 0 no violation, 1 violations, 2 it could not be tried. Nothing is left behind, except when
// the walker itself gets SIGKILL.

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <thread>

#include "Processes.h"
#include "Walker.h"

namespace {

using namespace TulTest;

constexpr int troubleCode = 2;

std::vector<std::string> namesOfScenarios() {
    std::vector<std::string> names;
    std::transform(scenarios().begin(), scenarios().end(), std::back_inserter(names),
                   [](const Scenario& scenario) { return scenario.name; });
    return names;
}

void declare(CLI::App& app, Options& options) {
    static const std::map<std::string, Mode> modesByName{
        {modes[0], Mode::KillGroup}, {modes[1], Mode::KillAlone}, {modes[2], Mode::Fail}};
    app.add_option("--vorma", options.journey.adapter, "the adapter")->required()->check(CLI::ExistingFile);
    app.add_option("--scenario", options.scenarios, "what is played (default: all)")
        ->check(CLI::IsMember(namesOfScenarios()));
    app.add_option("--mode", options.modes, "what happens (default: all)")
        ->transform(CLI::CheckedTransformer(modesByName));
    CLI::Option* all = app.add_flag("--all", options.isAll, "visit all points, in order (default)");
    app.add_option("--seconds", options.seconds, "visit a sample of all for so long")->excludes(all);
    app.add_option("--one-in", options.oneIn, "of the calls without effect visit one in so many")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--point", options.point, "visit this point alone, as a violation names it");
    app.add_option("--seed", options.journey.seed, "begins the choice by chance")->capture_default_str();
    app.add_option("--jobs", options.jobs, "how many at the same time")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--patience", options.journey.patience, "by how much the machine is slower than an idle one")
        ->capture_default_str();
    app.add_flag("--twice", options.journey.isTwice, "kill the next run too");
    app.add_flag("--expect-violation", options.expectsViolation,
                 "end with 0 at the first violation, and with 1 without one");
}

void requireMachine() {
#ifndef __x86_64__
    throw std::runtime_error("only x86-64 is known");
#endif
    if (geteuid() == 0 && !std::filesystem::is_directory("/run/sshd")) {
        throw std::runtime_error("sshd of root needs the directory /run/sshd");
    }
}

std::filesystem::path makeFolder() {
    std::string name = std::filesystem::canonical(std::filesystem::temp_directory_path()) / "adapter-walk.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error(name + " cannot be made");
    }
    return name;
}

/** In a group of its own, so that a signal from the terminal reaches only the one who cleans up. */
[[noreturn]] void work(const Options& options, const std::filesystem::path& folder) {
    int code = troubleCode;
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        makeKey(folder);
        code = Walker(options, folder).walk();
    } catch (const std::exception& error) {
        std::cerr << "adapter-walk: " << error.what() << "\n";
    }
    std::cout.flush();
    _exit(code);
}

/** The code of the one who works, or of the signal that ended the wait. */
int awaitWorker(pid_t worker, const sigset_t& signals) {
    for (;;) {
        int status = 0;
        int signal = 0;
        if (waitpid(worker, &status, WNOHANG) == worker) {
            return WIFEXITED(status) ? WEXITSTATUS(status) : troubleCode;
        }
        if (sigwait(&signals, &signal) == 0 && signal != SIGCHLD) {
            return 128 + signal;
        }
    }
}

int superviseWork(const Options& options) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const std::filesystem::path folder = makeFolder();
    const pid_t worker = fork();
    if (worker == 0) {
        work(options, folder);
    }
    setpgid(worker, worker);
    const int code = awaitWorker(worker, signals);
    kill(-worker, SIGKILL);
    sweep(folder);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return code;
}

/** The exit code. */
int run(int argc, char** argv) {
    Options options;
    options.jobs = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    CLI::App app("walks the adapter through its system calls");
    declare(app, options);
    CLI11_PARSE(app, argc, argv);
    requireMachine();
    options.journey.adapter = std::filesystem::canonical(options.journey.adapter);
    if (options.modes.empty()) {
        options.modes = {Mode::KillGroup, Mode::KillAlone, Mode::Fail};
    }
    return superviseWork(options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "adapter-walk: %s\n", error.what());
        return troubleCode;
    }
}
