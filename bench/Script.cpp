#include "Script.h"

#include <Poco/Pipe.h>
#include <Poco/Process.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace TulBench {

namespace {

std::vector<char*> words(const Command& command) {
    std::vector<char*> result;
    for (const std::string& word : command) {
        result.push_back(const_cast<char*>(word.c_str()));
    }
    result.push_back(nullptr);
    return result;
}

void check(int error, const char* what) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), what);
    }
}

std::string readToEnd(int descriptor) {
    std::string text;
    char block[4096];
    for (ssize_t size = 0; (size = read(descriptor, block, sizeof block)) > 0;) {
        text.append(block, static_cast<std::size_t>(size));
    }
    close(descriptor);
    return text;
}

struct PipeEnds {
    PipeEnds() { check(pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno, "pipe2"); }

    int reading() const { return ends[0]; }
    int writing() const { return ends[1]; }

    int ends[2];
};

/** The environment that the component gives its adapter. */
char path[] = "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
char* const environment[] = {path, nullptr};

pid_t spawn(const Command& command, const posix_spawn_file_actions_t* actions) {
    pid_t pid = -1;
    const std::vector<char*> argv = words(command);
    check(posix_spawn(&pid, argv[0], actions, nullptr, argv.data(), environment), argv[0]);
    return pid;
}

std::size_t peakOf(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::size_t kib = 0;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:" && status >> kib) {
            return kib * 1024;
        }
        status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    throw std::runtime_error("no peak of memory is known of process " + std::to_string(pid));
}

void resume(pid_t pid, int signal) {
    check(ptrace(PTRACE_CONT, pid, nullptr, signal) == 0 ? 0 : errno, "PTRACE_CONT");
}

/** Lets a traced process go on until it is about to end, with its memory still in place. */
void awaitExit(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) == pid && WIFSTOPPED(status)) {
        if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) {
            return;
        }
        resume(pid, WSTOPSIG(status));  // a signal that it was to get
    }
    throw std::runtime_error("a process has ended unseen");
}

}  // namespace

pid_t start(const Command& command) {
    return spawn(command, nullptr);
}

void await(pid_t pid, const Command& command) {
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || status != 0) {
        throw std::runtime_error(command.at(0) + " ended with the wait status " + std::to_string(status));
    }
}

std::size_t residentAtMost(const Command& command) {
    // Not by what wait4() tells: that is at least the memory of the one who started it.
    const pid_t pid = start(command);
    check(ptrace(PTRACE_SEIZE, pid, nullptr, PTRACE_O_TRACEEXIT) == 0 ? 0 : errno, "PTRACE_SEIZE");
    awaitExit(pid);
    const std::size_t peak = peakOf(pid);
    resume(pid, 0);
    await(pid, command);
    return peak;
}

std::string runBySpawn(const Command& command) {
    const PipeEnds output;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output.writing(), STDOUT_FILENO);
    const pid_t pid = spawn(command, &actions);
    posix_spawn_file_actions_destroy(&actions);
    close(output.writing());
    std::string text = readToEnd(output.reading());
    await(pid, command);
    return text;
}

std::string runByFork(const Command& command) {
    const PipeEnds output;
    const std::vector<char*> argv = words(command);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(output.writing(), STDOUT_FILENO);
        execve(argv[0], argv.data(), environment);
        _exit(127);
    }
    close(output.writing());
    std::string text = readToEnd(output.reading());
    await(pid, command);
    return text;
}

std::string runByPoco(const Command& command) {
    Poco::Pipe output;
    const Poco::ProcessHandle handle =
        Poco::Process::launch(command.at(0), Command(command.begin() + 1, command.end()), nullptr, &output, nullptr);
    std::string text;
    char block[4096];
    for (int size = 0; (size = output.readBytes(block, sizeof block)) > 0;) {
        text.append(block, static_cast<std::size_t>(size));
    }
    if (handle.wait() != 0) {
        throw std::runtime_error(command.at(0) + " failed");
    }
    return text;
}

}  // namespace TulBench
