#ifndef TUL_WALK_ADAPTER_RUN_H
#define TUL_WALK_ADAPTER_RUN_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "Clock.h"

namespace TulTest {

using Words = std::vector<std::string>;

std::string joined(const Words& words);

/** How a run ended. */
struct Ending {
    bool hung = false;
    int signal = 0;
    int code = 0;
    std::string output;       ///< standard output and standard error
    bool outputHeld = false;  ///< somebody who outlived the adapter kept its output open

    std::string text() const;
};

/**
 * One run of the adapter as its caller makes it: leader of a group of its own, nothing to read, PATH alone. The
 * caller must have SIGCHLD blocked. std::system_error when it cannot be started.
 */
class AdapterRun {
public:
    /** The program is not begun before release(). */
    explicit AdapterRun(const Words& command);

    /** Kills the group of a run that is still under way. */
    ~AdapterRun();

    pid_t pid() const { return _pid; }
    void release();

    /** What waitpid said of the end, for whoever asked it in place of await(). */
    void ended(int status);
    bool hasEnded() const { return _ended; }
    void kill();

    /** Looks whether it has ended. */
    bool poll();
    Ending await(Moment end);

    /** Once it has ended: reads the output to its end. */
    Ending ending();

    AdapterRun(const AdapterRun&) = delete;
    AdapterRun& operator=(const AdapterRun&) = delete;

private:
    void readOutput(Ending& ending) const;

    pid_t _pid = 0;
    int _gate = -1;
    int _output = -1;
    bool _ended = false;
    bool _hung = false;
    int _status = 0;
};

/** Waits for a change of a child until then; false when there was none. */
bool awaitChild(Moment end);

}  // namespace TulTest

#endif
