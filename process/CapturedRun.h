#ifndef TUL_CAPTURED_RUN_H
#define TUL_CAPTURED_RUN_H

#include <cstddef>
#include <optional>
#include <string>

#include "CapturedStream.h"
#include "ChildProcess.h"
#include "Deadline.h"

namespace Tul {

/**
 * A program that runs in a group of its own with nothing to read, and the two streams that come from it. Of its
 * output the beginning is kept, of its errors the end. It is killed at destruction, with its group, when it has not
 * ended.
 *
 * Every operation throws std::system_error when the program cannot be run or watched.
 */
class CapturedRun {
public:
    struct Limits {
        std::size_t output; /**< bytes */
        std::size_t errors; /**< bytes */
    };

    /** argv is null-terminated and begins with the path. */
    CapturedRun(char* const* argv, Limits limits);

    /** Reads until the program has ended or the moment has come; how it ended, or nothing. */
    std::optional<ProcessEnd> await(const Deadline& deadline);

    /** Reads until both streams have ended or the moment has come: somebody it left behind may write for ever. */
    void drain(const Deadline& deadline);

    /** False when the program is not ours to be killed any more. */
    bool kill() { return _child.kill(); }

    std::string output() { return std::move(_output.text()); }

    /** As it can end a message: without NUL, which would cut it short, and without the line's end. */
    std::string errorTail();

private:
    CapturedRun(char* const* argv, Limits limits, Pipe output, Pipe errors);

    /** Waits for data or the end of the child, and reads what there is. True: the child has ended. */
    bool readOnce(int childDescriptor, int milliseconds);

    CapturedStream _output;
    CapturedStream _errors;
    ChildProcess _child;
};

}  // namespace Tul

#endif
