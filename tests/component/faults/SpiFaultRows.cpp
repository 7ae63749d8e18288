#include "SpiFaultRows.h"

namespace TulTest {

namespace {

// What an undisturbed call uses. Platform look-ups come by "getPortal 1" too; the component's own do not.

const char* const managedObjects = "getInterface TulOamSpiManagedObject";
const char* const transactions = "getInterface TulOamSpiTransactionMaster";

const std::map<std::string, Uses> allUses{
    {"Init",
     {{"getPortal 3", 1},
      {portal1, 3},
      {"registerComponent", 1},
      {"getInterface TulMwSpiLog", 1},
      {"getInterface BryMwSpiTrace", 1}}},
    {"StartOnAnEmptyNode",
     {{managedObjects, 7},
      {transactions, 1},
      {eventRouter, 4},
      {portal1, 10},
      {"findInstances", 6},
      {"getAttribute", 1},
      {"newTransaction", 2},
      {"createMo", 2},
      {"commit", 2},
      {"registerConsumer", 4},
      {"addSubscription", 4}}},
    {"StartOnAFullNode",
     {{managedObjects, 8},
      {transactions, 1},
      {eventRouter, 4},
      {portal1, 11},
      {"findInstances", 4},
      {"getAttribute", 6},
      {"registerConsumer", 4},
      {"addSubscription", 4}}},
    {"StartWithManagementOff",
     {{managedObjects, 3},
      {transactions, 1},
      {portal1, 2},
      {"findInstances", 2},
      {"newTransaction", 2},
      {"deleteMo", 2},
      {"commit", 2}}},
    {"CliSshChanged", {}},
    {"NetconfSshChanged", {}},
    {"CategoryCreated", {{managedObjects, 1}, {portal1, 1}, {"findInstances", 1}, {"getAttribute", 1}}},
    {"CategoryChanged", {{managedObjects, 1}, {portal1, 1}, {"findInstances", 1}, {"getAttribute", 1}}},
    {"CategoryDeleted", {}},
    {"SshChanged", {{managedObjects, 1}, {portal1, 1}, {"getAttribute", 3}}},
    {"Stop", {{eventRouter, 4}, {portal1, 4}, {"removeSubscription", 4}, {"unregisterConsumer", 4}}},
    {"Terminate", {{"unregisterComponent", 1}}}};

Lines operator+(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

std::string notFound(const char* classPath) {
    return std::string("4 getDnValue: Could not find first instance of classpath : ManagedElement,") + classPath;
}

const std::string noCli = notFound("SystemFunctions,SysM,CliSsh");
const std::string noNetconf = notFound("SystemFunctions,SysM,NetconfSsh");
const std::string noSysM = notFound("SystemFunctions,SysM");
const std::string noSsh = notFound("SystemFunctions,SecM,Ssh");
const Lines noParent{noSysM, "4 createMo: SysM Instance could not be found."};

const std::string cliOpens = "run: clissh unlock port 2022";
const std::string cliCloses = "run: clissh lock";
const std::string netconfOpens = "run: netconfssh unlock port 2830";
const std::string netconfCloses = "run: netconfssh lock";
const std::string revision = "run: spi-revision";
const std::string removal = "--removeIpQoS";
const std::string renegotiation = " --renegotiationTime 3600";

const std::string noDscp = "trace: Unable to get dscp. Error code: ";
const std::string dscpOf = "ManagedElement=1,Transport=1,DiffServCategory=OamCM::dscp, error ";

/** The trace of each way in which the DSCP cannot be read; CODE stands for the fault's. */
const std::string dscpNoInterface = noDscp + "CODE, reason: Interface TulOamSpiManagedObject not found";
const std::string dscpNoPortal = noDscp + "-4, reason: Interface TulOamSpiManagedObject not found";
const std::string dscpNoSearch =
    noDscp + "CODE, reason: Could not find instances of ManagedElement,Transport, error CODE";
const std::string dscpNoRead = noDscp + "CODE, reason: Could not read attribute " + dscpOf + "CODE";
const std::string dscpNoCategory = noDscp + "-4, reason: Could not read attribute " + dscpOf + "-4";

// An empty node: every search but those for SysM and Transport finds nothing anyway.

const Lines cliCreated{noCli, cliOpens};
const Lines netconfCreated{noNetconf, netconfOpens};
const Lines bothCreated = cliCreated + netconfCreated;

Lines emptyNodeWith(const std::string& dscpTrace) {
    return bothCreated + Lines{dscpTrace, revision, noSsh, "run: ssh " + removal + renegotiation};
}

/** The six searches and, but for the last, which a fault ends; the same whichever operation of them it is. */
std::vector<FaultRow> emptyNodeSearches(const std::string& operation, unsigned int first, const std::string& dscp) {
    const char* const name = "StartOnAnEmptyNode";
    const Lines all = emptyNodeWith(dscpNoCategory);
    const Expected undisturbed{BRY_OK, all};
    const Expected withoutDscp{BRY_OK, emptyNodeWith(dscp)};
    const Expected endsAtCli{BRY_NO_PARENT_MO, Lines{noCli} + noParent};
    const Expected endsAtNetconf{BRY_NO_PARENT_MO, cliCreated + Lines{noNetconf} + noParent};
    return {{name, operation, first, undisturbed, endsAtCli},
            {name, operation, first + 1, endsAtCli, endsAtCli},
            {name, operation, first + 2, undisturbed, endsAtNetconf},
            {name, operation, first + 3, endsAtNetconf, endsAtNetconf},
            {name, operation, first + 4, withoutDscp, withoutDscp},
            {name, operation, first + 5, undisturbed, undisturbed}};
}

const std::string noManagedObjects = "3 start: Failed to getInterface (TulOamSpiManagedObject:3) from the portal";
const std::string noTransactions = "3 start: Failed to getInterface (TulOamSpiTransactionMaster:1) from the portal";

std::vector<FaultRow> both(const char* name, const std::string& operation, unsigned int use,
                           const Expected& expected) {
    return {{name, operation, use, expected, expected}};
}

std::vector<FaultRow> operator+(std::vector<FaultRow> rows, const std::vector<FaultRow>& more) {
    rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

std::vector<FaultRow> creationSteps() {
    const char* const name = "StartOnAnEmptyNode";
    const std::pair<const char*, const char*> steps[] = {
        {"newTransaction", "3 createMo: New Transaction could not be created."},
        {"createMo", "3 createMo: %Ssh Mo Creation Failed!!."},
        {"commit", "3 createMo: Transaction commit failed!!."}};
    std::vector<FaultRow> rows;
    for (const auto& [operation, text] : steps) {
        const auto message = [pattern = text](const char* className) {
            std::string line = pattern;
            return line.find('%') == std::string::npos ? line : line.replace(line.find('%'), 4, className);
        };
        rows = rows + both(name, operation, 1, {itsCode, {noCli, message("CliSsh")}}) +
               both(name, operation, 2, {itsCode, cliCreated + Lines{noNetconf, message("NetconfSsh")}});
    }
    return rows;
}

std::vector<FaultRow> emptyNodeRows() {
    const char* const name = "StartOnAnEmptyNode";
    return both(name, managedObjects, 1, {BRY_FAILED, {noManagedObjects}}) +
           both(name, transactions, 1, {BRY_FAILED, {noTransactions}}) +
           emptyNodeSearches(managedObjects, 2, dscpNoInterface) + emptyNodeSearches(portal1, 1, dscpNoPortal) +
           emptyNodeSearches("findInstances", 1, dscpNoSearch) +
           both(name, "getAttribute", 1, {BRY_OK, emptyNodeWith(dscpNoRead)}) + creationSteps();
}

// A full node: what cannot be read keeps the cached state, which is locked before the first start.

const std::string dscp46 = "--ipQos 46";
const std::string ciphers = " --ciphers aes128-ctr,aes256-ctr";
const std::string exchanges = " --kexAlgorithms curve25519-sha256";
const std::string macs = " --macs hmac-sha2-256";
const std::string noCliState =
    std::string("4 getAdministrativeState: Unable to get administrativeState for ") + cliSshDn;
const std::string noNetconfState =
    std::string("4 getAdministrativeState: Unable to get administrativeState for ") + netconfSshDn;
const std::string noInterface = "Interface TulOamSpiManagedObject not found";

std::string batch(const std::string& dscp, const std::string& lists) {
    return "run: ssh " + dscp + renegotiation + lists;
}

const Lines bothOpen{cliOpens, netconfOpens};
const std::string wholeBatch = batch(dscp46, ciphers + exchanges + macs);

/** A missed CliSsh or NetconfSsh is taken for missing, and cannot be created: start ends with the framework's code.
 */
const Expected missesCli{BRY_ALREADY_EXISTS, {noCli, "3 createMo: CliSsh Mo Creation Failed!!."}};
const Expected missesNetconf{BRY_ALREADY_EXISTS,
                             {cliOpens, noNetconf, "3 createMo: NetconfSsh Mo Creation Failed!!."}};
const Expected missesAllFromCli{BRY_NO_PARENT_MO, Lines{noCli} + noParent};
const Expected missesAllFromNetconf{BRY_NO_PARENT_MO, Lines{cliOpens, noNetconf} + noParent};

const Lines cliCannotBeRead{noCliState, cliCloses, netconfOpens, revision, wholeBatch};
const Lines netconfCannotBeRead{cliOpens, noNetconfState, netconfCloses, revision, wholeBatch};
const std::string removalWithLists = batch(removal, ciphers + exchanges + macs);

/** The seven accessors. The last one is the only failure that passes out of start, with nothing subscribed yet. */
std::vector<FaultRow> fullNodeAccessors(const std::string& operation, unsigned int first, const std::string& dscp) {
    const char* const name = "StartOnAFullNode";
    const Lines missesSsh{dscp, revision, noSsh, batch(removal, "")};
    return {{name, operation, first, missesCli, missesAllFromCli},
            {name,
             operation,
             first + 1,
             {BRY_OK, cliCannotBeRead},
             {BRY_NO_PARENT_MO, Lines{noCliState, cliCloses, noNetconf} + noParent}},
            {name, operation, first + 2, missesNetconf, missesAllFromNetconf},
            {name,
             operation,
             first + 3,
             {BRY_OK, netconfCannotBeRead},
             {BRY_OK, Lines{cliOpens, noNetconfState, netconfCloses} + missesSsh}},
            {name,
             operation,
             first + 4,
             {BRY_OK, bothOpen + Lines{dscp, revision, removalWithLists}},
             {BRY_OK, bothOpen + missesSsh}},
            {name,
             operation,
             first + 5,
             {BRY_OK, bothOpen + Lines{revision, noSsh, batch(dscp46, "")}},
             {BRY_OK, bothOpen + Lines{revision, noSsh, batch(dscp46, "")}}},
            {name,
             operation,
             first + 6,
             {BRY_OK, bothOpen + Lines{revision}, noInterface},
             {BRY_OK, bothOpen + Lines{revision}, noInterface}}};
}

std::vector<FaultRow> fullNodeSearches() {
    const char* const name = "StartOnAFullNode";
    const Lines noDscpNoSsh = bothOpen + Lines{dscpNoSearch, revision, noSsh, batch(removal, "")};
    const Expected missesSsh{BRY_OK, bothOpen + Lines{revision, noSsh, batch(dscp46, "")}};
    return {{name, "findInstances", 1, missesCli, missesAllFromCli},
            {name, "findInstances", 2, missesNetconf, missesAllFromNetconf},
            {name,
             "findInstances",
             3,
             {BRY_OK, bothOpen + Lines{dscpNoSearch, revision, removalWithLists}},
             {BRY_OK, noDscpNoSsh}},
            {name, "findInstances", 4, missesSsh, missesSsh}};
}

std::vector<FaultRow> fullNodeReads() {
    const char* const name = "StartOnAFullNode";
    const char* const read = "getAttribute";
    const Lines noSetting{dscpNoRead, revision, batch(removal, "")};
    const auto lists = [](const std::string& text) {
        return Expected{BRY_OK, bothOpen + Lines{revision, batch(dscp46, text)}};
    };
    return {{name,
             read,
             1,
             {BRY_OK, cliCannotBeRead},
             {BRY_OK, Lines{noCliState, cliCloses, noNetconfState, netconfCloses} + noSetting}},
            {name,
             read,
             2,
             {BRY_OK, netconfCannotBeRead},
             {BRY_OK, Lines{cliOpens, noNetconfState, netconfCloses} + noSetting}},
            {name,
             read,
             3,
             {BRY_OK, bothOpen + Lines{dscpNoRead, revision, removalWithLists}},
             {BRY_OK, bothOpen + noSetting}},
            {name, read, 4, lists(exchanges + macs), lists("")},
            {name, read, 5, lists(ciphers + macs), lists(ciphers)},
            {name, read, 6, lists(ciphers + exchanges), lists(ciphers + exchanges)}};
}

std::vector<FaultRow> fullNodeRows() {
    const char* const name = "StartOnAFullNode";
    return both(name, managedObjects, 1, {BRY_FAILED, {noManagedObjects}}) +
           both(name, transactions, 1, {BRY_FAILED, {noTransactions}}) +
           fullNodeAccessors(managedObjects, 2, dscpNoInterface) + fullNodeAccessors(portal1, 1, dscpNoPortal) +
           fullNodeSearches() + fullNodeReads();
}

// Management off: whatever fails, the ports are closed.

const std::string cliDeleted = std::string("trace:  << ") + cliSshDn + " instance is deleted";
const std::string netconfDeleted = std::string("trace:  << ") + netconfSshDn + " instance is deleted";
const Lines bothClose{cliCloses, netconfCloses};

/** What the failure of one step of a deletion leaves in the journal, for the one MO and for the other. */
std::vector<FaultRow> offRows(const std::string& operation, unsigned int first, const Lines& cli,
                              const Lines& netconf) {
    const char* const name = "StartWithManagementOff";
    return {{name,
             operation,
             first,
             {BRY_OK, cli + Lines{netconfDeleted} + bothClose},
             {BRY_OK, cli + netconf + bothClose}},
            {name,
             operation,
             first + 1,
             {BRY_OK, Lines{cliDeleted} + netconf + bothClose},
             {BRY_OK, Lines{cliDeleted} + netconf + bothClose}}};
}

std::vector<FaultRow> managementOffRows() {
    const char* const name = "StartWithManagementOff";
    const std::string noTransaction = "3 deleteMoInstance: New Transaction could not be created.";
    const std::string noCommit = "3 deleteMoInstance: Transaction commit failed!!.";
    const auto notDeleted = [](const char* dn) {
        return std::string("trace:  << ") + dn + " instance is not deleted";
    };
    return both(name, managedObjects, 1, {BRY_FAILED, {noManagedObjects}}) +
           both(name, transactions, 1, {BRY_FAILED, {noTransactions}}) +
           offRows(managedObjects, 2, {noCli}, {noNetconf}) + offRows(portal1, 1, {noCli}, {noNetconf}) +
           offRows("findInstances", 1, {noCli}, {noNetconf}) +
           offRows("newTransaction", 1, {noTransaction}, {noTransaction}) +
           offRows("deleteMo", 1, {notDeleted(cliSshDn)}, {notDeleted(netconfSshDn)}) +
           offRows("commit", 1, {cliDeleted, noCommit}, {netconfDeleted, noCommit});
}

// Notifications: 0 in every case.

std::vector<FaultRow> notificationRows() {
    const Lines withoutDscp{"6 onServiceCategoryMoChangeNotification: dscp value for SSHD set to : .",
                            "run: ssh " + removal};
    std::vector<FaultRow> rows;
    for (const char* name : {"CategoryCreated", "CategoryChanged"}) {
        rows = rows + both(name, managedObjects, 1, {BRY_OK, Lines{dscpNoInterface} + withoutDscp}) +
               both(name, portal1, 1, {BRY_OK, Lines{dscpNoPortal} + withoutDscp}) +
               both(name, "findInstances", 1, {BRY_OK, Lines{dscpNoSearch} + withoutDscp}) +
               both(name, "getAttribute", 1, {BRY_OK, Lines{dscpNoRead} + withoutDscp});
    }
    const char* const ssh = "SshChanged";
    const Expected warned{BRY_OK, {"4 notifyCallback: Exception thrown from event consumer :" + noInterface}};
    return rows + both(ssh, managedObjects, 1, warned) + both(ssh, portal1, 1, warned) +
           std::vector<FaultRow>{
               {ssh, "getAttribute", 1, {BRY_OK, {"run: ssh" + exchanges + macs}}, {BRY_OK, {}}},
               {ssh, "getAttribute", 2, {BRY_OK, {"run: ssh" + ciphers + macs}}, {BRY_OK, {"run: ssh" + ciphers}}},
               {ssh,
                "getAttribute",
                3,
                {BRY_OK, {"run: ssh" + ciphers + exchanges}},
                {BRY_OK, {"run: ssh" + ciphers + exchanges}}}};
}

// Stop: failures of the router are traced and do not matter.

std::vector<FaultRow> stopRows() {
    const char* const name = "Stop";
    const std::string type = ", eventType BryOamSpiCmEvent_Notification_1";
    const Lines subscription{"trace: Could not unregister event subscription" + type};
    const Lines consumer{"trace: Could not unregister event consumer" + type};
    const Lines neither = Lines{noRouter} + subscription + consumer;
    std::vector<FaultRow> rows;
    for (unsigned int use = 1; use <= 4; ++use) {
        const auto row = [&](const std::string& operation, const Lines& lines, bool staysRegistered) {
            Lines allLines;
            for (unsigned int i = use; i <= 4; ++i) {
                allLines = allLines + lines;
            }
            rows.push_back({name,
                            operation,
                            use,
                            {BRY_OK, lines + bothClose, "", staysRegistered ? 1u : 0u},
                            {BRY_OK, allLines + bothClose, "", staysRegistered ? 5 - use : 0}});
        };
        row("removeSubscription", subscription, false);
        row("unregisterConsumer", consumer, true);
        row(eventRouter, neither, true);
        row(portal1, neither, true);
    }
    return rows;
}

std::vector<FaultRow> initAndTerminateRows() {
    const Expected undisturbed{BRY_OK, {}};
    std::vector<FaultRow> rows = both("Init", "getPortal 3", 1, {BRY_FAILED, {}}) +
                                 both("Init", "registerComponent", 1, {itsCode, {}}) +
                                 both("Init", "getInterface TulMwSpiLog", 1, undisturbed) +
                                 both("Init", "getInterface BryMwSpiTrace", 1, undisturbed) +
                                 both("Terminate", "unregisterComponent", 1, undisturbed);
    for (unsigned int use = 1; use <= 3; ++use) {
        rows = rows + both("Init", portal1, use, undisturbed);
    }
    return rows;
}

}  // namespace

const std::vector<FaultRow>& faultRows() {
    static const std::vector<FaultRow> rows = initAndTerminateRows() + emptyNodeRows() + fullNodeRows() +
                                              managementOffRows() + notificationRows() + stopRows();
    return rows;
}

std::vector<EndRow> endRows(unsigned int accessors) {
    std::vector<EndRow> rows;
    for (unsigned int use = 1; use <= 4; ++use) {
        rows.push_back({"registerConsumer", use, "3 start: Could not register consumer"});
        rows.push_back({"addSubscription", use, "3 start: Could not add subscription"});
        rows.push_back({eventRouter, use, noRouter});
        rows.push_back({portal1, accessors + use, noRouter});
    }
    return rows;
}

std::string lastWordsBeforeSubscribing(const Scenario& start) {
    return start.full ? revision : noSsh;
}

const Uses& usesOf(const std::string& scenario) {
    return allUses.at(scenario);
}

}  // namespace TulTest
