#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <string>

extern char** environ;

namespace {

/** Each argument, ended by a NUL. */
void printArguments(char** arguments) {
    for (; *arguments != nullptr; ++arguments) {
        std::cout << *arguments << '\0';
    }
}

void printEnvironment() {
    for (char** entry = environ; *entry != nullptr; ++entry) {
        std::cout << *entry << '\n';
    }
}

/** Descriptors above 2, with what they are. */
void printDescriptors() {
    DIR* directory = opendir("/proc/self/fd");
    while (const dirent* entry = readdir(directory)) {
        const int number = atoi(entry->d_name);
        char target[256] = "";
        if (number > STDERR_FILENO && number != dirfd(directory) &&
            readlinkat(dirfd(directory), entry->d_name, target, sizeof(target) - 1) > 0) {
            std::cout << number << ' ' << target << '\n';
        }
    }
    closedir(directory);
}

/** What each of the three standard descriptors can be used for: "r", "w" or "-". */
void printStandardDescriptors() {
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        const int flags = fcntl(number, F_GETFL);
        std::cout << (flags == -1 ? '-' : (flags & O_ACCMODE) == O_RDONLY ? 'r' : 'w');
    }
    char input = 0;
    std::cout << (read(STDIN_FILENO, &input, 1) == 0 ? " empty" : " not empty");
}

/** The signals that are blocked and ignored, as masks. */
void printSignals() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("SigBlk:") || line.starts_with("SigIgn:")) {
            std::cout << line << '\n';
        }
    }
}

}  // namespace

/** Tells what this process was started with: the first argument says what is asked for. */
int main(int /*argc*/, char** argv) {
    const std::string what = argv[1] == nullptr ? "" : argv[1];
    if (what == "arguments") {
        printArguments(argv + 2);
    } else if (what == "descriptors") {
        printDescriptors();
    } else if (what == "environment") {
        printEnvironment();
    } else if (what == "group") {
        std::cout << (getpid() == getpgrp() ? "leader" : "follower");
    } else if (what == "signals") {
        printSignals();
    } else if (what == "standard") {
        printStandardDescriptors();
    } else {
        return 2;
    }
    return 0;
}
