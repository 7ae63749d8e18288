#include "Processes.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "Clock.h"

namespace TulTest {

namespace {

/** Not by a stream: that throws when the process ends meanwhile. */
std::string fileOf(pid_t pid, const char* name) {
    const int file = open(("/proc/" + std::to_string(pid) + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
    std::string text;
    char data[4096];
    for (ssize_t size = 0; file != -1 && (size = read(file, data, sizeof(data))) > 0;) {
        text.append(data, static_cast<std::size_t>(size));
    }
    close(file);
    return text;
}

/** What follows the program's name, which may hold anything: state, parent, ... */
std::vector<std::string> statistics(pid_t pid) {
    const std::string text = fileOf(pid, "stat");
    std::istringstream rest(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    return {std::istream_iterator<std::string>(rest), {}};
}

bool isOurs(pid_t pid) {
    struct stat status {};
    return stat(("/proc/" + std::to_string(pid)).c_str(), &status) == 0 && status.st_uid == geteuid();
}

}  // namespace

std::string commandLine(pid_t pid) {
    std::string text = fileOf(pid, "cmdline");
    std::replace(text.begin(), text.end(), '\0', ' ');
    return text;
}

pid_t statusNumber(pid_t pid, const std::string& key) {
    std::istringstream lines(fileOf(pid, "status"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key + ":")) {
            return static_cast<pid_t>(std::stol(line.substr(key.size() + 1)));
        }
    }
    return -1;
}

bool isAlive(pid_t pid) {
    const std::vector<std::string> words = statistics(pid);
    return !words.empty() && words.front() != "Z" && words.front() != "X";
}

Process processOf(pid_t pid) {
    constexpr std::size_t beginning = 19;
    const std::vector<std::string> words = statistics(pid);
    return {pid, words.size() > beginning ? words[beginning] : ""};
}

std::vector<pid_t> allProcesses() {
    std::vector<pid_t> pids;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos) {
            pids.push_back(std::stoi(name));
        }
    }
    return pids;
}

std::vector<pid_t> processesNaming(const std::string& text) {
    std::vector<pid_t> pids = allProcesses();
    std::erase_if(pids, [&text](pid_t pid) {
        return commandLine(pid).find(text) == std::string::npos || pid == getpid() || !isOurs(pid) || !isAlive(pid);
    });
    return pids;
}

bool isListenerOf(const std::string& commandLine, const std::string& file) {
    const auto has = [&commandLine](const std::string& word) { return commandLine.find(word) != std::string::npos; };
    const std::string program = commandLine.substr(0, commandLine.find(' '));
    const bool isSshd = program.ends_with("sshd") || program == "sshd:";  // it writes over its words once it listens
    return isSshd && (has("-f " + file) || has("-f" + file)) && !has(" -R") && !has(" -T") && !has(" -t");
}

std::vector<Process> listenersOf(const std::string& file) {
    std::vector<Process> found;
    for (const pid_t pid : processesNaming(file)) {
        if (isListenerOf(commandLine(pid) + " ", file)) {
            found.push_back(processOf(pid));
        }
    }
    return found;
}

void sweep(const std::string& text) {
    await(Clock::now() + std::chrono::seconds(10), [&text] {
        const std::vector<pid_t> pids = processesNaming(text);
        std::for_each(pids.begin(), pids.end(), [](pid_t pid) { kill(pid, SIGKILL); });
        return pids.empty();
    });
}

}  // namespace TulTest
