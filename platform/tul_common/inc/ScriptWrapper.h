#ifndef TUL_SCRIPT_WRAPPER_H
#define TUL_SCRIPT_WRAPPER_H

#include <string>
#include <vector>

#include "TulExport.h"

namespace Tul {

/**
 * Runs one script of the node.
 *
 * The script is looked for under its name in the framework's script folder (TulCommon_1.h).
 */
class TUL_EXPORT ScriptWrapper {
public:
    explicit ScriptWrapper(const std::string& scriptName) : _scriptName(scriptName) {}
    virtual ~ScriptWrapper() = default;

    /**
     * Runs the script and waits for it, `timeout` milliseconds (1 or more) at most.
     *
     * Each argument reaches the script as one word, verbatim; no shell is involved. The script gets /dev/null
     * as its input, a minimal environment (PATH alone), its own process group, no other descriptor of this
     * process, and no ignored or blocked signal.
     *
     * Returns what the script wrote to its standard output, the first mebibyte of it, when it exited with 0.
     * What a process that it left behind still writes is waited for only a tenth of a second.
     *
     * Throws TulException in every other case: the script could not be run, exited with another code, was
     * ended by a signal, or was still running at the time limit (its whole process group is killed then).
     * Exit codes 126 and 127 count as "could not be run". A host that ignores SIGCHLD, or reaps children that are
     * not its own, gets "status unknown". Refused without a run: a timeout below 1, an argument with a NUL in it.
     * The text names the script and the cause and ends with the tail (4 KiB) of what it wrote to stderr, its NULs
     * replaced and nothing else: escape it before it is shown.
     *
     * Any thread, several at once.
     */
    std::string invoke(const std::vector<std::string>& args, int timeout) const;

private:
    std::string _scriptName;
};

}  // namespace Tul

#endif
