#include <sstream>

#include "ComponentTest.h"
#include "ExpectedRecords.h"

namespace {

using namespace TulTest;

// Who writes

const RecordSource component("TulSshd", "src/tul_sshd_manager/src/SshComponent");
const RecordSource wrapper("TulSshd", "src/tul_sshd_manager/src/SshdVormaWrapper");
const RecordSource reader("TulSshd", "src/tul_sshd_manager/src/SshdConfigHandler");
const RecordSource consumer("Common", "src/common/inc/EventConsumer");
const RecordSource cmConsumer("Common", "src/common/inc/CmEventConsumer");
const RecordSource accessor("Common", "src/common/inc/MoAccessor");

// What one operation writes, with everything inside it

Records initialized(const std::string& text, const std::string& verdict) {
    return reader.entry("readComponentConfiguration", " >> \n%s", " >> \n" + text) +
           reader.trace("getBooleanValueFromCfg", "%s " + verdict, "sshdManagement " + verdict) +
           reader.exit("readComponentConfiguration") + component.exit("initialize");
}

Records found() {
    return component.entry("getDnValue") + component.exit("getDnValue");
}

Records notFound(const std::string& classPath) {
    return component.entry("getDnValue") +
           component.warning("getDnValue", "Could not find first instance of classpath : %s",
                             "Could not find first instance of classpath : " + classPath) +
           component.exit("getDnValue");
}

Records created() {
    return component.entry("createMo") + found() + component.exit("createMo");
}

Records deleted(const std::string& dn) {
    return component.exit("deleteMoInstance", " << %s instance is deleted", " << " + dn + " instance is deleted");
}

Records enabled(const std::string& subsystem, const std::string& port) {
    return wrapper.entry("enablePorts", " >> enablePorts for %s subsystem: %d",
                         " >> enablePorts for " + subsystem + " subsystem: " + port) +
           wrapper.exit("enablePorts", " << Succeeded to enable ports in sshd configuration file");
}

Records disabled(const std::string& subsystem) {
    return wrapper.entry("disablePorts", " >> removePorts for %s subsystem",
                         " >> removePorts for " + subsystem + " subsystem") +
           wrapper.exit("disablePorts", " << Succeeded to disable ports in sshd configuration file");
}

Records read(const std::string& function, const std::string& dn, const std::string& attribute) {
    return accessor.trace(function, "MoAccessor::getAttr<> dName :%s attrName :%s",
                          "MoAccessor::getAttr<> dName :" + dn + " attrName :" + attribute);
}

Records stateRead(const std::string& dn, const std::string& state) {
    return component.entry("getAdministrativeState") + read("getAttr", dn, "administrativeState") +
           component.trace("getAdministrativeState", "administrativeState for %d",
                           "administrativeState for " + state) +
           component.exit("getAdministrativeState");
}

Records dscpRead(const std::string& dscp) {
    return component.entry("getDscp") + read("getAttr", oamCmDn, "dscp") +
           component.exit("getDscp", " << Returning DSCP value %s", " << Returning DSCP value " + dscp);
}

Records dscpNotRead() {
    const std::string reason = std::string("Could not read attribute ") + oamCmDn + "::dscp, error -4";
    return component.entry("getDscp") + read("getAttr", oamCmDn, "dscp") +
           component.trace("getDscp", "Unable to get dscp. Error code: %d, reason: %s",
                           "Unable to get dscp. Error code: -4, reason: " + reason) +
           component.exit("getDscp", " << Returning DSCP value %s", " << Returning DSCP value ");
}

Records revisionAsked() {
    return wrapper.entry("getVormaSpiRevision") + wrapper.trace("getVormaSpiRevision",
                                                                "vorma spi-revision returned: '%s'",
                                                                "vorma spi-revision returned: '1.8.0\n'");
}

Records revisionKnown() {
    return wrapper.entry("getVormaSpiRevision");
}

Records dscpQueued(const std::string& dscp, const Records& revision) {
    const std::string text = " >> Set dscp value for the service category OaM CM to ";
    return wrapper.entry("setDscp", text + "%s ", text + dscp + " ") + revision +
           wrapper.exit("setDscp", " << Succeeded to set dscp value for the service category OaM CM ");
}

Records renegotiationQueued(const std::string& time) {
    return wrapper.entry("setRenegotiationtime", " >> Update Renegotiation Time: %d",
                         " >> Update Renegotiation Time: " + time) +
           revisionKnown() + wrapper.exit("setRenegotiationtime", " << Succeeded to set the Renegotiation Time");
}

/** The Ssh MO of these tests has ciphers and nothing else. */
Records ciphersQueued() {
    return component.entry("fetchCipherConfiguration") + read("getSeqAttr", sshDn, "selectedCiphers") +
           component.trace("fetchCipherConfiguration", "Selected(%s) attribute value is %s",
                           "Selected(selectedCiphers) attribute value is a,b") +
           read("getSeqAttr", sshDn, "selectedKeyExchanges") + read("getSeqAttr", sshDn, "selectedMacs") +
           component.exit("fetchCipherConfiguration") + wrapper.entry("setCiphers", " >> Update ciphers") +
           revisionKnown() + wrapper.exit("setCiphers", " << Succeeded to set the cipher attributes");
}

Records batchSent() {
    return wrapper.entry("invokeVorma", " >> Invoke Vorma") + wrapper.entry("prepareArgs") +
           wrapper.exit("prepareArgs") +
           wrapper.exit("invokeVorma", " << Succeeded to set configuration data to vorma");
}

Records nothingToSend() {
    return wrapper.entry("invokeVorma", " >> Invoke Vorma") + wrapper.exit("invokeVorma");
}

Records fourTimes(const std::string& function) {
    const Records once =
        cmConsumer.entry(function) + consumer.entry(function) + consumer.exit(function) + cmConsumer.exit(function);
    return once + once + once + once;
}

/** What the consumers add around a handler. */
Records notified(const Records& handled) {
    return consumer.entry("notifyCallback") + cmConsumer.entry("notifyCb") + handled + cmConsumer.exit("notifyCb") +
           consumer.exit("notifyCallback");
}

Records handled(const std::string& handler, const Records& inside) {
    return notified(component.entry(handler) + inside + component.exit(handler));
}

Records startRefused(const Records& reason) {
    return component.entry("start", " >> Reason: %d", " >> Reason: 1") + reason + component.exit("start");
}

Records interfaceMissing(const std::string& name, const std::string& version) {
    return startRefused(component.error("start", "Failed to getInterface (%s:%s) from the portal",
                                        "Failed to getInterface (" + name + ":" + version + ") from the portal"));
}

// The main paths

const char* const cliHandler = "onCliSshMoChangeNotification";
const char* const netconfHandler = "onNetconfSshMoChangeNotification";
const char* const categoryHandler = "onServiceCategoryMoChangeNotification";
const char* const sshHandler = "onSshMoCipherChangeNotification";
const std::string sysMPath = "ManagedElement,SystemFunctions,SysM";

Records startedOnAnEmptyNode() {
    return component.entry("start", " >> Reason: %d", " >> Reason: 1") + notFound(sysMPath + ",CliSsh") + created() +
           enabled("clissh", "2022") + notFound(sysMPath + ",NetconfSsh") + created() +
           enabled("netconfssh", "2830") + dscpNotRead() + dscpQueued("", revisionAsked()) +
           renegotiationQueued("3600") + notFound("ManagedElement,SystemFunctions,SecM,Ssh") + fourTimes("start") +
           batchSent() + component.exit("start");
}

Records startedOnAFullNode() {
    return component.entry("start", " >> Reason: %d", " >> Reason: 1") + found() +
           component.trace("start", "CliSsh MO already exists") + stateRead(cliSshDn, "1") +
           enabled("clissh", "2022") + found() + component.trace("start", "NetconfSsh MO already exists") +
           stateRead(netconfSshDn, "0") + disabled("netconfssh") + dscpRead("46") +
           dscpQueued("46", revisionAsked()) + renegotiationQueued("3600") + found() +
           component.trace("start", "Ssh MO exists") + ciphersQueued() + fourTimes("start") + batchSent() +
           component.exit("start");
}

Records startedWithManagementOff() {
    return component.entry("start", " >> Reason: %d", " >> Reason: 1") + found() + deleted(cliSshDn) +
           notFound(sysMPath + ",NetconfSsh") + disabled("clissh") + disabled("netconfssh") + component.exit("start");
}

/** Neither the missing entry trace of deleteMoInstance nor the missing exit trace of start is a slip. */
Records creationFailed() {
    return component.entry("start", " >> Reason: %d", " >> Reason: 1") + notFound(sysMPath + ",CliSsh") +
           component.entry("createMo") + found() + component.error("createMo", "Transaction commit failed!!.") +
           component.exit("createMo");
}

Records stopped() {
    return component.entry("stop", " >> Reason: %d", " >> Reason: 2") + fourTimes("stop") + disabled("clissh") +
           disabled("netconfssh") + component.exit("stop");
}

Records stoppedAgain() {
    return component.entry("stop", " >> Reason: %d", " >> Reason: 2") +
           component.warning("stop", "TulSshdManager is already stopped") + component.exit("stop");
}

Records categoryChanged() {
    return dscpRead("46") + dscpQueued("46", revisionKnown()) +
           component.information(categoryHandler, "dscp value for SSHD set to : %s.",
                                 "dscp value for SSHD set to : 46.") +
           batchSent();
}

Records categoryDeleted() {
    return dscpQueued("", revisionKnown()) +
           component.information(categoryHandler, "As ServiceCategory mo was deleted, dscp for sshd set to default") +
           batchSent();
}

Records categoryRefused() {
    return component.error(categoryHandler, "CM Event type, %d received with NULL dn value",
                           "CM Event type, 1 received with NULL dn value") +
           component.error(categoryHandler, "CM Event type, %d received with incorrect dn value - %s",
                           "CM Event type, 3 received with incorrect dn value - x") +
           nothingToSend();
}

Records sshDeleted() {
    return component.error(sshHandler, "Unexpected delete event received on system created on Ssh MO") +
           nothingToSend();
}

/** The handler's own exit traces are jumped over. */
Records handlerThrew() {
    return consumer.entry("notifyCallback") + cmConsumer.entry("notifyCb") + component.entry(categoryHandler) +
           component.entry("getDscp") +
           consumer.warning("notifyCallback", "Unknown exception thrown from event consumer") +
           consumer.exit("notifyCallback");
}

using Step = std::function<void(TestNode&)>;

/** Some steps, and every record that the last of them writes when all levels are on. */
struct Path {
    const char* name;
    Step given;
    Step when;
    Records records;

    friend std::ostream& operator<<(std::ostream& stream, const Path& row) { return stream << row.name; }
};

void full(TestNode& node) {
    node.framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    node.framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(0)}});
    node.framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
    node.framework.givenMo(sshDn, {{"selectedCiphers", strings({"a", "b"})}});
}

void nothing(TestNode& /*node*/) {}
void init(TestNode& node) {
    node.library.init(configuration(true));
}
void initOnFullNode(TestNode& node) {
    full(node);
    init(node);
}
void initWithManagementOff(TestNode& node) {
    node.framework.givenMo(cliSshDn);
    node.library.init(configuration(false));
}
void initWithNothing(TestNode& node) {
    node.library.init(nullptr);
}
void start(TestNode& node) {
    node.library.start(BRY_REASON_OPERATOR);
}
void stop(TestNode& node) {
    node.library.stop(BRY_REASON_RELOAD);
}
void terminate(TestNode& node) {
    node.library.terminate();
}
void run(TestNode& node) {
    initOnFullNode(node);
    start(node);
}

Step initWithResult(const char* operation, BryReturnT result) {
    return [=](TestNode& node) {
        init(node);
        node.framework.results[operation] = result;
    };
}

Step notification(const char* pattern, const std::function<void(CmNotification&)>& build) {
    return [=](TestNode& node) {
        CmNotification record;
        build(record);
        node.notify(pattern, record);
    };
}

const Path paths[] = {
    {"Initialize", nothing, init, initialized(configuration(true), "enabled.")},
    {"InitializeWithManagementOff", nothing, initWithManagementOff, initialized(configuration(false), "disabled.")},
    {"InitializeTwice", init, init, component.error("initialize", "Component already initialized!")},
    {"InitializeWithNothing", nothing, initWithNothing,
     component.warning("initialize", "No configuration provided for %s",
                       "No configuration provided for TulSshdManagementComponent")},
    {"Terminate", init, terminate, component.entry("terminate") + component.exit("terminate")},
    {"StartOnAnEmptyNode", init, start, startedOnAnEmptyNode()},
    {"StartOnAFullNode", initOnFullNode, start, startedOnAFullNode()},
    {"StartWithManagementOff", initWithManagementOff, start, startedWithManagementOff()},
    {"StartTwice", run, start, startRefused(component.warning("start", "TulSshdManager already running"))},
    {"StartUninitialized", initWithNothing, start,
     startRefused(component.error("start", "Component not initialized!"))},
    {"StartWithoutManagedObjects", initWithResult("getInterface TulOamSpiManagedObject", -4), start,
     interfaceMissing("TulOamSpiManagedObject", "3")},
    {"StartWithoutTransactions", initWithResult("getInterface TulOamSpiTransactionMaster", -4), start,
     interfaceMissing("TulOamSpiTransactionMaster", "1")},
    {"StartWithAFailedCommit", initWithResult("commit", -7), start, creationFailed()},
    {"Stop", run, stop, stopped()},
    {"StopWhenNotStarted", init, stop, stoppedAgain()},
    {"CliSshLocked", run,
     notification(cliSshPattern, [](auto& n) { n.changed(cliSshDn).enumeration("administrativeState", 0); }),
     handled(cliHandler, disabled("clissh"))},
    {"CliSshUnchanged", run,
     notification(cliSshPattern, [](auto& n) { n.changed(cliSshDn).enumeration("administrativeState", 1); }),
     handled(cliHandler, {})},
    {"NetconfSshUnlocked", run,
     notification(netconfSshPattern, [](auto& n) { n.changed(netconfSshDn).enumeration("administrativeState", 1); }),
     handled(netconfHandler, enabled("netconfssh", "2830"))},
    {"CategoryChanged", run, notification(serviceCategoryPattern, [](auto& n) { n.changed(oamCmDn); }),
     handled(categoryHandler, categoryChanged())},
    {"CategoryDeleted", run, notification(serviceCategoryPattern, [](auto& n) { n.deleted(oamCmDn); }),
     handled(categoryHandler, categoryDeleted())},
    {"CategoryRefused", run, notification(serviceCategoryPattern, [](auto& n) { n.created(nullptr).changed("x"); }),
     handled(categoryHandler, categoryRefused())},
    {"SshChanged", run, notification(sshPattern, [](auto& n) { n.changed(sshDn); }),
     handled(sshHandler, ciphersQueued() + batchSent())},
    {"SshDeleted", run, notification(sshPattern, [](auto& n) { n.deleted(sshDn); }),
     handled(sshHandler, sshDeleted())},
    {"HandlerThrew",
     [](TestNode& node) {
         run(node);
         node.framework.during["findInstances"] = [] { throw 7; };
     },
     notification(serviceCategoryPattern, [](auto& n) { n.changed(oamCmDn); }), handlerThrew()},
};

// Levels

/** Errors from 3 on, warnings from 4, information from 6; traces above 7 only. */
bool isWanted(const Record& record, int level) {
    const bool isTrace = record.call == "trace" || record.level == 14;
    return isTrace ? level > 7 : level >= record.level;
}

Lines linesOf(const Records& records, int level) {
    Lines lines;
    for (const Record& record : records) {
        if (isWanted(record, level)) {
            std::ostringstream line;
            line << record;
            lines.push_back(line.str());
        }
    }
    return lines;
}

const int everything = 1000;

class LogRecords : public testing::TestWithParam<Path> {};

TEST_P(LogRecords, AreTheseInThisOrderAtEachLevel) {
    for (const int level : {2, 3, 4, 5, 6, 7, 8, 9}) {
        SCOPED_TRACE("level " + std::to_string(level));
        TestNode node;
        GetParam().given(node);
        node.framework.records.clear();
        node.framework.logLevel = level;
        GetParam().when(node);
        EXPECT_EQ(linesOf(GetParam().records, level), linesOf(node.framework.records, everything));
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, LogRecords, testing::ValuesIn(paths), nameOf<Path>);

using LogLevel = ComponentTest;

TEST_F(LogLevel, IsAskedBeforeEachRecord) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    framework.logLevel = 8;
    framework.during["newTransaction"] = [this] { framework.logLevel = 3; };
    framework.during["createMo"] = [this] { framework.logLevel = 8; };
    framework.results["createMo"] = -77;
    EXPECT_EQ(-77, library.start());
    const Lines createMo = framework.traces("createMo");
    EXPECT_THAT(createMo, testing::ElementsAre(" >> ", " << "));

    framework.records.clear();
    framework.during["createMo"] = nullptr;
    EXPECT_EQ(-77, library.start());
    EXPECT_THAT(framework.traces("createMo"), testing::ElementsAre(" >> "));
    EXPECT_THAT(framework.logs(3), testing::ElementsAre("3 createMo: CliSsh Mo Creation Failed!!."));
}

}  // namespace
