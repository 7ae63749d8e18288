#ifndef TUL_TEST_LEAK_CHECK_H
#define TUL_TEST_LEAK_CHECK_H

#include <set>
#include <string>

namespace TulTest {

/** What a test must leave as it found it: open descriptors, threads, children and temporary files. */
struct ProcessState {
    std::set<std::string> descriptors;
    std::set<std::string> threads;
    std::set<std::string> children;
    std::set<std::string> temporaryFiles; /**< "tul-test.<pid>." in the temporary folder */

    static ProcessState now();

    /** One line for each thing that is in `later` and not here; empty when nothing was left behind. */
    std::string leftBehindIn(const ProcessState& later) const;
};

}  // namespace TulTest

#endif
