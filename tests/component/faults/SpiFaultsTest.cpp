#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <iterator>

#include "Emulation.h"
#include "Sanitizers.h"
#include "SpiFaultRows.h"

namespace {

using namespace TulTest;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using TextMatcher = testing::Matcher<const std::string&>;

bool endsByAbort(int status) {
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}

/** Where a sanitizer catches the signal it gives its own code in place of it. */
bool endsAtANullPointer(int status) {
    const int reported = hasThreadSanitizer ? 66 : 1;
    return hasSanitizer ? WIFEXITED(status) && WEXITSTATUS(status) == reported
                        : WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

/** What is printed last; behind it comes nothing but a sanitizer's report. */
TextMatcher endsWith(const std::string& line) {
    return hasSanitizer ? TextMatcher(HasSubstr(line + "\n")) : lastWords(testing::EndsWith(line + "\n"));
}

class SpiUses : public testing::TestWithParam<Scenario> {};

TEST_P(SpiUses, AreThoseOfTheTable) {
    Life life(GetParam());
    EXPECT_EQ(Outcome(), life.act());
    EXPECT_EQ(usesOf(GetParam().name), life.spi.uses);
    life.expectUsable();
}

INSTANTIATE_TEST_SUITE_P(Component, SpiUses, testing::ValuesIn(scenarios()),
                         [](const auto& row) { return row.param.name; });

class SpiFaults : public testing::TestWithParam<std::tuple<FaultRow, Persistence, bool>> {
public:
    const FaultRow& row = std::get<0>(GetParam());
    const Scenario& call = scenario(row.scenario);
    const Persistence persistence = std::get<1>(GetParam());
    const bool findsNull = std::get<2>(GetParam());
    const Expected& expected = persistence == Persistence::ONCE ? row.once : row.forEver;

    /** No two uses of a scenario give the same one, and none is a code of the component's own. */
    BryReturnT code() const {
        const Uses& uses = usesOf(row.scenario);
        const auto operation = std::distance(uses.begin(), uses.find(row.operation));
        return findsNull ? BRY_OK : static_cast<BryReturnT>(-1000 - 100 * operation - row.use);
    }

    /** A portal that is gone for good has no router either, which the platform owes: start ends at the null pointer.
     */
    bool reachesTheMissingRouter() const {
        const bool subscribes = call.call == Call::START && expected.result == BRY_OK && expected.thrown.empty();
        return subscribes && call.managed && row.operation == portal1 && persistence == Persistence::FOR_EVER;
    }

    Outcome expectedOutcome() const {
        return expected.thrown.empty() ? Outcome::of(expected.result == itsCode ? code() : expected.result)
                                       : Outcome::ofThrown(expected.thrown);
    }

    /** The journal as the row tells it; only what is found as null has a code of the platform's own. */
    Lines expectedJournal() const {
        Lines lines = expected.journal;
        for (std::string& line : lines) {
            for (std::size_t at = line.find("CODE"); at != std::string::npos; at = line.find("CODE")) {
                line.replace(at, 4, std::to_string(findsNull ? BRY_NOT_FOUND : code()));
            }
        }
        if (findsNull) {  // a null router is found: there is nothing to warn of
            std::erase(lines, noRouter);
        }
        return lines;
    }
};

TEST_P(SpiFaults, LeadToTheCodeAndTheMessagesAndLeaveTheComponentUsable) {
    Life life(call);
    life.spi.fail({row.operation, row.use, persistence, code()});
    if (reachesTheMissingRouter()) {
        EXPECT_EXIT((life.printJournal(), life.act()), endsAtANullPointer, endsWith(noRouter));
        return;
    }
    testing::internal::CaptureStderr();  // records go there when the log cannot be found
    const Outcome outcome = life.act();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(expectedOutcome(), outcome);
    EXPECT_EQ(expectedJournal(), life.journal);
    EXPECT_EQ(life.component.isStarted() ? 4u : expected.leftRegistered, life.framework.consumers.size());
    if (call.call == Call::NOTIFY) {
        life.expectNextNotification();
    }
    life.takeAwayWhatIsLeft();
    life.expectUsable();
}

std::string nameOfRow(const testing::TestParamInfo<std::tuple<FaultRow, Persistence, bool>>& info) {
    const auto& [row, persistence, findsNull] = info.param;
    std::string name = row.scenario + ("_" + row.operation) + std::to_string(row.use);
    std::erase(name, ' ');
    return name + nameOf(persistence) + (findsNull ? "Null" : "");
}

INSTANTIATE_TEST_SUITE_P(WithACode, SpiFaults,
                         testing::Combine(testing::ValuesIn(faultRows()),
                                          testing::Values(Persistence::ONCE, Persistence::FOR_EVER),
                                          testing::Values(false)),
                         nameOfRow);

std::vector<FaultRow> lookUps() {
    std::vector<FaultRow> rows = faultRows();
    std::erase_if(rows, [](const FaultRow& row) { return !row.operation.starts_with("getInterface"); });
    return rows;
}

INSTANTIATE_TEST_SUITE_P(WithANullPointer, SpiFaults,
                         testing::Combine(testing::ValuesIn(lookUps()),
                                          testing::Values(Persistence::ONCE, Persistence::FOR_EVER),
                                          testing::Values(true)),
                         nameOfRow);

/** With a null pointer: only a router can be found as one. */
std::vector<EndRow> endRowsOf(const Scenario& start, bool findsNull) {
    std::vector<EndRow> rows = endRows(start.full ? 7 : 6);
    if (findsNull) {
        std::erase_if(rows, [](const EndRow& row) { return row.operation != eventRouter; });
    }
    return rows;
}

class SpiFaultsDeathTest : public testing::TestWithParam<std::tuple<const char*, Persistence, bool>> {
public:
    const Scenario& start = scenario(std::get<0>(GetParam()));
    const Persistence persistence = std::get<1>(GetParam());
    const bool findsNull = std::get<2>(GetParam());

    /** A router that is found, if only as a null pointer, is not warned of: the words are those before. */
    TextMatcher lastWords(const EndRow& row) const {
        return findsNull ? TextMatcher(AllOf(endsWith(lastWordsBeforeSubscribing(start)), Not(HasSubstr(noRouter))))
                         : endsWith(row.lastWords);
    }
};

TEST_P(SpiFaultsDeathTest, EndTheProcessWhenAConsumerCannotBeStarted) {
    for (const EndRow& row : endRowsOf(start, findsNull)) {
        SCOPED_TRACE(row.operation + " " + std::to_string(row.use));
        Life life(start);
        life.printJournal();
        life.spi.fail({row.operation, row.use, persistence, findsNull ? BRY_OK : -77});
        // Without a router, which the platform owes, the process ends at the null pointer.
        const bool isLookUp = row.operation == eventRouter || row.operation == portal1;
        const auto ends = isLookUp ? endsAtANullPointer : endsByAbort;
        EXPECT_EXIT(life.act(), ends, lastWords(row));
        EXPECT_THAT(life.framework.consumers, IsEmpty()) << "this process has not started anything";
    }
}

INSTANTIATE_TEST_SUITE_P(Component, SpiFaultsDeathTest,
                         testing::Combine(testing::Values("StartOnAnEmptyNode", "StartOnAFullNode"),
                                          testing::Values(Persistence::ONCE, Persistence::FOR_EVER), testing::Bool()),
                         [](const auto& row) {
                             return std::get<0>(row.param) + std::string(nameOf(std::get<1>(row.param))) +
                                    (std::get<2>(row.param) ? "Null" : "");
                         });

/** Nothing of what the calls use is missing in the tables above. */
TEST_P(SpiUses, AreAllWalked) {
    Uses walked;
    for (const FaultRow& row : faultRows()) {
        walked[row.operation] += row.scenario == std::string(GetParam().name) ? 1 : 0;
    }
    if (GetParam().call == Call::START && GetParam().managed) {
        for (const EndRow& row : endRowsOf(GetParam(), false)) {
            ++walked[row.operation];
        }
    }
    std::erase_if(walked, [](const auto& operation) { return operation.second == 0; });
    EXPECT_EQ(usesOf(GetParam().name), walked);
}

}  // namespace
