#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "ChildProgram.h"
#include "Sanitizers.h"

namespace {

using namespace TulTest;
using testing::HasSubstr;

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
        return runProgram("TSAN_OPTIONS='" + options + "' " TUL_THREAD_PROBE " " + what);
    }

    const std::string accepted = "suppressions=" TUL_TSAN_SUPPRESSIONS;
};

TEST_F(RaceReport, NamesTheOptionThatAHandlerQueuesWhileStartSendsItsBatch) {
    const Outcome outcome = probe("send-during-start", "");
    EXPECT_EQ(reported, outcome.code);
    EXPECT_THAT(outcome.output, HasSubstr("WARNING: ThreadSanitizer: data race"));
    EXPECT_THAT(outcome.output, HasSubstr("SshdVormaWrapper"));
    EXPECT_THAT(outcome.output, HasSubstr("onServiceCategoryMoChangeNotification"));
}

TEST_F(RaceReport, IsEmptyWhereTheRaceIsListedAsAccepted) {
    const Outcome outcome = probe("send-during-start", accepted);
    EXPECT_EQ(0, outcome.code);
    EXPECT_EQ("", outcome.output);
}

TEST_F(RaceReport, NamesAHandlerWithoutTheLockInTheSameStorm) {
    const Outcome outcome = probe("handlers-without-lock", accepted);
    EXPECT_EQ(reported, outcome.code);
    EXPECT_THAT(outcome.output, HasSubstr("onChange"));
}

TEST_F(RaceReport, IsEmptyForTheSameHandlerWithTheLock) {
    const Outcome outcome = probe("handlers-with-lock", "");
    EXPECT_EQ(0, outcome.code);
    EXPECT_EQ("", outcome.output);
}

}  // namespace
