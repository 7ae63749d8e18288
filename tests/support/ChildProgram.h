#ifndef TUL_TEST_CHILD_PROGRAM_H
#define TUL_TEST_CHILD_PROGRAM_H

#include <stdio.h>
#include <sys/wait.h>

#include <string>

namespace TulTest {

/** What a command line of the shell printed, and its exit code; -1 when a signal ended it. */
struct Outcome {
    std::string output;
    int code;
};

inline Outcome runProgram(const std::string& command) {
    Outcome outcome{"", -1};
    FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    char block[4096];
    for (std::size_t count = 0; (count = fread(block, 1, sizeof block, pipe)) > 0;) {
        outcome.output.append(block, count);
    }
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

}  // namespace TulTest

#endif
