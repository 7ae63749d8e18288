#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <tuple>

#include "Emulation.h"
#include "Life.h"

namespace {

using namespace TulTest;
using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Source = AllocationFaults::Source;

/** One allocation of an undisturbed call. */
struct Place {
    Source source;
    bool whileSubscribing; /**< between the registration of a consumer and its subscription */
    bool isGuarded;        /**< its failure ends in a result, not in an exception */

    /** A consumer that has no memory for its filter must not look alive: it ends the process. */
    bool endsTheProcess() const { return source == Source::C_LIBRARY && whileSubscribing; }
};

/** Two functions of the parser's library lose a block when their next allocation fails; nobody can free it. */
std::size_t releaseWhatTheParserLoses() {
    return AllocationFaults::releaseAllocatedIn("XML12ParserEngine11pushContext") +
           AllocationFaults::releaseAllocatedIn("XML8NamePoolC");
}

/** The allocations of a call that nothing disturbs. */
std::vector<Place> placesOf(const Scenario& call) {
    std::vector<Place> places;
    Life life(call);
    AllocationFaults none(0, Persistence::ONCE);
    none.onAllocation = [&](Source source) {
        places.push_back({source, life.framework.consumers.size() > life.subscribed(), life.isInGuardedOperation()});
    };
    EXPECT_EQ(Outcome(), life.act(none));
    return places;
}

class AllocationTorture : public testing::TestWithParam<std::tuple<Scenario, Persistence>> {
public:
    const Scenario& call = std::get<0>(GetParam());
    const Persistence persistence = std::get<1>(GetParam());

    /** Lets the n-th allocation fail; false when there were fewer. */
    bool failsAt(unsigned int n, bool isGuarded) {
        Life life(call);
        AllocationFaults faults(n, persistence);
        const Outcome outcome = life.act(faults);
        const bool mayThrow = !isGuarded || persistence == Persistence::FOR_EVER;
        EXPECT_THAT(outcome.thrown, AnyOf("", mayThrow ? "bad_alloc" : ""));
        expectLaidDown(life, outcome);
        return faults.delivered() > 0;
    }

    void expectLaidDown(Life& life, const Outcome& outcome) {
        switch (call.call) {
            case Call::INIT:
                return expectInitialized(life, outcome);
            case Call::START:
                return expectStarted(life, outcome);
            case Call::NOTIFY:
                EXPECT_EQ(Outcome(), outcome);
                life.expectNextNotification();
                return life.expectUsable();
            case Call::STOP:
                return expectStopped(life, outcome);
            case Call::TERMINATE:
                EXPECT_EQ(Outcome(), outcome);
                EXPECT_EQ(BRY_FAILED, life.component.start(BRY_REASON_NORMAL));
                return life.expectUsable();
        }
    }

    /** A stop that ended early is repeated; a run that had no memory is reported and, like every run, not. */
    static void expectStopped(Life& life, const Outcome& outcome) {
        EXPECT_THAT(outcome.result, AnyOf(std::nullopt, BRY_OK));
        EXPECT_EQ(BRY_OK, life.component.stop(BRY_REASON_NORMAL));
        const auto failed = std::count(life.journal.begin(), life.journal.end(), "3 disablePorts: std::bad_alloc");
        EXPECT_LE(2, static_cast<long>(life.runs().size()) + failed);
        EXPECT_FALSE(life.component.isStarted());
        EXPECT_THAT(life.framework.consumers, IsEmpty());
        life.expectUsable();
    }

    static void expectInitialized(Life& life, const Outcome& outcome) {
        if (outcome == Outcome()) {  // what was read is what was given
            life.startAgain();
            EXPECT_THAT(life.runs(),
                        testing::IsSupersetOf({"clissh unlock port 2022", "netconfssh unlock port 2830"}));
        } else {
            EXPECT_THAT(outcome.result, AnyOf(std::nullopt, BRY_FAILED));
            EXPECT_EQ(BRY_FAILED, life.component.start(BRY_REASON_NORMAL));
        }
        life.expectUsable();
    }

    void expectStarted(Life& life, const Outcome& outcome) {
        EXPECT_THAT(outcome.result, AnyOf(std::nullopt, BRY_OK, BRY_FAILED, BRY_NO_PARENT_MO, BRY_ALREADY_EXISTS));
        expectReason(life, outcome.result);
        if (call.full) {  // a search that found no memory must not end in a marking that is taken away
            EXPECT_THAT(life.runs(), Not(Contains(HasSubstr("--removeIpQoS"))));
        }
        if (life.component.isStarted() || life.framework.consumers.empty()) {
            life.expectUsable();
        } else {
            expectHalfSubscribed(life);
        }
    }

    static void expectReason(const Life& life, const std::optional<BryReturnT>& result) {
        if (result == BRY_NO_PARENT_MO) {
            EXPECT_THAT(life.journal, Contains("4 createMo: SysM Instance could not be found."));
        } else if (result.value_or(BRY_OK) != BRY_OK) {
            EXPECT_THAT(life.journal, Contains(HasSubstr("Ssh Mo Creation Failed!!.")));
        }
    }

    /**
     * A start that failed between the consumers leaves some subscribed, and those work. It cannot be repeated: a
     * consumer that is started already ends the process silently, one that is registered already with its message.
     */
    static void expectHalfSubscribed(Life& life) {
        EXPECT_GT(4u, life.subscribed());
        life.expectNotificationsWork();
        const std::string last = "3 start: Could not register consumer\n";
        const bool firstIsStarted = life.subscribed() > 0;
        EXPECT_EXIT((life.printJournal(), life.startAgain()), testing::KilledBySignal(SIGABRT),
                    firstIsStarted ? Not(HasSubstr("Could not")) : lastWords(testing::EndsWith(last)));
        life.framework.consumers.clear();
        EXPECT_EQ(BRY_OK, life.component.stop(BRY_REASON_NORMAL));
    }

    void expectEndOfTheProcess(unsigned int n) {
        Life life(call);
        AllocationFaults faults(n, persistence);
        EXPECT_EXIT((life.printJournal(), life.act(faults)), testing::KilledBySignal(SIGABRT),
                    lastWords(testing::EndsWith("3 start: Could not add subscription\n")));
    }
};

TEST_P(AllocationTorture, LeavesTheComponentUsableWhicheverAllocationFails) {
    Life(call).act();  // caches of the C++ library and of the parser fill
    AllocationFaults::forgetLive();
    const std::vector<Place> expected = placesOf(call);
    ASSERT_THAT(AllocationFaults::live(), IsEmpty());
    EXPECT_EQ(call.call == Call::TERMINATE, expected.empty()) << "only terminate needs no memory";
    unsigned int n = 1;
    for (bool failed = true; failed && !HasFailure(); ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        if (n <= expected.size() && expected[n - 1].endsTheProcess()) {
            expectEndOfTheProcess(n);
        } else {
            failed = failsAt(n, n <= expected.size() && expected[n - 1].isGuarded);
        }
        EXPECT_GE(call.call == Call::INIT ? 1u : 0u, releaseWhatTheParserLoses());
        EXPECT_THAT(AllocationFaults::live(), IsEmpty());
    }
    const auto guarded =
        std::count_if(expected.begin(), expected.end(), [](const Place& place) { return place.isGuarded; });
    EXPECT_EQ(call.call == Call::START, guarded > 0);
    EXPECT_EQ(expected.size() + 2, n) << "the walk ends one after the last allocation";
    RecordProperty("allocations", static_cast<int>(expected.size()));
}

INSTANTIATE_TEST_SUITE_P(Component, AllocationTorture,
                         testing::Combine(testing::ValuesIn(scenarios()),
                                          testing::Values(Persistence::ONCE, Persistence::FOR_EVER)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + nameOf(std::get<1>(row.param));
                         });

/** Three blocks are passed on with the creation of an MO; a fourth, the second to be taken, is passed to nobody. */
TEST(AllocationTortureOfTheCreation, FailsWithoutATransactionForEachBlockThatWouldBePassedOn) {
    const Scenario& start = scenario("StartOnAnEmptyNode");
    const std::vector<Place> places = placesOf(start);
    std::vector<std::string> ends;
    for (unsigned int n = 1; n <= places.size(); ++n) {
        if (places[n - 1].source == Source::C_LIBRARY && !places[n - 1].whileSubscribing) {
            Life life(start);
            AllocationFaults faults(n, Persistence::ONCE);
            const BryReturnT result = life.act(faults).result.value();  // nothing is thrown here
            ends.push_back(std::to_string(result) + " after " + std::to_string(life.spi.uses["newTransaction"]));
            EXPECT_EQ(result == BRY_OK, life.journal.back().starts_with("run: ssh ")) << life.journal.back();
            EXPECT_EQ(result != BRY_OK, life.journal.back().ends_with("Ssh Mo Creation Failed!!."));
        }
    }
    EXPECT_THAT(ends, testing::ElementsAre("-1 after 0", "0 after 2", "-1 after 0", "-1 after 0", "-1 after 1",
                                           "0 after 2", "-1 after 1", "-1 after 1"));
}

}  // namespace
