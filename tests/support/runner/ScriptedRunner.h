#ifndef TUL_TEST_SCRIPTED_RUNNER_H
#define TUL_TEST_SCRIPTED_RUNNER_H

#include <functional>
#include <string>
#include <vector>

namespace TulTest {

/** What the component asked its script runner for. */
struct AdapterRun {
    std::vector<std::string> words;
    int timeout; /**< milliseconds */
};

/**
 * Decides what every script run of this process answers: its output, or an exception that stands for a failed run.
 * Called on the thread of the run. Without one, the revision query answers "1.8.0\n" and everything else nothing.
 *
 * A program that links tul_scripted_runner has it in place of the platform's runner, also for the libraries that
 * it loads: no process is started, so that a run costs next to nothing and may fail in any way.
 */
using AdapterAnswer = std::function<std::string(const AdapterRun&)>;

/** Puts an answer in place while it lives. One at a time; not while a run is under way. */
class ScriptedRunner {
public:
    explicit ScriptedRunner(AdapterAnswer answer);
    ~ScriptedRunner();

    ScriptedRunner(const ScriptedRunner&) = delete;
    ScriptedRunner& operator=(const ScriptedRunner&) = delete;
};

}  // namespace TulTest

#endif
