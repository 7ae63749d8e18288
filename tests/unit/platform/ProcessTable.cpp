#include "ProcessTable.h"

#include <chrono>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <thread>

namespace TulTest {

namespace {

bool becomesTrue(const std::function<bool()>& condition) {
    const auto bound = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > bound) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/** The process group of a process; nothing when it is dead, reaped or not. */
std::optional<pid_t> groupOf(const std::string& pid) {
    std::ifstream file("/proc/" + pid + "/stat");
    std::string line;
    std::getline(file, line);
    // The name, in parentheses, may hold anything; after it come the state, the parent and the group.
    const std::size_t name = line.rfind(')');
    char state = 'X';
    pid_t parent = 0;
    pid_t group = 0;
    if (name == std::string::npos ||
        std::sscanf(line.c_str() + name + 1, " %c %d %d", &state, &parent, &group) != 3 || state == 'Z' ||
        state == 'X') {
        return std::nullopt;
    }
    return group;
}

}  // namespace

int livingMembers(pid_t group) {
    int count = 0;
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", gone)) {
        const std::string name = entry.path().filename();
        count += name.find_first_not_of("0123456789") == std::string::npos && groupOf(name) == group;
    }
    return count;
}

bool isAlive(pid_t pid) {
    return groupOf(std::to_string(pid)).has_value();
}

bool groupDies(pid_t group) {
    return becomesTrue([group] { return livingMembers(group) == 0; });
}

std::optional<pid_t> readPid(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string line;
    if (!std::getline(stream, line) || stream.eof()) {
        return std::nullopt;
    }
    return std::stoi(line);
}

pid_t awaitPid(const std::filesystem::path& file) {
    std::optional<pid_t> pid;
    if (!becomesTrue([&] { return (pid = readPid(file)).has_value(); })) {
        throw std::runtime_error("no process number in " + file.string());
    }
    return *pid;
}

}  // namespace TulTest
