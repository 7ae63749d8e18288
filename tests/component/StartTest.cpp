#include <csignal>

#include "ComponentTest.h"
#include "Emulation.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::KilledBySignal;
using testing::SizeIs;
using testing::StartsWith;

class Start : public ComponentTest {
public:
    void givenInitialized(const std::string& text = configuration(true)) {
        ASSERT_EQ(BRY_OK, library.init(text));
        forget();
    }

    /** A node where everything that the component looks at exists. */
    void givenFullNode() {
        framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
        framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
        framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
        framework.givenMo(sshDn, {{"selectedCiphers", strings({"aes128-ctr", "aes256-ctr"})}});
    }

    /** The component does not count as running: stop says so. */
    void expectNotRunning() {
        EXPECT_EQ(BRY_OK, library.stop());
        expectLogs({"4 stop: TulSshdManager is already stopped"});
        expectSilence();
    }
};

TEST_F(Start, CreatesBothMosOpensBothPortsAndSendsOneBatchOnAnEmptyNode) {
    givenInitialized(configuration(true, 2022, 2830, 3600));
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("createMo"),
                ElementsAre(HasSubstr(" CliSsh cliSshId 1 administrativeState:12=1;"),
                            HasSubstr(" NetconfSsh netconfSshId 1 administrativeState:12=1;")));
    EXPECT_THAT(framework.callsOf("getAttribute"), ElementsAre(EndsWith("DiffServCategory=OamCM dscp")));
    expectRuns({"clissh unlock port 2022", "netconfssh unlock port 2830", "spi-revision",
                "ssh --removeIpQoS --renegotiationTime 3600"});
    EXPECT_THAT(framework.consumers, SizeIs(4));
    expectLogs({HasSubstr("SysM,CliSsh"), HasSubstr("SysM,NetconfSsh"), HasSubstr("SecM,Ssh")});
    expectSilence();
}

const std::string subscription =
    "addSubscription BryOamSpiCmEvent_Notification_1 BryOamSpiCmEvent_FilterTypeRegExp_1=";

TEST_F(Start, TakesItsStepsInOrderOnAnEmptyNode) {
    givenInitialized();
    ASSERT_EQ(BRY_OK, library.start());
    const std::string sysM = "ManagedElement,SystemFunctions,SysM";
    const std::string initial = " 1 administrativeState:12=1;";
    EXPECT_EQ(Lines({"findInstances " + sysM + ",CliSsh",
                     "findInstances " + sysM,
                     "newTransaction 1 3600",
                     std::string("createMo ") + sysMDn + " CliSsh cliSshId" + initial,
                     "commit",
                     "script clissh unlock port 2022",
                     "findInstances " + sysM + ",NetconfSsh",
                     "findInstances " + sysM,
                     "newTransaction 1 3600",
                     std::string("createMo ") + sysMDn + " NetconfSsh netconfSshId" + initial,
                     "commit",
                     "script netconfssh unlock port 2830",
                     "findInstances ManagedElement,Transport",
                     std::string("getAttribute ") + oamCmDn + " dscp",
                     "script spi-revision",
                     "findInstances ManagedElement,SystemFunctions,SecM,Ssh",
                     "registerConsumer",
                     subscription + cliSshPattern,
                     "registerConsumer",
                     subscription + netconfSshPattern,
                     "registerConsumer",
                     subscription + serviceCategoryPattern,
                     "registerConsumer",
                     subscription + sshPattern,
                     "script ssh --removeIpQoS --renegotiationTime 3600"}),
              steps());
}

TEST_F(Start, AdoptsWhatIsThereInOrderOnAFullNode) {
    givenFullNode();
    givenInitialized();
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("newTransaction"), IsEmpty());
    expectRuns({"clissh unlock port 2022", "netconfssh unlock port 2830", "spi-revision",
                "ssh --ipQos 46 --renegotiationTime 3600 --ciphers aes128-ctr,aes256-ctr"});
    expectSilence();
}

TEST_F(Start, DisablesTheCliPortAndCreatesNothingWhenCliSshIsLocked) {
    givenFullNode();
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
    givenInitialized();
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("createMo"), IsEmpty());
    EXPECT_THAT(framework.takeRuns(), testing::IsSupersetOf({"clissh lock", "netconfssh unlock port 2830"}));
}

TEST_F(Start, DisablesTheNetconfPortAndCreatesNothingWhenNetconfSshIsLocked) {
    givenFullNode();
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(0)}});
    givenInitialized();
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("createMo"), IsEmpty());
    EXPECT_THAT(framework.takeRuns(), testing::IsSupersetOf({"clissh unlock port 2022", "netconfssh lock"}));
}

TEST_F(Start, OnAStartedComponentWarnsAndDoesNothingElse) {
    givenStarted();
    EXPECT_EQ(BRY_OK, library.start());
    expectLogs({"4 start: TulSshdManager already running"});
    EXPECT_THAT(framework.calls, IsEmpty());
    expectSilence();
}

struct MissingInterface {
    const char* name;
    const char* interfaceName;
    BryReturnT result; /**< 0: it is found, as a null pointer */
    const char* log;

    friend std::ostream& operator<<(std::ostream& stream, const MissingInterface& row) { return stream << row.name; }
};

class StartWithoutAnInterface : public Start,
                                public testing::WithParamInterface<std::tuple<MissingInterface, bool>> {};

TEST_P(StartWithoutAnInterface, ReturnsMinusOneAndDoesNothingWhetherManagementIsOnOrOff) {
    const auto& [missing, managed] = GetParam();
    givenFullNode();
    givenInitialized(configuration(managed));
    if (missing.result == BRY_OK) {
        framework.nullInterfaces.insert(missing.interfaceName);
    } else {
        framework.results[std::string("getInterface ") + missing.interfaceName] = missing.result;
    }
    EXPECT_EQ(-1, library.start());
    expectLogs({missing.log});
    EXPECT_EQ(Lines(), steps());
    expectNotRunning();

    framework.results.clear();
    framework.nullInterfaces.clear();
    EXPECT_EQ(BRY_OK, library.start());
}

const char* const noManagedObjects = "3 start: Failed to getInterface (TulOamSpiManagedObject:3) from the portal";
const char* const noTransactions = "3 start: Failed to getInterface (TulOamSpiTransactionMaster:1) from the portal";

INSTANTIATE_TEST_SUITE_P(
    Start, StartWithoutAnInterface,
    testing::Combine(
        testing::Values(MissingInterface{"NoManagedObjects", "TulOamSpiManagedObject", -4, noManagedObjects},
                        MissingInterface{"NullManagedObjects", "TulOamSpiManagedObject", 0, noManagedObjects},
                        MissingInterface{"NoTransactions", "TulOamSpiTransactionMaster", -4, noTransactions},
                        MissingInterface{"NullTransactions", "TulOamSpiTransactionMaster", 0, noTransactions}),
        testing::Bool()),
    [](const auto& row) {
        return std::string(std::get<0>(row.param).name) + (std::get<1>(row.param) ? "Managed" : "NotManaged");
    });

TEST_F(Start, LooksBothInterfacesUpOnEveryStart) {
    givenStarted();
    ASSERT_EQ(BRY_OK, library.stop());
    forget();
    ASSERT_EQ(BRY_OK, library.start());
    ASSERT_GE(framework.calls.size(), 2u);
    EXPECT_EQ("getInterface TulOamSpiExtCmRouterService TulOamSpiManagedObject 3", framework.calls[0]);
    EXPECT_EQ("getInterface TulOamSpiTransactionService TulOamSpiTransactionMaster 1", framework.calls[1]);
}

TEST_F(Start, ReturnsTheCodeAndStopsThereWhenCliSshCannotBeCreated) {
    givenInitialized();
    framework.results["createMo"] = -77;
    EXPECT_EQ(-77, library.start());
    expectRuns({});
    EXPECT_THAT(framework.callsOf("createMo"), SizeIs(1));
    EXPECT_THAT(framework.consumers, IsEmpty());
    expectLogs({HasSubstr("SysM,CliSsh"), "3 createMo: CliSsh Mo Creation Failed!!."});
    expectNotRunning();
}

TEST_F(Start, ReturnsTheCodeAndKeepsTheCliPortWhenNetconfSshCannotBeCreated) {
    givenInitialized();
    framework.during["script"] = [this] { framework.results["createMo"] = -78; };  // from the CLI port on
    EXPECT_EQ(-78, library.start());
    expectRuns({"clissh unlock port 2022"});
    EXPECT_THAT(framework.consumers, IsEmpty());
    expectLogs(
        {HasSubstr("SysM,CliSsh"), HasSubstr("SysM,NetconfSsh"), "3 createMo: NetconfSsh Mo Creation Failed!!."});
    expectNotRunning();
}

TEST_F(Start, KeepsTheLockedCliPortWhenNetconfSshCannotBeCreated) {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
    framework.results["createMo"] = -78;
    givenInitialized();
    EXPECT_EQ(-78, library.start());
    expectRuns({"clissh lock"});
}

TEST_F(Start, AdoptsTheMosOfAnEarlierAttempt) {
    givenInitialized();
    framework.during["script"] = [this] { framework.results["createMo"] = -78; };
    ASSERT_EQ(-78, library.start());
    framework.during.clear();
    framework.results.clear();
    forget();

    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("createMo"), ElementsAre(HasSubstr(" NetconfSsh ")));
    expectRuns({"clissh unlock port 2022", "netconfssh unlock port 2830", "spi-revision",
                "ssh --removeIpQoS --renegotiationTime 3600"});
}

TEST_F(Start, MakesNoBatchRunWhenTheAdapterIsTooOldForEverything) {
    givenFullNode();
    framework.givenAdapterRevision("1.6.9");
    givenInitialized();
    EXPECT_EQ(BRY_OK, library.start());
    expectRuns({"clissh unlock port 2022", "netconfssh unlock port 2830", "spi-revision"});
    expectLogs(
        {"4 setDscp: IPQoS configuration is not applied on TUL SSHD. vorma spi-revision must be >= 1.7.0.",
         "4 setRenegotiationtime: Renegotiation configuration is not applied. Vorma spi-revision must be >= 1.8.0.",
         "4 setCiphers: Cipher suite configuration is not applied. vorma spi-revision must be >= 1.7.0."});
    EXPECT_EQ(BRY_OK, library.stop());
    expectRuns({"clissh lock", "netconfssh lock"});
}

TEST_F(Start, SucceedsWhenEveryAdapterRunFails) {
    givenFullNode();
    framework.givenAdapter("exit 3");
    givenInitialized();
    EXPECT_EQ(BRY_OK, library.start());
    expectRuns({"clissh unlock port 2022", "netconfssh unlock port 2830", "spi-revision"});
    expectLogs({StartsWith("3 enablePorts: "), StartsWith("3 enablePorts: "), StartsWith("4 getVormaSpiRevision: "),
                StartsWith("4 setDscp: "), StartsWith("4 setRenegotiationtime: "), StartsWith("4 setCiphers: ")});
    EXPECT_EQ(BRY_OK, library.start());
    expectLogs({"4 start: TulSshdManager already running"});
}

TEST_F(Start, SucceedsWhenTheBatchRunFailsAndDropsTheBatch) {
    givenFullNode();
    framework.givenAdapter("case $1 in spi-revision) echo 1.8.0;; ssh) exit 3;; esac");
    givenInitialized();
    EXPECT_EQ(BRY_OK, library.start());
    expectLogs({StartsWith("3 invokeVorma: ")});
    forget();

    notify(serviceCategoryPattern, CmNotification().deleted(oamCmDn));
    expectRuns({"ssh --removeIpQoS"});
}

TEST_F(Start, SubscribesBeforeItCountsAsRunning) {
    givenInitialized();
    framework.during["addSubscription"] = [this] { library.stop(); };
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.logs(), testing::IsSupersetOf({"4 stop: TulSshdManager is already stopped"}));
    EXPECT_THAT(framework.consumers, SizeIs(4));
}

TEST_F(Start, CountsAsRunningBeforeTheBatchRun) {
    givenInitialized();
    framework.during["script"] = [this] {
        if (framework.calls.back().starts_with("script ssh")) {
            library.start();
        }
    };
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_EQ("4 start: TulSshdManager already running", framework.logs().back());
}

TEST_F(Start, LetsAnUnexpectedFailurePassAndIsNotRunning) {
    givenFullNode();
    givenInitialized();
    framework.during["getAttribute"] = [this] {
        if (framework.calls.back().ends_with("dscp")) {
            throw 7;
        }
    };
    EXPECT_THROW(library.start(), int);
    forget();
    expectNotRunning();
}

TEST_F(Start, WithManagementOffDeletesBothMosAndClosesBothPorts) {
    givenFullNode();
    givenInitialized(configuration(false));
    EXPECT_EQ(BRY_OK, library.start());
    const std::string sysM = "ManagedElement,SystemFunctions,SysM";
    EXPECT_EQ(
        Lines({"findInstances " + sysM + ",CliSsh", "newTransaction 2 3600", std::string("deleteMo ") + cliSshDn,
               "commit", "findInstances " + sysM + ",NetconfSsh", "newTransaction 2 3600",
               std::string("deleteMo ") + netconfSshDn, "commit", "script clissh lock", "script netconfssh lock"}),
        steps());
    expectRuns({"clissh lock", "netconfssh lock"});
    expectLogs({});
    expectNotRunning();
}

TEST_F(Start, WithManagementOffRunsTheWholeSequenceAgainOnTheNextStart) {
    givenFullNode();
    givenInitialized(configuration(false));
    ASSERT_EQ(BRY_OK, library.start());
    const Lines first = steps();
    forget();
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_EQ(first, steps());
}

TEST_F(Start, WithManagementOffOnlyClosesThePortsWhenThereAreNoMos) {
    givenInitialized(configuration(false));
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("newTransaction"), IsEmpty());
    expectRuns({"clissh lock", "netconfssh lock"});
    expectLogs({HasSubstr("SysM,CliSsh"), HasSubstr("SysM,NetconfSsh")});
    expectNotRunning();
}

TEST_F(Start, WithManagementOffClosesThePortsWhenTheMosCannotBeDeleted) {
    givenFullNode();
    framework.results["newTransaction"] = -16;
    givenInitialized(configuration(false));
    EXPECT_EQ(BRY_OK, library.start());
    expectRuns({"clissh lock", "netconfssh lock"});
    expectLogs({"3 deleteMoInstance: New Transaction could not be created.",
                "3 deleteMoInstance: New Transaction could not be created."});
    expectNotRunning();
}

TEST_F(Start, WithManagementOffSucceedsWhenTheAdapterFails) {
    framework.givenAdapter("exit 3");
    givenInitialized(configuration(false));
    EXPECT_EQ(BRY_OK, library.start());
    expectRuns({"clissh lock", "netconfssh lock"});
    EXPECT_THAT(framework.logs(3), ElementsAre(StartsWith("3 disablePorts: "), StartsWith("3 disablePorts: ")));
}

using StartDeathTest = Start;

TEST_F(StartDeathTest, EndsTheProcessWhenAConsumerCannotRegister) {
    givenInitialized();
    framework.results["registerConsumer"] = -3;
    EXPECT_EXIT((sayLastWords(framework), library.start()), KilledBySignal(SIGABRT),
                "3 start: Could not register consumer");
}

TEST_F(StartDeathTest, EndsTheProcessWhenAConsumerCannotSubscribe) {
    givenInitialized();
    framework.results["addSubscription"] = -3;
    EXPECT_EXIT((sayLastWords(framework), library.start()), KilledBySignal(SIGABRT),
                "3 start: Could not add subscription");
}

TEST_F(StartDeathTest, EndsTheProcessWithoutAMessageWhenTheConsumersWereNeverStopped) {
    givenFullNode();
    givenStarted();
    library.terminate();
    ASSERT_EQ(BRY_OK, library.init(configuration(false)));
    ASSERT_EQ(BRY_OK, library.stop());
    library.terminate();
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    forget();
    EXPECT_EXIT((sayLastWords(framework), library.start()), KilledBySignal(SIGABRT), lastWords(""));
}

}  // namespace
