#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>

#include <string>

#include "ThreadSanitizer.h"

namespace {

using testing::HasSubstr;

struct Outcome {
    std::string report;
    int code;
};

constexpr int reported = 66; /**< the sanitizer's exit code after a report */

/** What the thread sanitizer has to say of the probe. */
class RaceReport : public testing::Test {
public:
    void SetUp() override {
        if (!hasThreadSanitizer) {
            GTEST_SKIP() << "needs a build with the thread sanitizer, which alone reports races";
        }
    }

    static Outcome probe(const std::string& what, const std::string& options) {
        const std::string command = "TSAN_OPTIONS='" + options + "' " TUL_THREAD_PROBE " " + what + " 2>&1";
        Outcome outcome{"", -1};
        FILE* const pipe = popen(command.c_str(), "r");
        char block[4096];
        for (std::size_t count = 0; (count = fread(block, 1, sizeof block, pipe)) > 0;) {
            outcome.report.append(block, count);
        }
        const int status = pclose(pipe);
        outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return outcome;
    }

    const std::string accepted = "suppressions=" TUL_TSAN_SUPPRESSIONS;
};

TEST_F(RaceReport, NamesTheOptionThatAHandlerQueuesWhileStartSendsItsBatch) {
    const Outcome outcome = probe("send-during-start", "");
    EXPECT_EQ(reported, outcome.code);
    EXPECT_THAT(outcome.report, HasSubstr("WARNING: ThreadSanitizer: data race"));
    EXPECT_THAT(outcome.report, HasSubstr("SshdVormaWrapper"));
    EXPECT_THAT(outcome.report, HasSubstr("onServiceCategoryMoChangeNotification"));
}

TEST_F(RaceReport, IsEmptyWhereTheRaceIsListedAsAccepted) {
    const Outcome outcome = probe("send-during-start", accepted);
    EXPECT_EQ(0, outcome.code);
    EXPECT_EQ("", outcome.report);
}

TEST_F(RaceReport, NamesAHandlerWithoutTheLockInTheSameStorm) {
    const Outcome outcome = probe("handlers-without-lock", accepted);
    EXPECT_EQ(reported, outcome.code);
    EXPECT_THAT(outcome.report, HasSubstr("onChange"));
}

TEST_F(RaceReport, IsEmptyForTheSameHandlerWithTheLock) {
    const Outcome outcome = probe("handlers-with-lock", "");
    EXPECT_EQ(0, outcome.code);
    EXPECT_EQ("", outcome.report);
}

}  // namespace
