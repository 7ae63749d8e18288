#include <gtest/gtest.h>

#include "AdapterWatch.h"
#include "CmNotification.h"
#include "LoadedComponent.h"
#include "Storm.h"

namespace {

using namespace TulTest;

constexpr unsigned million = 1'000'000;
constexpr const char* cliSsh = "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1";

class NotificationStorm : public testing::Test {
public:
    void expectEverythingDelivered() {
        EXPECT_EQ(million, storm.delivered());
        for (std::size_t consumer = 0; consumer < CONSUMERS; ++consumer) {
            EXPECT_LT(million / 20, storm.deliveredTo(consumer)) << "consumer " << consumer + 1;
        }
        EXPECT_LT(50u, storm.cycles) << "of some two thousand";
        EXPECT_LT(storm.cycles, storm.deliveredDuringStart());
    }

    void expectHandlersExcludedOneAnother() {
        EXPECT_EQ(0u, watch.overlaps);
        EXPECT_EQ(0u, watch.repeated);
        EXPECT_EQ(0u, watch.malformed);
        EXPECT_EQ(0u, framework.complaints);
        EXPECT_LT(million / 10, watch.runs);
    }

    /** Delivers a state to CliSsh; how many adapter runs that made. */
    unsigned runsAfter(int state) {
        const unsigned before = watch.runs;
        CmNotification notification;
        notification.changed(cliSsh).enumeration("administrativeState", state);
        EXPECT_TRUE(framework.deliver(CLI_SSH, notification.record()));
        return watch.runs - before;
    }

    LightFramework framework;
    AdapterWatch watch;
    LoadedComponent component{framework};
    Storm storm{framework, {[this] { component.start(); }, [this] { component.stop(); }, CONSUMERS}};
};

TEST_F(NotificationStorm, AMillionFromEightThreadsWithStopsAndStartsBetweenThemLeavesTheComponentConsistent) {
    storm.blow(million);
    RecordProperty("cycles", static_cast<int>(storm.cycles));
    RecordProperty("runs", static_cast<int>(watch.runs.load()));
    RecordProperty("delivered_during_start", static_cast<int>(storm.deliveredDuringStart()));
    expectEverythingDelivered();
    expectHandlersExcludedOneAnother();
    EXPECT_FALSE(watch.isOpen("clissh"));
    EXPECT_FALSE(watch.isOpen("netconfssh"));

    component.start();
    EXPECT_TRUE(watch.isOpen("clissh"));
    EXPECT_EQ(0u, runsAfter(1));
    EXPECT_EQ(1u, runsAfter(0));
    EXPECT_EQ(0u, runsAfter(0));
    EXPECT_FALSE(watch.isOpen("clissh"));
    EXPECT_EQ(1u, runsAfter(1));
    component.stop();
}

}  // namespace
