#ifndef TUL_TEST_FAULTY_ADAPTER_H
#define TUL_TEST_FAULTY_ADAPTER_H

#include <functional>
#include <string>
#include <vector>

#include "Persistence.h"
#include "ScriptedRunner.h"

namespace TulTest {

/**
 * An adapter of revision 1.8.0 that notes its runs and lets one of them end as the test says. Allocation faults are
 * suspended in it, and a batch that is not well-formed is a failure of the test. One run at a time.
 */
class FaultyAdapter {
public:
    /** Gets the words of each run, joined by blanks. */
    explicit FaultyAdapter(std::function<void(const std::string&)> onRun) : _onRun(std::move(onRun)) {}

    /** The run with that number, from 1, ends as the function does, which may throw. */
    void fail(unsigned int first, Persistence persistence, std::function<std::string()> end);
    void heal();

    unsigned int runs() const { return _runs; }
    void forget() { _runs = 0; }

private:
    std::string answer(const AdapterRun& run);

    std::function<void(const std::string&)> _onRun;
    std::function<std::string()> _end;
    unsigned int _first = 0;
    Persistence _persistence = Persistence::ONCE;
    unsigned int _runs = 0;
    ScriptedRunner _runner{[this](const AdapterRun& run) { return answer(run); }};
};

/**
 * What is wrong with the words of a batch, or an empty text: every option is known, and has the value that the full
 * node of these tests asks for.
 */
std::string flawIn(const std::vector<std::string>& words);

}  // namespace TulTest

#endif
