#include <gtest/gtest.h>
#include <rapidcheck/detail/TestListenerAdapter.h>

#include <regex>

#include "Agreement.h"

namespace {

using namespace Sequences;

struct BentRule {
    const char* name;
    Bend bend;

    friend std::ostream& operator<<(std::ostream& stream, const BentRule& rule) { return stream << rule.name; }
};

const BentRule bentRules[] = {
    {"StopForgetsTheStates", Bend::STOP_FORGETS_THE_STATES},
    {"TerminateClearsStarted", Bend::TERMINATE_CLEARS_STARTED},
    {"AFailedInitIsUnregistered", Bend::FAILED_INIT_IS_UNREGISTERED},
    {"AFailedBatchIsNotStarted", Bend::FAILED_BATCH_IS_NOT_STARTED},
    {"AFailedReadKeepsTheOldPorts", Bend::FAILED_READ_KEEPS_THE_OLD_PORTS},
    {"ANumberIsStoredOnlyWhenGood", Bend::NUMBER_IS_STORED_ONLY_WHEN_GOOD},
    {"ABlankSwitchIsOff", Bend::BLANK_SWITCH_IS_OFF},
    {"TheStateInTheModelIsNotMapped", Bend::STATE_IN_MODEL_IS_NOT_MAPPED},
    {"AnUnreadableStateLocks", Bend::UNREADABLE_STATE_LOCKS},
    {"DeletionLocksLikeCreation", Bend::DELETION_LOCKS_LIKE_CREATION},
    {"ARefusedDeletionIsCommitted", Bend::REFUSED_DELETION_IS_COMMITTED},
    {"AnEmptyTextIsNoAlgorithm", Bend::EMPTY_TEXT_IS_NO_ALGORITHM},
    {"TheStateInAnEventIsMapped", Bend::STATE_IN_EVENT_IS_MAPPED},
    {"TheFirstStateInAnEventCounts", Bend::FIRST_STATE_IN_EVENT_COUNTS},
    {"TheSameStateIsAppliedAgain", Bend::SAME_STATE_IS_APPLIED_AGAIN},
    {"OamCmAnywhereInTheDn", Bend::OAMCM_ANYWHERE_IN_THE_DN},
    {"TheFirstSshDnCounts", Bend::FIRST_SSH_DN_COUNTS},
    {"AFailedRemovalKeepsTheConsumer", Bend::FAILED_REMOVAL_KEEPS_THE_CONSUMER},
    {"AFailedBatchIsRetried", Bend::FAILED_BATCH_IS_RETRIED},
    {"DisablingNamesAPort", Bend::DISABLING_NAMES_A_PORT},
    {"EveryExceptionOfAPortIsCaught", Bend::EVERY_EXCEPTION_OF_A_PORT_IS_CAUGHT},
    {"AFailedQueryIsRepeated", Bend::FAILED_QUERY_IS_REPEATED},
    {"ANegativeRevisionIsCached", Bend::NEGATIVE_REVISION_IS_CACHED},
    {"TheQueryHasThirtySeconds", Bend::QUERY_HAS_THIRTY_SECONDS},
    {"RenegotiationNeeds17", Bend::RENEGOTIATION_NEEDS_1_7},
    {"NoRenegotiationIs0", Bend::NO_RENEGOTIATION_IS_0},
    {"AMissingDscpQueuesNothing", Bend::MISSING_DSCP_QUEUES_NOTHING},
    {"TheDscpReplacesWhatIsQueued", Bend::DSCP_REPLACES_WHAT_IS_QUEUED},
};

/** Always the same sequences: the rarest rule needs a few thousand, and luck is no reason to fail. */
rc::detail::TestParams tenThousand() {
    rc::detail::TestParams params;
    params.seed = 1;
    params.maxSuccess = 10000;
    return params;
}

/** Without the words at the end of the program on how to have it fail again. */
rc::detail::TestResult check(const rc::detail::TestParams& params, Bend bend) {
    rc::detail::TestListenerAdapter nobody;
    return rc::detail::checkTestable(agreementWith(bend), rc::detail::TestMetadata{"bent", "bent"}, params, nobody);
}

/** The same property with one rule bent: what passes here would pass a component with that defect too. */
class BentModel : public testing::TestWithParam<BentRule> {};

TEST_P(BentModel, IsFoundOut) {
    auto params = tenThousand();
    params.disableShrinking = true;
    const auto result = check(params, GetParam().bend);
    EXPECT_TRUE(result.is<rc::detail::FailureResult>()) << textOf(result);
}

INSTANTIATE_TEST_SUITE_P(Rules, BentModel, testing::ValuesIn(bentRules),
                         [](const testing::TestParamInfo<BentRule>& rule) { return rule.param.name; });

TEST(Counterexample, IsShrunkToWhatTheDefectNeeds) {
    const auto result = check(tenThousand(), Bend::FAILED_BATCH_IS_RETRIED);
    ASSERT_TRUE(result.is<rc::detail::FailureResult>()) << textOf(result);
    const std::string script = result.get<rc::detail::FailureResult>().counterExample.front().second;
    // Init, start, an adapter that fails, something to send, and something that has it sent once more.
    EXPECT_NE(std::string::npos, script.find("adapter: ssh throws")) << script;
    EXPECT_EQ(std::string::npos, script.find("\n   6  ")) << script;
}

TEST(Counterexample, IsShownWithWhatWasExpectedAndWhatHappened) {
    auto params = tenThousand();
    params.disableShrinking = true;
    const std::string text = textOf(check(params, Bend::DISABLING_NAMES_A_PORT));
    EXPECT_TRUE(std::regex_search(text, std::regex("  ! run 30000 (.*) \\[port\\] \\[22\\] +run 30000 \\1\n")))
        << text;
}

}  // namespace
