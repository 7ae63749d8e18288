#ifndef TUL_TEST_COMPONENT_TEST_H
#define TUL_TEST_COMPONENT_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"

namespace TulTest {

using Lines = std::vector<std::string>;
using LineMatchers = std::vector<testing::Matcher<std::string>>;

/** The built library in a framework with an empty node, and the words that tests are told in. */
class TestNode {
public:
    TestNode() { framework.givenEmptyNode(); }

    /** Initialised and started; what that led to is forgotten. */
    void givenStarted(const std::string& text = configuration(true));

    /** Forgets what was recorded so far. */
    void forget();

    // What happened since the last look. Looking forgets: a test looks at everything, then expects silence.
    void expectRuns(const Lines& expected, int line = __builtin_LINE());
    void expectLogs(const LineMatchers& expected, int line = __builtin_LINE());
    void expectSilence(int line = __builtin_LINE());

    /** Delivers a notification and expects that the router gets 0. */
    void notify(const char* pattern, CmNotification& notification, int line = __builtin_LINE());

    /** The calls of the SPI and of the adapter, without look-ups and without the numbers of transactions. */
    Lines steps() const;

    RecordingFramework framework;
    ComponentLibrary library{framework};
};

class ComponentTest : public testing::Test, public TestNode {};

/** Prints what died with the process: from here on abort() is preceded by the log records so far. */
void sayLastWords(const RecordingFramework& framework);

/** Makes the parameters of a table print and sort by their name. */
template <class RowT>
std::string nameOf(const testing::TestParamInfo<RowT>& row) {
    return row.param.name;
}

}  // namespace TulTest

#endif
