#include "NaiveRunner.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

namespace TulTest {

std::string runNaively(const std::string& path, const std::vector<std::string>& args, int timeout) {
    std::vector<char*> words{const_cast<char*>(path.c_str())};
    for (const std::string& arg : args) {
        words.push_back(const_cast<char*>(arg.c_str()));
    }
    words.push_back(nullptr);

    int ends[2];
    if (pipe(ends) == -1) {
        return "";
    }
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execv(words[0], words.data());
        _exit(127);
    }
    close(ends[1]);

    std::string output;
    const auto end = std::chrono::system_clock::now() + std::chrono::milliseconds(timeout);
    char data[4096];
    pollfd watched{ends[0], POLLIN, 0};
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::system_clock::now());
        if (left.count() <= 0 || poll(&watched, 1, static_cast<int>(left.count())) <= 0) {
            kill(child, SIGKILL);
            break;
        }
        const ssize_t size = read(ends[0], data, sizeof(data));
        if (size <= 0) {
            break;
        }
        output.append(data, static_cast<std::size_t>(size));
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return output;
}

}  // namespace TulTest
