#include <stdexcept>
#include <thread>

#include "ComponentTest.h"
#include "TulException.h"

namespace {

using namespace TulTest;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const char* const state = "administrativeState";

/** A running component on a node where everything exists, both ports open. */
class ChangeHandlers : public ComponentTest {
public:
    ChangeHandlers() {
        framework.givenMo(cliSshDn, {{state, enumeration(1)}});
        framework.givenMo(netconfSshDn, {{state, enumeration(1)}});
        framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
        framework.givenMo(sshDn, {{"selectedCiphers", strings({"a", "b"})}, {"selectedMacs", strings({"m"})}});
        givenStarted();
    }

    /** As notify, on a thread of its own: it would never come back while another thread held the lock. */
    void notifyOnAnotherThread(const char* pattern, CmNotification& notification) {
        std::thread([&] { notify(pattern, notification); }).join();
    }
};

// CliSsh and NetconfSsh: one MO, one port

struct Port {
    const char* name;
    const char* pattern;
    const char* dn;
    std::string lock;
    std::string unlock;

    friend std::ostream& operator<<(std::ostream& stream, const Port& row) { return stream << row.name; }
};

const Port ports[] = {
    {"CliSsh", cliSshPattern, cliSshDn, "clissh lock", "clissh unlock port 2022"},
    {"NetconfSsh", netconfSshPattern, netconfSshDn, "netconfssh lock", "netconfssh unlock port 2830"}};

enum class PortRun { NONE, LOCK, UNLOCK };

/** A notification that comes while the port is open, and one that comes while it is closed. */
struct StateRow {
    const char* name;
    std::function<void(CmNotification&, const char* dn)> build;
    PortRun whenUnlocked;
    PortRun whenLocked;

    friend std::ostream& operator<<(std::ostream& stream, const StateRow& row) { return stream << row.name; }
};

const auto enumerationType = TUL_MO_TYPE_ENUMERATION_3;

const StateRow stateRows[] = {
    {"Locked", [](auto& n, auto dn) { n.changed(dn).enumeration(state, 0); }, PortRun::LOCK, PortRun::NONE},
    {"Unlocked", [](auto& n, auto dn) { n.changed(dn).enumeration(state, 1); }, PortRun::NONE, PortRun::UNLOCK},
    {"AnyOtherNumberUnlocks", [](auto& n, auto dn) { n.changed(dn).enumeration(state, 2); }, PortRun::UNLOCK,
     PortRun::UNLOCK},
    {"ANegativeNumberUnlocks", [](auto& n, auto dn) { n.changed(dn).enumeration(state, -1); }, PortRun::UNLOCK,
     PortRun::UNLOCK},
    {"TheFirstWordCounts",
     [](auto& n, auto dn) { n.changed(dn).attribute(state, enumerationType, 1, {0x100000000}); }, PortRun::LOCK,
     PortRun::NONE},
    {"TheFirstOfSeveralValuesCounts",
     [](auto& n, auto dn) {
         n.changed(dn).attribute(state, enumerationType, 2, {0, 1});
     },
     PortRun::LOCK, PortRun::NONE},
    {"MoreValuesThanThereAre",
     [](auto& n, auto dn) { n.changed(dn).attribute(state, enumerationType, 1000000, {0}); }, PortRun::LOCK,
     PortRun::NONE},
    {"TheLastEventCounts",
     [](auto& n, auto dn) { n.changed(dn).enumeration(state, 0).changed(dn).enumeration(state, 1); }, PortRun::NONE,
     PortRun::UNLOCK},
    {"TheLastAttributeCounts", [](auto& n, auto dn) { n.changed(dn).enumeration(state, 1).enumeration(state, 0); },
     PortRun::LOCK, PortRun::NONE},
    {"ThereAndBackAgain",
     [](auto& n, auto dn) {
         n.changed(dn).enumeration(state, 1).changed(dn).enumeration(state, 0).changed(dn).enumeration(state, 1);
     },
     PortRun::NONE, PortRun::UNLOCK},
    {"OtherAttributesAreSkipped",
     [](auto& n, auto dn) {
         n.changed(dn).enumeration("operationalState", 1).enumeration(state, 0).enumeration("x", 1);
     },
     PortRun::LOCK, PortRun::NONE},
    {"NoValue", [](auto& n, auto dn) { n.changed(dn).attribute(state, enumerationType, 0, {0}); }, PortRun::NONE,
     PortRun::NONE},
    {"NullValues", [](auto& n, auto dn) { n.changed(dn).attribute(state, enumerationType, 1, {}); }, PortRun::NONE,
     PortRun::NONE},
    {"AnotherType", [](auto& n, auto dn) { n.changed(dn).attribute(state, TUL_MO_TYPE_INT32_3, 1, {0}); },
     PortRun::NONE, PortRun::NONE},
    {"AnUnknownType",
     [](auto& n, auto dn) { n.changed(dn).attribute(state, TulOamSpiMoAttributeType_3{-77}, 1, {0}); }, PortRun::NONE,
     PortRun::NONE},
    {"ANullName", [](auto& n, auto dn) { n.changed(dn).enumeration(nullptr, 0); }, PortRun::NONE, PortRun::NONE},
    {"AnotherCase", [](auto& n, auto dn) { n.changed(dn).enumeration("AdministrativeState", 0); }, PortRun::NONE,
     PortRun::NONE},
    {"ALongerName", [](auto& n, auto dn) { n.changed(dn).enumeration("administrativeState2", 0); }, PortRun::NONE,
     PortRun::NONE},
    {"Created", [](auto& n, auto dn) { n.created(dn).enumeration(state, 0); }, PortRun::NONE, PortRun::NONE},
    {"Deleted", [](auto& n, auto dn) { n.deleted(dn).enumeration(state, 0); }, PortRun::NONE, PortRun::NONE},
    {"AnUnknownEventType", [](auto& n, auto dn) { n.event(dn, CmEventType{77}).enumeration(state, 0); },
     PortRun::NONE, PortRun::NONE},
    {"EventTypeZero", [](auto& n, auto dn) { n.event(dn, CmEventType{0}).enumeration(state, 0); }, PortRun::NONE,
     PortRun::NONE},
    {"ANullDnIsNotLookedAt", [](auto& n, auto) { n.changed(nullptr).enumeration(state, 0); }, PortRun::LOCK,
     PortRun::NONE},
    {"AForeignDnIsNotLookedAt", [](auto& n, auto) { n.changed("x").enumeration(state, 0); }, PortRun::LOCK,
     PortRun::NONE},
    {"NoAttributes", [](auto& n, auto dn) { n.changed(dn); }, PortRun::NONE, PortRun::NONE},
    {"NullAttributes", [](auto& n, auto dn) { n.changed(dn).withoutAttributeArray(); }, PortRun::NONE, PortRun::NONE},
    {"NoEvents", [](auto&, auto) {}, PortRun::NONE, PortRun::NONE},
    {"NullEvents", [](auto& n, auto) { n.withoutEventArray(); }, PortRun::NONE, PortRun::NONE},
};

class ChangeHandlersState : public ChangeHandlers, public testing::WithParamInterface<std::tuple<Port, StateRow>> {
public:
    void expectRun(PortRun expected) {
        const auto& [port, row] = GetParam();
        CmNotification notification;
        row.build(notification, port.dn);
        notify(port.pattern, notification);
        expectRuns(expected == PortRun::NONE ? Lines{} : Lines{expected == PortRun::LOCK ? port.lock : port.unlock});
        expectSilence();
    }
};

TEST_P(ChangeHandlersState, DecidesTheRunOnceWhileThePortIsOpenAndOnceWhileItIsClosed) {
    const auto& [port, row] = GetParam();
    expectRun(row.whenUnlocked);
    expectRun(PortRun::NONE);

    notify(port.pattern, CmNotification().changed(port.dn).enumeration(state, 0));
    forget();
    expectRun(row.whenLocked);
    expectRun(PortRun::NONE);
}

INSTANTIATE_TEST_SUITE_P(ChangeHandlers, ChangeHandlersState,
                         testing::Combine(testing::ValuesIn(ports), testing::ValuesIn(stateRows)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + std::get<1>(row.param).name;
                         });

class ChangeHandlersPort : public ChangeHandlers, public testing::WithParamInterface<Port> {
public:
    void notifyState(int value) {
        notify(GetParam().pattern, CmNotification().changed(GetParam().dn).enumeration(state, value));
    }
};

TEST_P(ChangeHandlersPort, FollowsEveryChangeOverSeveralNotifications) {
    for (const int value : {0, 1, 0, 0, 1, 1, 2, 1, 0}) {
        notifyState(value);
    }
    const auto& [name, pattern, dn, lock, unlock] = GetParam();
    expectRuns({lock, unlock, lock, unlock, unlock, unlock, lock});
    expectSilence();
}

TEST_P(ChangeHandlersPort, RemembersTheStateAlsoWhenTheAdapterFails) {
    framework.givenAdapter("echo broken >&2; exit 3");
    notifyState(0);
    expectRuns({GetParam().lock});
    expectLogs({testing::AllOf(StartsWith("3 disablePorts: "), EndsWith(": broken"))});
    notifyState(0);
    expectSilence();
    notifyState(1);
    expectRuns({GetParam().unlock});
    expectLogs({StartsWith("3 enablePorts: ")});
    notifyState(1);
    expectSilence();
}

TEST_P(ChangeHandlersPort, RemembersTheStateAlsoWhenTheRunEndsInAnException) {
    framework.during["script"] = [] { throw 7; };
    notifyState(0);
    expectRuns({GetParam().lock});
    expectLogs({"4 notifyCallback: Unknown exception thrown from event consumer"});
    framework.during.clear();
    notifyState(0);
    expectSilence();
}

TEST_P(ChangeHandlersPort, LeavesTheOtherPortAlone) {
    notifyState(0);
    expectRuns({GetParam().lock});
    const Port& other = ports[GetParam().name == std::string(ports[0].name) ? 1 : 0];
    notify(other.pattern, CmNotification().changed(other.dn).enumeration(state, 1));
    expectSilence();
}

TEST_P(ChangeHandlersPort, NeverReadsTheMo) {
    notifyState(0);
    EXPECT_EQ(Lines({"script " + GetParam().lock}), steps());
}

INSTANTIATE_TEST_SUITE_P(ChangeHandlers, ChangeHandlersPort, testing::ValuesIn(ports), nameOf<Port>);

TEST_F(ChangeHandlers, OpenTheConfiguredPorts) {
    ASSERT_EQ(BRY_OK, library.stop());
    library.terminate();
    givenStarted(configuration(true, 0, 4294967295));
    notify(cliSshPattern, CmNotification().changed(cliSshDn).enumeration(state, 2));
    notify(netconfSshPattern, CmNotification().changed(netconfSshDn).enumeration(state, 2));
    expectRuns({"clissh unlock port 0", "netconfssh unlock port 4294967295"});
}

// The service category and the Ssh MO: settings in one batch

struct BatchRow {
    const char* name;
    const char* pattern;
    std::function<void(CmNotification&)> build;
    Lines runs;
    LineMatchers logs;

    friend std::ostream& operator<<(std::ostream& stream, const BatchRow& row) { return stream << row.name; }
};

const std::string dscpIsSet = "6 onServiceCategoryMoChangeNotification: dscp value for SSHD set to : 46.";
const std::string dscpIsDefault =
    "6 onServiceCategoryMoChangeNotification: As ServiceCategory mo was deleted, dscp for sshd set to default";
const std::string badDn = "3 onServiceCategoryMoChangeNotification: CM Event type, ";
const std::string sshDeleted =
    "3 onSshMoCipherChangeNotification: Unexpected delete event received on system created on Ssh MO";
const std::string nullText = "4 notifyCallback: Exception thrown from event consumer :";
const char* const allCiphers = "ssh --ciphers a,b --macs m";

class ChangeHandlersBatch : public ChangeHandlers, public testing::WithParamInterface<BatchRow> {};

TEST_P(ChangeHandlersBatch, IsSentInOneRunAtTheEndOfEachNotification) {
    CmNotification notification;
    GetParam().build(notification);
    notify(GetParam().pattern, notification);
    expectRuns(GetParam().runs);
    expectLogs(GetParam().logs);
    notifyOnAnotherThread(GetParam().pattern, notification);
    expectRuns(GetParam().runs);
    expectLogs(GetParam().logs);
    expectSilence();
}

const BatchRow categoryRows[] = {
    {"Changed", serviceCategoryPattern, [](auto& n) { n.changed(oamCmDn); }, {"ssh --ipQos 46"}, {dscpIsSet}},
    {"Created", serviceCategoryPattern, [](auto& n) { n.created(oamCmDn); }, {"ssh --ipQos 46"}, {dscpIsSet}},
    {"Deleted", serviceCategoryPattern, [](auto& n) { n.deleted(oamCmDn); }, {"ssh --removeIpQoS"}, {dscpIsDefault}},
    {"TheValueOfTheEventIsNotUsed",
     serviceCategoryPattern,
     [](auto& n) { n.changed(oamCmDn).attribute("dscp", TUL_MO_TYPE_UINT8_3, 1, {10}); },
     {"ssh --ipQos 46"},
     {dscpIsSet}},
    {"TheDnOfADeletionIsNotLookedAt",
     serviceCategoryPattern,
     [](auto& n) { n.deleted(nullptr).deleted("x"); },
     {"ssh --removeIpQoS --removeIpQoS"},
     {dscpIsDefault, dscpIsDefault}},
    {"ChangedWithNullDn",
     serviceCategoryPattern,
     [](auto& n) { n.changed(nullptr); },
     {},
     {badDn + "3 received with NULL dn value"}},
    {"CreatedWithNullDn",
     serviceCategoryPattern,
     [](auto& n) { n.created(nullptr); },
     {},
     {badDn + "1 received with NULL dn value"}},
    {"AnotherCategory",
     serviceCategoryPattern,
     [](auto& n) { n.changed("ManagedElement=1,Transport=1,DiffServCategory=OamCMx"); },
     {},
     {badDn + "3 received with incorrect dn value - ManagedElement=1,Transport=1,DiffServCategory=OamCMx"}},
    {"ALineEndAfterTheDn",
     serviceCategoryPattern,
     [](auto& n) { n.created("DiffServCategory=OamCM\n"); },
     {},
     {badDn + "1 received with incorrect dn value - DiffServCategory=OamCM\n"}},
    {"AnEmptyDn",
     serviceCategoryPattern,
     [](auto& n) { n.changed(""); },
     {},
     {badDn + "3 received with incorrect dn value - "}},
    {"OnlyTheEndOfTheDnCounts",
     serviceCategoryPattern,
     [](auto& n) { n.changed("OamCM"); },
     {"ssh --ipQos 46"},
     {dscpIsSet}},
    {"ABadEventDoesNotStopTheNext",
     serviceCategoryPattern,
     [](auto& n) { n.changed(nullptr).changed("x").changed(oamCmDn); },
     {"ssh --ipQos 46"},
     {badDn + "3 received with NULL dn value", badDn + "3 received with incorrect dn value - x", dscpIsSet}},
    {"NothingIsMerged",
     serviceCategoryPattern,
     [](auto& n) { n.changed(oamCmDn).deleted(oamCmDn).created(oamCmDn).changed(oamCmDn); },
     {"ssh --ipQos 46 --removeIpQoS --ipQos 46 --ipQos 46"},
     {dscpIsSet, dscpIsDefault, dscpIsSet, dscpIsSet}},
    {"AnUnknownEventType", serviceCategoryPattern, [](auto& n) { n.event(oamCmDn, CmEventType{77}); }, {}, {}},
    {"NullAttributes",
     serviceCategoryPattern,
     [](auto& n) { n.changed(oamCmDn).withoutAttributeArray(); },
     {"ssh --ipQos 46"},
     {dscpIsSet}},
    {"NoEvents", serviceCategoryPattern, [](auto&) {}, {}, {}},
    {"NullEvents", serviceCategoryPattern, [](auto& n) { n.withoutEventArray(); }, {}, {}},
};

INSTANTIATE_TEST_SUITE_P(ServiceCategory, ChangeHandlersBatch, testing::ValuesIn(categoryRows), nameOf<BatchRow>);

const BatchRow sshRows[] = {
    {"Changed", sshPattern, [](auto& n) { n.changed(sshDn); }, {allCiphers}, {}},
    {"Created", sshPattern, [](auto& n) { n.created(sshDn); }, {allCiphers}, {}},
    {"Deleted", sshPattern, [](auto& n) { n.deleted(sshDn); }, {}, {sshDeleted}},
    {"TwoEventsAreOneRead", sshPattern, [](auto& n) { n.changed(sshDn).changed(sshDn); }, {allCiphers}, {}},
    {"TheLastDnWins", sshPattern, [](auto& n) { n.changed("x").created(sshDn); }, {allCiphers}, {}},
    {"NothingReadable", sshPattern, [](auto& n) { n.changed(sshDn).changed("x"); }, {}, {}},
    {"DeletedAndCreatedAgain",
     sshPattern,
     [](auto& n) { n.deleted(sshDn).created(sshDn).deleted(nullptr); },
     {allCiphers},
     {sshDeleted, sshDeleted}},
    {"TheValuesOfTheEventAreNotUsed",
     sshPattern,
     [](auto& n) { n.changed(sshDn).attribute("selectedMacs", TUL_MO_TYPE_STRING_3, 0, {}); },
     {allCiphers},
     {}},
    {"TheDnOfAChangeIsRequired", sshPattern, [](auto& n) { n.changed(nullptr); }, {}, {StartsWith(nullText)}},
    {"TheDnOfACreationIsRequired",
     sshPattern,
     [](auto& n) { n.changed(sshDn).created(nullptr); },
     {},
     {StartsWith(nullText)}},
    {"AnUnknownEventType", sshPattern, [](auto& n) { n.event(nullptr, CmEventType{77}); }, {}, {}},
    {"NullAttributes", sshPattern, [](auto& n) { n.changed(sshDn).withoutAttributeArray(); }, {allCiphers}, {}},
    {"NoEvents", sshPattern, [](auto&) {}, {}, {}},
    {"NullEvents", sshPattern, [](auto& n) { n.withoutEventArray(); }, {}, {}},
};

INSTANTIATE_TEST_SUITE_P(Ssh, ChangeHandlersBatch, testing::ValuesIn(sshRows), nameOf<BatchRow>);

TEST_F(ChangeHandlers, TheServiceCategoryIsReReadEachTime) {
    framework.givenMo(oamCmDn, {{"dscp", uint8(10)}});
    notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
    expectRuns({"ssh --ipQos 10"});
    expectLogs({"6 onServiceCategoryMoChangeNotification: dscp value for SSHD set to : 10."});
    framework.givenMo(oamCmDn);
    notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
    expectRuns({"ssh --removeIpQoS"});
    expectLogs({"6 onServiceCategoryMoChangeNotification: dscp value for SSHD set to : ."});
    expectSilence();
}

TEST_F(ChangeHandlers, TheCiphersAreReadOnceForTheDnOfTheLastEvent) {
    const std::string second = "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=2";
    framework.givenMo(second, {{"selectedKeyExchanges", strings({"k"})}});
    notify(sshPattern, CmNotification().changed(sshDn).changed(second.c_str()));
    EXPECT_EQ(
        Lines({"getAttribute " + second + " selectedCiphers", "getAttribute " + second + " selectedKeyExchanges",
               "getAttribute " + second + " selectedMacs", "script ssh --kexAlgorithms k"}),
        steps());
}

class ChangeHandlersOfSettings : public ChangeHandlers, public testing::WithParamInterface<const char*> {};

TEST_P(ChangeHandlersOfSettings, AskForOneRunAlsoWithoutAnEvent) {
    framework.logLevel = 8;
    CmNotification empty;
    notify(GetParam(), empty);
    EXPECT_THAT(framework.traces("invokeVorma"), ElementsAre(" >> Invoke Vorma", " << "));
    expectRuns({});
}

/** A failure between queueing and sending leaves the queue; whoever sends next sends it too. */
TEST_P(ChangeHandlersOfSettings, SendWhatIsStillQueuedAlsoWithoutAnEvent) {
    notify(serviceCategoryPattern, CmNotification().deleted(oamCmDn));
    forget();
    framework.during["findInstances"] = [] { throw 7; };
    notify(serviceCategoryPattern, CmNotification().deleted(oamCmDn).changed(oamCmDn));
    expectRuns({});
    framework.during.clear();
    CmNotification empty;
    notify(GetParam(), empty);
    expectRuns({"ssh --removeIpQoS"});
    notify(GetParam(), empty);
    expectRuns({});
}

INSTANTIATE_TEST_SUITE_P(ChangeHandlers, ChangeHandlersOfSettings,
                         testing::Values(serviceCategoryPattern, sshPattern),
                         [](const auto& row) { return row.param == sshPattern ? "Ssh" : "ServiceCategory"; });

TEST_F(ChangeHandlers, AFailedBatchIsDropped) {
    framework.givenAdapter("exit 3");
    notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
    expectRuns({"ssh --ipQos 46"});
    expectLogs({dscpIsSet, StartsWith("3 invokeVorma: ")});
    framework.givenAdapterRevision("1.8.0");
    notify(sshPattern, CmNotification().changed(sshDn));
    expectRuns({allCiphers});
    expectSilence();
}

TEST_F(ChangeHandlers, OnlyWarnWhenTheAdapterIsTooOld) {
    library.unload();
    framework.consumers.clear();
    framework.givenAdapterRevision("1.6.9");
    ComponentLibrary old(framework);
    ASSERT_EQ(BRY_OK, old.init(configuration(true)));
    ASSERT_EQ(BRY_OK, old.start());
    forget();
    notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
    expectLogs({"4 setDscp: IPQoS configuration is not applied on TUL SSHD. vorma spi-revision must be >= 1.7.0.",
                dscpIsSet});
    notify(sshPattern, CmNotification().changed(sshDn));
    expectLogs({"4 setCiphers: Cipher suite configuration is not applied. vorma spi-revision must be >= 1.7.0."});
    expectSilence();
}

// Failures inside

const std::string known = "4 notifyCallback: Exception thrown from event consumer :";
const std::string unknown = "4 notifyCallback: Unknown exception thrown from event consumer";

struct Exception {
    const char* name;
    std::function<void()> raise;
};

const Exception exceptions[] = {{"TulException", [] { throw Tul::TulException("oh"); }},
                                {"StandardException", [] { throw std::runtime_error("oh"); }},
                                {"Integer", [] { throw 7; }}};

/** An operation that a handler comes to, and the last record when it throws each of the exceptions. */
struct Place {
    const char* name;
    const char* operation;
    const char* pattern;
    std::function<void(CmNotification&)> build;
    Lines lastRecords;
    std::function<void(CmNotification&)> buildNext;
    const char* nextRun;

    friend std::ostream& operator<<(std::ostream& stream, const Place& row) { return stream << row.name; }
};

void lockCli(CmNotification& notification) {
    notification.changed(cliSshDn).enumeration(state, 0);
}
void unlockCli(CmNotification& notification) {
    notification.changed(cliSshDn).enumeration(state, 1);
}
void lockNetconf(CmNotification& notification) {
    notification.changed(netconfSshDn).enumeration(state, 0);
}
void unlockNetconf(CmNotification& notification) {
    notification.changed(netconfSshDn).enumeration(state, 1);
}
void changeCategory(CmNotification& notification) {
    notification.changed(oamCmDn);
}
void changeSsh(CmNotification& notification) {
    notification.changed(sshDn);
}

const char* const managedObjects = "getInterface TulOamSpiExtCmRouterService";
const Lines unprotected{known + "oh", known + "oh", unknown};
const Lines dscpProtected{"6 onServiceCategoryMoChangeNotification: dscp value for SSHD set to : .", known + "oh",
                          unknown};
const std::string noMacs =
    std::string("4 fetchCipherConfiguration: Unable to get selected(selectedMacs) for DN(") + sshDn + ")";

const Place places[] = {
    {"CliSshRun",
     "script",
     cliSshPattern,
     lockCli,
     {"3 disablePorts: oh", "3 disablePorts: oh", unknown},
     unlockCli,
     "clissh unlock port 2022"},
    {"NetconfSshRun",
     "script",
     netconfSshPattern,
     lockNetconf,
     {"3 disablePorts: oh", "3 disablePorts: oh", unknown},
     unlockNetconf,
     "netconfssh unlock port 2830"},
    {"CategoryRun",
     "script",
     serviceCategoryPattern,
     changeCategory,
     {"3 invokeVorma: oh", "3 invokeVorma: oh", unknown},
     changeCategory,
     "ssh --ipQos 46"},
    {"CategoryLookUp", managedObjects, serviceCategoryPattern, changeCategory, dscpProtected, changeCategory,
     "ssh --ipQos 46"},
    {"CategorySearch", "findInstances", serviceCategoryPattern, changeCategory, dscpProtected, changeCategory,
     "ssh --ipQos 46"},
    {"CategoryRead", "getAttribute", serviceCategoryPattern, changeCategory, dscpProtected, changeCategory,
     "ssh --ipQos 46"},
    {"SshRun",
     "script",
     sshPattern,
     changeSsh,
     {"3 invokeVorma: oh", "3 invokeVorma: oh", unknown},
     changeSsh,
     allCiphers},
    {"SshLookUp", managedObjects, sshPattern, changeSsh, unprotected, changeSsh, allCiphers},
    {"SshRead", "getAttribute", sshPattern, changeSsh, {"", noMacs, noMacs}, changeSsh, allCiphers},
};

class ChangeHandlersFailure : public ChangeHandlers, public testing::WithParamInterface<std::tuple<Place, int>> {
public:
    /** Raises the exception whenever a call begins with that text. */
    void givenFailure(const std::string& call, const std::function<void()>& raise) {
        framework.during[call.substr(0, call.find(' '))] = [this, call, raise] {
            if (framework.calls.back().starts_with(call)) {
                raise();
            }
        };
    }

    std::string lastRecord() const { return framework.logs().empty() ? "" : framework.logs().back(); }
};

TEST_P(ChangeHandlersFailure, IsReportedAndTheNextNotificationWorks) {
    const auto& [place, exception] = GetParam();
    givenFailure(place.operation, exceptions[exception].raise);
    CmNotification notification;
    place.build(notification);
    notify(place.pattern, notification);
    EXPECT_EQ(place.lastRecords[static_cast<std::size_t>(exception)], lastRecord());

    framework.during.clear();
    forget();
    CmNotification next;
    place.buildNext(next);
    notifyOnAnotherThread(place.pattern, next);
    expectRuns({place.nextRun});
}

INSTANTIATE_TEST_SUITE_P(ChangeHandlers, ChangeHandlersFailure,
                         testing::Combine(testing::ValuesIn(places), testing::Range(0, 3)), [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) +
                                    exceptions[std::get<1>(row.param)].name;
                         });

TEST_F(ChangeHandlers, ReportAnAccessorThatCannotBeBuilt) {
    framework.results["getInterface TulOamSpiManagedObject"] = -4;
    notify(sshPattern, CmNotification().changed(sshDn));
    expectLogs({StartsWith(known)});
    notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
    expectRuns({"ssh --removeIpQoS"});
    expectLogs({"6 onServiceCategoryMoChangeNotification: dscp value for SSHD set to : ."});
    expectSilence();
}

// Threads

TEST_F(ChangeHandlers, NeverOverlap) {
    framework.givenAdapter("mkdir busy || exit 9; rmdir busy");
    const auto toggle = [this](const Port& port) {
        for (int i = 0; i < 10; ++i) {
            notify(port.pattern, CmNotification().changed(port.dn).enumeration(state, i % 2));
        }
    };
    std::thread cli(toggle, ports[0]);
    std::thread netconf(toggle, ports[1]);
    std::thread category([this] {
        for (int i = 0; i < 10; ++i) {
            notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
        }
    });
    cli.join();
    netconf.join();
    category.join();
    EXPECT_THAT(framework.takeRuns(), SizeIs(30));
    EXPECT_THAT(framework.logs(4), IsEmpty());
}

TEST_F(ChangeHandlers, AreNotCalledAfterStopAndAgainAfterStart) {
    ASSERT_EQ(BRY_OK, library.stop());
    CmNotification notification;
    notification.changed(cliSshDn).enumeration(state, 0);
    EXPECT_THROW(framework.notify(cliSshPattern, notification), std::logic_error);
    ASSERT_EQ(BRY_OK, library.start());
    forget();
    notify(cliSshPattern, notification);
    expectRuns({"clissh lock"});
    expectSilence();
}

}  // namespace
