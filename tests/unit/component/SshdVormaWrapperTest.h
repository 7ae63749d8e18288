#ifndef TUL_TEST_SSHD_VORMA_WRAPPER_TEST_H
#define TUL_TEST_SSHD_VORMA_WRAPPER_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ExpectedRecords.h"
#include "SshdVormaWrapper.h"

namespace TulTest {

inline const RecordSource vormaSource{"TulSshd", "src/tul_sshd_manager/src/SshdVormaWrapper"};

/** Time limit of runs that are not to reach it, in milliseconds. */
inline constexpr int ample = 30000;

inline const std::map<std::string, std::string> allLists{
    {"selectedCiphers", "c1,c2"}, {"selectedKeyExchanges", "k1"}, {"selectedMacs", "m1,m2"}};

/** A wrapper between a recording adapter and a recording framework. */
class SshdVormaWrapperTest : public testing::Test {
protected:
    using Words = std::vector<std::string>;

    /** The adapter prints exactly this when it is asked for its revision, and succeeds with everything. */
    void givenRevisionOutput(const std::string& output) {
        framework.givenAdapter("[ \"$1\" != spi-revision ] || printf '%s' '" + output + "'");
    }

    /** The runner throws this in place of a result. */
    template <class T>
    void givenRunnerThat(T throws) {
        framework.onScriptRan = [throws](const TulCommonScriptRun_1&) { throw throws; };
    }

    /** Every run so far, word by word; then forgets them. */
    std::vector<Words> takeWords() {
        std::vector<Words> runs = framework.runWords();
        framework.takeRuns();
        return runs;
    }

    /** The words that the next batch would send after "ssh"; sends them. */
    Words takePending() {
        framework.takeRuns();
        const bool sent = wrapper.invokeVorma(ample);
        const std::vector<Words> runs = takeWords();
        if (!sent || runs.size() != 1 || runs[0].at(0) != "ssh") {
            return {};
        }
        return {runs[0].begin() + 1, runs[0].end()};
    }

    Records takeRecords() { return std::exchange(framework.records, {}); }

    RecordingFramework framework;
    TulSshdManagement::SshdVormaWrapper wrapper;
};

}  // namespace TulTest

#endif
