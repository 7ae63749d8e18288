#include "ComponentTest.h"

namespace {

using namespace TulTest;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

using Lifecycle = ComponentTest;

TEST_F(Lifecycle, ASecondInitializeIsRefusedAndTheFirstConfigurationStaysInForce) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true, 2022)));
    EXPECT_EQ(-1, library.init(configuration(false, 2122)));
    expectLogs({"3 initialize: Component already initialized!"});

    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.takeRuns(), testing::Contains("clissh unlock port 2022"));
}

TEST_F(Lifecycle, ANullConfigurationIsRefusedWithItsOwnCodeAndAValidOneIsTakenLater) {
    EXPECT_EQ(-8, library.init(nullptr));
    expectLogs({"4 initialize: No configuration provided for TulSshdManagementComponent"});
    EXPECT_EQ(-1, library.start());
    expectLogs({"3 start: Component not initialized!"});

    EXPECT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_EQ(BRY_OK, library.start());
}

struct BadConfiguration {
    const char* name;
    const char* text;
    LineMatchers logs;

    friend std::ostream& operator<<(std::ostream& stream, const BadConfiguration& row) { return stream << row.name; }
};

class LifecycleWithBadConfiguration : public ComponentTest, public testing::WithParamInterface<BadConfiguration> {};

TEST_P(LifecycleWithBadConfiguration, InitializeReturnsMinusOneAndLeavesTheComponentUninitialized) {
    EXPECT_EQ(-1, library.init(GetParam().text));
    expectLogs(GetParam().logs);
    EXPECT_EQ(-1, library.start());
    expectLogs({"3 start: Component not initialized!"});
    EXPECT_EQ(BRY_OK, library.init(configuration(true)));
    expectSilence();
}

INSTANTIATE_TEST_SUITE_P(
    Lifecycle, LifecycleWithBadConfiguration,
    testing::Values(
        BadConfiguration{"Empty", "", {StartsWith("3 readComponentConfiguration: Failed to load configuration: ")}},
        BadConfiguration{
            "NotXml", "<a>", {StartsWith("3 readComponentConfiguration: Failed to load configuration: ")}},
        BadConfiguration{
            "NoSection", "<a/>", {"3 readComponentConfiguration: No TulSshdManagementComponent configuration found"}},
        BadConfiguration{
            "InvalidSwitch", "<TulSshdManager><sshdManagement>yes</sshdManagement></TulSshdManager>", {}},
        BadConfiguration{"NoPort",
                         "<TulSshdManager><sshdManagement>true</sshdManagement></TulSshdManager>",
                         {"3 getUintValueFromCfg: 'cliPort' tag does not exist"}}),
    nameOf<BadConfiguration>);

TEST_F(Lifecycle, InitializeReadsTheConfigurationAnewAfterTerminate) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true, 2022, 2830)));
    library.terminate();
    EXPECT_EQ(BRY_OK, library.init(configuration(true, 2122, 2930, 0)));
    ASSERT_EQ(BRY_OK, library.start());
    expectRuns({"clissh unlock port 2122", "netconfssh unlock port 2930", "spi-revision",
                "ssh --removeIpQoS --renegotiationTime none"});
}

TEST_F(Lifecycle, AnUninitializedComponentDoesNotStart) {
    ASSERT_EQ(-8, library.init(nullptr));
    forget();
    EXPECT_EQ(-1, library.start());
    expectLogs({"3 start: Component not initialized!"});
    EXPECT_THAT(framework.calls, IsEmpty());
    expectSilence();
}

TEST_F(Lifecycle, StoppingAComponentThatWasNeverStartedOnlyWarns) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    forget();
    EXPECT_EQ(BRY_OK, library.stop());
    expectLogs({"4 stop: TulSshdManager is already stopped"});
    EXPECT_EQ(Lines(), steps());
    expectSilence();
}

TEST_F(Lifecycle, StopUnsubscribesAllFourConsumersThenClosesBothPorts) {
    givenStarted();
    EXPECT_EQ(BRY_OK, library.stop());

    const std::string subscription =
        "removeSubscription BryOamSpiCmEvent_Notification_1 BryOamSpiCmEvent_FilterTypeRegExp_1=";
    EXPECT_EQ(Lines({subscription + cliSshPattern, "unregisterConsumer known", subscription + netconfSshPattern,
                     "unregisterConsumer known", subscription + serviceCategoryPattern, "unregisterConsumer known",
                     subscription + sshPattern, "unregisterConsumer known", "script clissh lock",
                     "script netconfssh lock"}),
              steps());
    EXPECT_THAT(framework.consumers, IsEmpty());
    expectRuns({"clissh lock", "netconfssh lock"});
    expectSilence();
}

TEST_F(Lifecycle, AStoppedComponentIsNotStoppedAgain) {
    givenStarted();
    ASSERT_EQ(BRY_OK, library.stop());
    forget();
    EXPECT_EQ(BRY_OK, library.stop());
    expectLogs({"4 stop: TulSshdManager is already stopped"});
    EXPECT_EQ(Lines(), steps());
    expectSilence();
}

TEST_F(Lifecycle, StopSucceedsWhenTheAdapterFails) {
    givenStarted();
    framework.givenAdapter("exit 3");
    EXPECT_EQ(BRY_OK, library.stop());
    expectRuns({"clissh lock", "netconfssh lock"});
    expectLogs({StartsWith("3 disablePorts: "), StartsWith("3 disablePorts: ")});
    EXPECT_EQ(BRY_OK, library.stop());
    expectLogs({"4 stop: TulSshdManager is already stopped"});
}

TEST_F(Lifecycle, StopSucceedsWithoutALogRecordWhenTheRouterFails) {
    givenStarted();
    framework.results = {{"removeSubscription", -5}, {"unregisterConsumer", -6}};
    EXPECT_EQ(BRY_OK, library.stop());
    EXPECT_THAT(framework.callsOf("unregisterConsumer"), SizeIs(4));
    expectRuns({"clissh lock", "netconfssh lock"});
    expectSilence();
}

TEST_F(Lifecycle, TerminateLeavesARunningComponentRunning) {
    givenStarted(configuration(true, 2022));
    const BryMgmtSpiComponent_2 record = *framework.component;
    library.terminate();

    notify(cliSshPattern, CmNotification().changed(cliSshDn).enumeration("administrativeState", 0));
    notify(cliSshPattern, CmNotification().changed(cliSshDn).enumeration("administrativeState", 1));
    expectRuns({"clissh lock", "clissh unlock port 2022"});
    EXPECT_EQ(BRY_OK, record.start(BRY_REASON_NORMAL));
    expectLogs({"4 start: TulSshdManager already running"});
    EXPECT_EQ(BRY_OK, record.stop(BRY_REASON_NORMAL));
    expectRuns({"clissh lock", "netconfssh lock"});
    EXPECT_EQ(-1, record.start(BRY_REASON_NORMAL));
    expectLogs({"3 start: Component not initialized!"});
    expectSilence();
}

TEST_F(Lifecycle, InitializeOfARunningComponentIsRefused) {
    givenStarted();
    EXPECT_EQ(-1, library.init(configuration(true)));
    expectLogs({"3 initialize: Component already initialized!"});
    expectSilence();
}

TEST_F(Lifecycle, StopAfterManagementWasSwitchedOffTouchesNeitherConsumersNorPorts) {
    givenStarted();
    library.terminate();
    ASSERT_EQ(BRY_OK, library.init(configuration(false)));
    forget();

    EXPECT_EQ(BRY_OK, library.stop());
    EXPECT_EQ(Lines(), steps());
    EXPECT_THAT(framework.consumers, SizeIs(4));
    expectSilence();
    EXPECT_EQ(BRY_OK, library.stop());
    expectLogs({"4 stop: TulSshdManager is already stopped"});
}

TEST_F(Lifecycle, StopKeepsTheMosAndSendsNoBatch) {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    givenStarted();
    ASSERT_EQ(BRY_OK, library.stop());
    EXPECT_THAT(framework.callsOf("deleteMo"), IsEmpty());
    EXPECT_THAT(framework.callsOf("script ssh"), IsEmpty());
}

TEST_F(Lifecycle, ARestartReadsEverythingAgainAndSubscribesAgain) {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
    framework.givenMo(sshDn);
    givenStarted();
    ASSERT_EQ(BRY_OK, library.stop());
    forget();

    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
    framework.givenMo(oamCmDn, {{"dscp", uint8(10)}});
    ASSERT_EQ(BRY_OK, library.start());
    expectRuns({"clissh lock", "netconfssh unlock port 2830", "ssh --ipQos 10 --renegotiationTime 3600"});
    EXPECT_THAT(framework.consumers, SizeIs(4));
    expectSilence();
}

TEST_F(Lifecycle, ARestartTakesTheLastKnownStateWhenTheMoCannotBeRead) {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(0)}});
    framework.givenMo(sshDn);
    givenStarted();
    ASSERT_EQ(BRY_OK, library.stop());
    forget();

    framework.givenMo(cliSshDn);
    framework.givenMo(netconfSshDn);
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.takeRuns(), testing::IsSupersetOf({"clissh unlock port 2022", "netconfssh lock"}));
    expectLogs({std::string("4 getAdministrativeState: Unable to get administrativeState for ") + cliSshDn,
                std::string("4 getAdministrativeState: Unable to get administrativeState for ") + netconfSshDn});
}

/** What a notification opens the port for, a start does not: there only the unlocked state does. */
TEST_F(Lifecycle, ARestartClosesThePortsForALastKnownStateThatIsNeitherLockedNorUnlocked) {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(sshDn);
    givenStarted();
    notify(cliSshPattern, CmNotification().changed(cliSshDn).enumeration("administrativeState", 2));
    notify(netconfSshPattern, CmNotification().changed(netconfSshDn).enumeration("administrativeState", -1));
    expectRuns({"clissh unlock port 2022", "netconfssh unlock port 2830"});
    ASSERT_EQ(BRY_OK, library.stop());
    forget();

    framework.givenMo(cliSshDn);
    framework.givenMo(netconfSshDn);
    ASSERT_EQ(BRY_OK, library.start());
    expectRuns({"clissh lock", "netconfssh lock", "ssh --removeIpQoS --renegotiationTime 3600"});
    expectLogs({std::string("4 getAdministrativeState: Unable to get administrativeState for ") + cliSshDn,
                std::string("4 getAdministrativeState: Unable to get administrativeState for ") + netconfSshDn});
}

}  // namespace
