#include "SshComponent.h"

#include <Poco/RegularExpression.h>

#include <locale>
#include <sstream>
#include <string_view>
#include <vector>

#include "AutoMemory.h"
#include "BryMwSpiTrace.h"
#include "Logging.h"
#include "MoAccessor.h"
#include "TulException.h"
#include "TulMwSpiLog_1.h"

namespace TulSshdManagement {

using NotificationT = BryOamSpiCmEvent_Notification_1T;
using Tul::Trace::TulSshd;

namespace {

const std::string sshdComponentName = "TulSshdManagementComponent";
[[maybe_unused]] const std::string sshdManagementTag = "sshdManagement";
[[maybe_unused]] const std::string netconfPortTag = "netconfPort";
[[maybe_unused]] const std::string cliPortTag = "cliPort";
const std::string netconfSshDnFilter = "^ManagedElement=.*,SystemFunctions=.*,SysM=.*,NetconfSsh=.*$";
const std::string cliSshDnFilter = "^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$";
const std::string sshDnFilter = "^ManagedElement=.*,SystemFunctions=.*,SecM=.*,Ssh=.*$";
const std::string netconfSshClassPath = "ManagedElement,SystemFunctions,SysM,NetconfSsh";
const std::string cliSshClassPath = "ManagedElement,SystemFunctions,SysM,CliSsh";
const std::string sysMClassPath = "ManagedElement,SystemFunctions,SysM";
const std::string transportClassPath = "ManagedElement,Transport";
const std::string sshClassPath = "ManagedElement,SystemFunctions,SecM,Ssh";
const std::string selectedCiphersAttr = "selectedCiphers";
const std::string selectedKeyExchangesAttr = "selectedKeyExchanges";
const std::string selectedMacsAttr = "selectedMacs";
const std::string serviceCategoryDnFilter = "^ManagedElement=.*,Transport=.*,DiffServCategory=OamCM$";
const std::string serviceCategoryRdn = "DiffServCategory=OamCM";
const std::string dscpAttr = "dscp";

const char* const cliSubsystem = "clissh";
const char* const netconfSubsystem = "netconfssh";
const char* const administrativeStateAttr = "administrativeState";

const int adapterTimeout = 30000;              // milliseconds, of every port call and batch
const unsigned int transactionTimeout = 3600;  // seconds
const TulLockPolicyT createLockPolicy = TUL_LOCK_POLICY_SHARED;
const TulLockPolicyT deleteLockPolicy = TUL_LOCK_POLICY_EXCLUSIVE;
const int accessorTimeout = 60;

const BryMgmtSpiInterface_1 logInterfaceId = {nullptr, TUL_MW_SPI_LOG_NAME, TUL_MW_SPI_LOG_VERSION_1};
const BryMgmtSpiInterface_1 traceInterfaceId = {nullptr, BRY_MW_SPI_TRACE_NAME, nullptr};  // any version, on purpose
const BryMgmtSpiInterface_1 managedObjectInterfaceId = {
    TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3};
const BryMgmtSpiInterface_1 transactionMasterInterfaceId = {
    TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, TUL_OAM_SPI_TRANSACTION_MASTER_VERSION_1};

/** Every operation reads through an accessor of its own. */
class Accessor : public Tul::MoAccessor {
public:
    Accessor() : MoAccessor(true, TUL_LOCK_POLICY_SHARED, accessorTimeout) {}
};

/** Calls the function for each entry of a null-terminated array; a null array has none. */
template <class EntryT, class FunctionT>
void forEach(EntryT** entries, const FunctionT& function) {
    for (; entries != nullptr && *entries != nullptr; ++entries) {
        function(**entries);
    }
}

bool isAdministrativeState(const BryOamSpiCmEvent_Attribute_1& attribute) {
    return attribute.name != nullptr && std::string_view(attribute.name) == administrativeStateAttr &&
           attribute.nrOfValues != 0 && attribute.values != nullptr && attribute.type == TUL_MO_TYPE_ENUMERATION_3;
}

/** The number is taken as it is: unlike a state that is read from the MO, every one but 0 opens the port. Wanted. */
void takeState(const BryOamSpiCmEvent_Event_1& event, BasicAdmState& state) {
    forEach(event.attributes, [&state](const BryOamSpiCmEvent_Attribute_1& attribute) {
        if (isAdministrativeState(attribute)) {
            state = static_cast<BasicAdmState>(attribute.values[0].asEnum);
        }
    });
}

/** The last administrative state that a notification brings, or the given one. */
BasicAdmState newestState(const NotificationT& notification, BasicAdmState state) {
    forEach(notification.events, [&state](const BryOamSpiCmEvent_Event_1& event) {
        if (event.eventType == ATTRIBUTES_CHANGED) {
            takeState(event, state);
        }
    });
    return state;
}

bool isCreationOrChange(const BryOamSpiCmEvent_Event_1& event) {
    return event.eventType == CREATED || event.eventType == ATTRIBUTES_CHANGED;
}

bool isOamCm(const std::string& dn) {
    const Poco::RegularExpression pattern(".*(OamCM)$", 0, true);
    return pattern.match(dn, 0);
}

std::string join(const std::vector<std::string>& values) {
    std::string list;
    for (const std::string& value : values) {
        list += value + ",";
    }
    list.pop_back();
    return list;
}

/** The attribute list that unlocks a new MO; null when there is no memory for it. */
TulMoNamedAttribute_3** unlockedAttribute(Tul::AutoMemory& memory, const std::string& name) {
    auto** const attributes = memory.malloc<TulMoNamedAttribute_3*>(2);
    memory.malloc<TulMoNamedAttribute_3*>(2);  // passed to nobody: kept, harmless, as part of the pattern
    auto* const attribute = memory.malloc<TulMoNamedAttribute_3>(1);
    auto* const value = memory.malloc<TulMoAttributeValue_3>(1);
    if (attributes == nullptr || attribute == nullptr || value == nullptr) {
        return nullptr;
    }
    value->asInt64 = static_cast<std::int64_t>(BasicAdmState::UNLOCKED);
    *attribute = {name.c_str(), {TUL_MO_TYPE_ENUMERATION_3, 1, value}};
    attributes[0] = attribute;
    return attributes;
}

}  // namespace

TulSshdManagementComponent::TulSshdManagementComponent() : BryComponent(sshdComponentName) {
    dependOn(logInterfaceId);
    dependOn(traceInterfaceId);
    dependOn(Tul::eventRouterInterfaceId);
    dependOn(managedObjectInterfaceId);
    dependOn(transactionMasterInterfaceId);
}

TulSshdManagementComponent::~TulSshdManagementComponent() = default;

// Life cycle

BryReturnT TulSshdManagementComponent::initialize(const char* configuration) {
    // Wanted without an entry trace, here and in deleteMoInstance: the reader and start write theirs.
    if (_initialized) {
        TUL_ERROR(TulSshd, "Component already initialized!");
        return BRY_FAILED;
    }
    if (configuration == nullptr) {
        TUL_WARNING(TulSshd, "No configuration provided for %s", sshdComponentName.c_str());
        return BRY_NO_CONFIGURATION;
    }
    if (_configHandler.readComponentConfiguration(configuration) != 0) {
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_FAILED;
    }
    _initialized = true;
    TUL_TRACE_EXIT(TulSshd, " << ");
    return BRY_OK;
}

void TulSshdManagementComponent::terminate() {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    _initialized = false;  // _started stays: a component that runs can still be stopped
    TUL_TRACE_EXIT(TulSshd, " << ");
}

bool TulSshdManagementComponent::isStarted() const {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    TUL_TRACE_EXIT(TulSshd, " << ");
    return _started;
}

template <class InterfaceT>
bool TulSshdManagementComponent::fetchInterface(const BryMgmtSpiInterface_1& id, InterfaceT*& slot) {
    void* found = slot;
    const BryReturnT result =
        _portalV1->getInterface(id.componentName, id.interfaceName, id.interfaceVersion, &found);
    slot = static_cast<InterfaceT*>(found);
    return result == BRY_OK && slot != nullptr;
}

BryReturnT TulSshdManagementComponent::start(BryStateChangeReason reason) {
    TUL_TRACE_ENTRY(TulSshd, " >> Reason: %d", reason);
    if (_started) {  // asked first, on purpose: a terminated component that runs is running
        TUL_WARNING(TulSshd, "TulSshdManager already running");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_OK;
    }
    if (!_initialized) {
        TUL_ERROR(TulSshd, "Component not initialized!");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_FAILED;
    }
    if (!fetchInterface(managedObjectInterfaceId, _managedObjectIf)) {
        TUL_ERROR(TulSshd, "Failed to getInterface (%s:%s) from the portal", managedObjectInterfaceId.interfaceName,
                  managedObjectInterfaceId.interfaceVersion);
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_FAILED;
    }
    if (!fetchInterface(transactionMasterInterfaceId, _transactionMasterIf)) {
        TUL_ERROR(TulSshd, "Failed to getInterface (%s:%s) from the portal",
                  transactionMasterInterfaceId.interfaceName, transactionMasterInterfaceId.interfaceVersion);
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_FAILED;
    }
    if (!_configHandler.getSshdManagement()) {
        withdraw();
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_OK;  // _started stays false, on purpose: a component that manages nothing is not running
    }

    std::string cliSshDn = getDnValue(cliSshClassPath);
    if (cliSshDn.empty()) {
        const BryReturnT result = createMo("CliSsh", "cliSshId");
        if (result != BRY_OK) {
            return result;  // wanted without an exit trace and without undoing anything
        }
        _cliSshAdmState = BasicAdmState::UNLOCKED;
    } else {
        TUL_TRACE(TulSshd, "CliSsh MO already exists");
        getAdministrativeState(cliSshDn, _cliSshAdmState);
    }
    applyPort(cliSubsystem, _configHandler.getCliport(), _cliSshAdmState);

    std::string netconfSshDn = getDnValue(netconfSshClassPath);
    if (netconfSshDn.empty()) {
        const BryReturnT result = createMo("NetconfSsh", "netconfSshId");
        if (result != BRY_OK) {
            return result;  // as above; the CLI port stays as it is now
        }
        _netconfSshAdmState = BasicAdmState::UNLOCKED;
    } else {
        TUL_TRACE(TulSshd, "NetconfSsh MO already exists");
        getAdministrativeState(netconfSshDn, _netconfSshAdmState);
    }
    applyPort(netconfSubsystem, _configHandler.getNetconfport(), _netconfSshAdmState);

    _vorma->setDscp(getDscp());
    _vorma->setRenegotiationtime(_configHandler.getRenegotiationtime());
    const std::string sshDn = getDnValue(sshClassPath);
    if (!sshDn.empty()) {
        TUL_TRACE(TulSshd, "Ssh MO exists");
        const std::map<std::string, std::string> selected = fetchCipherConfiguration(sshDn);
        if (!selected.empty()) {
            _vorma->setCiphers(selected);
        }
    }
    startConsumers();
    _started = true;  // before the run, on purpose: a failed run leaves the component started
    _vorma->invokeVorma(adapterTimeout);
    TUL_TRACE_EXIT(TulSshd, " << ");
    return BRY_OK;
}

BryReturnT TulSshdManagementComponent::stop(BryStateChangeReason reason) {
    TUL_TRACE_ENTRY(TulSshd, " >> Reason: %d", reason);
    if (!_started) {
        TUL_WARNING(TulSshd, "TulSshdManager is already stopped");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_OK;
    }
    if (_configHandler.getSshdManagement()) {
        stopConsumers();
        _vorma->disablePorts(cliSubsystem, adapterTimeout);
        _vorma->disablePorts(netconfSubsystem, adapterTimeout);
    }
    _started = false;
    TUL_TRACE_EXIT(TulSshd, " << ");
    return BRY_OK;
}

void TulSshdManagementComponent::applyPort(const char* subsystem, unsigned int port, BasicAdmState state) {
    if (state == BasicAdmState::UNLOCKED) {
        _vorma->enablePorts(subsystem, port, adapterTimeout);
    } else {
        _vorma->disablePorts(subsystem, adapterTimeout);
    }
}

void TulSshdManagementComponent::deleteFirstInstance(const std::string& classPath) {
    const std::string dn = getDnValue(classPath);
    if (!dn.empty()) {
        deleteMoInstance(dn);
    }
}

/** For a node whose sshd is managed by somebody else: neither MOs nor ports of ours may be left. */
void TulSshdManagementComponent::withdraw() {
    deleteFirstInstance(cliSshClassPath);
    deleteFirstInstance(netconfSshClassPath);
    _vorma->disablePorts(cliSubsystem, adapterTimeout);
    _vorma->disablePorts(netconfSubsystem, adapterTimeout);
}

void TulSshdManagementComponent::startConsumers() {
    _cliSshConsumer.start(cliSshDnFilter, &TulSshdManagementComponent::onCliSshMoChangeNotification, *this);
    _netconfSshConsumer.start(netconfSshDnFilter, &TulSshdManagementComponent::onNetconfSshMoChangeNotification,
                              *this);
    _serviceCategoryConsumer.start(serviceCategoryDnFilter,
                                   &TulSshdManagementComponent::onServiceCategoryMoChangeNotification, *this);
    _sshConsumer.start(sshDnFilter, &TulSshdManagementComponent::onSshMoCipherChangeNotification, *this);
}

void TulSshdManagementComponent::stopConsumers() {
    _cliSshConsumer.stop();
    _netconfSshConsumer.stop();
    _serviceCategoryConsumer.stop();
    _sshConsumer.stop();
}

// MO instances

std::string TulSshdManagementComponent::getDnValue(const std::string& classPath) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    std::string dn;
    try {
        Accessor().getFirstMoInstance(classPath, dn);
    } catch (...) {  // whatever it was: the caller can only go on without the MO
        TUL_WARNING(TulSshd, "Could not find first instance of classpath : %s", classPath.c_str());
        dn.clear();
    }
    TUL_TRACE_EXIT(TulSshd, " << ");
    return dn;
}

BryReturnT TulSshdManagementComponent::createMo(std::string className, std::string keyAttrName) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    const std::string stateAttrName = administrativeStateAttr;
    const std::string keyValue = "1";
    const std::string sysMDn = getDnValue(sysMClassPath);
    if (sysMDn.empty()) {
        TUL_WARNING(TulSshd, "SysM Instance could not be found.");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_NO_PARENT_MO;
    }
    Tul::AutoMemory memory;
    TulMoNamedAttribute_3** const attributes = unlockedAttribute(memory, stateAttrName);
    if (attributes == nullptr) {  // reported as what it amounts to; a null must not reach the framework
        TUL_ERROR(TulSshd, "%s Mo Creation Failed!!.", className.c_str());
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_FAILED;
    }
    // A transaction that fails below stays open, on purpose: it ends by itself with its time-out.
    TulOamSpiTransactionHandleT transaction = 0;
    BryReturnT result = _transactionMasterIf->newTransaction(createLockPolicy, transactionTimeout, &transaction);
    if (result != BRY_OK) {
        TUL_ERROR(TulSshd, "New Transaction could not be created.");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return result;
    }
    result = _managedObjectIf->createMo(transaction, sysMDn.c_str(), className.c_str(), keyAttrName.c_str(),
                                        keyValue.c_str(), attributes);
    if (result != BRY_OK) {
        TUL_ERROR(TulSshd, "%s Mo Creation Failed!!.", className.c_str());
        TUL_TRACE_EXIT(TulSshd, " << ");
        return result;
    }
    result = _transactionMasterIf->commit(transaction);
    if (result != BRY_OK) {
        TUL_ERROR(TulSshd, "Transaction commit failed!!.");
    }
    TUL_TRACE_EXIT(TulSshd, " << ");
    return result;
}

BryReturnT TulSshdManagementComponent::deleteMoInstance(const std::string& dn) {
    // As in createMo, a transaction that fails stays open until its time-out.
    TulOamSpiTransactionHandleT transaction = 0;
    BryReturnT result = _transactionMasterIf->newTransaction(deleteLockPolicy, transactionTimeout, &transaction);
    if (result != BRY_OK) {
        TUL_ERROR(TulSshd, "New Transaction could not be created.");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return result;
    }
    result = _managedObjectIf->deleteMo(transaction, dn.c_str());
    if (result != BRY_OK) {
        TUL_TRACE_EXIT(TulSshd, " << %s instance is not deleted", dn.c_str());
        return result;
    }
    TUL_TRACE_EXIT(TulSshd, " << %s instance is deleted", dn.c_str());  // wanted before the commit
    result = _transactionMasterIf->commit(transaction);
    if (result != BRY_OK) {
        TUL_ERROR(TulSshd, "Transaction commit failed!!.");
        TUL_TRACE_EXIT(TulSshd, " << ");
    }
    return result;
}

// Settings

int TulSshdManagementComponent::getAdministrativeState(std::string& dn, BasicAdmState& state) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    try {
        const Tul::MoAccessor::Enum value = Accessor().getAttr<Tul::MoAccessor::Enum>(dn, administrativeStateAttr);
        state = value == 1 ? BasicAdmState::UNLOCKED : BasicAdmState::LOCKED;
        TUL_TRACE(TulSshd, "administrativeState for %d", static_cast<int>(state));
        TUL_TRACE_EXIT(TulSshd, " << ");
        return 0;
    } catch (...) {  // whatever it was: the caller goes on with the state it knows
        TUL_WARNING(TulSshd, "Unable to get administrativeState for %s", dn.c_str());
        TUL_TRACE_EXIT(TulSshd, " << ");
        return -1;
    }
}

std::string TulSshdManagementComponent::getDscp() {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    std::string result;
    std::string transportDn;
    std::string categoryDn;
    try {
        Accessor accessor;
        accessor.getFirstMoInstance(transportClassPath, transportDn);
        categoryDn = transportDn + "," + serviceCategoryRdn;
        std::ostringstream text;
        text.imbue(std::locale::classic());  // the host's locale may group digits
        text << static_cast<unsigned int>(accessor.getAttr<unsigned char>(categoryDn, dscpAttr));
        result = text.str();
    } catch (const Tul::TulException& exception) {
        // A trace and no warning, on purpose: a node without the category is a normal node.
        TUL_TRACE(TulSshd, "Unable to get dscp. Error code: %d, reason: %s", exception.errorCode(), exception.what());
    }
    TUL_TRACE_EXIT(TulSshd, " << Returning DSCP value %s", result.c_str());
    return result;
}

std::map<std::string, std::string> TulSshdManagementComponent::fetchCipherConfiguration(const std::string& sshDn) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    std::map<std::string, std::string> selected;
    Accessor accessor;
    for (const std::string& name : {selectedCiphersAttr, selectedKeyExchangesAttr, selectedMacsAttr}) {
        std::vector<std::string> values;
        try {
            values = accessor.getSeqAttr<std::string>(sshDn, name);
        } catch (...) {  // whatever it was: the other lists still count
            TUL_WARNING(TulSshd, "Unable to get selected(%s) for DN(%s)", name.c_str(), sshDn.c_str());
        }
        if (values.empty()) {
            continue;
        }
        const std::string list = join(values);
        selected.insert({name, list});
        TUL_TRACE(TulSshd, "Selected(%s) attribute value is %s", name.c_str(), list.c_str());
    }
    TUL_TRACE_EXIT(TulSshd, " << ");
    return selected;
}

void TulSshdManagementComponent::applyStateChange(const NotificationT& notification, const char* subsystem,
                                                  unsigned int port, BasicAdmState& state) {
    const BasicAdmState newState = newestState(notification, state);
    if (newState == state) {
        return;
    }
    state = newState;  // first, whatever becomes of the run
    if (newState == BasicAdmState::LOCKED) {
        _vorma->disablePorts(subsystem, adapterTimeout);
    } else {
        _vorma->enablePorts(subsystem, port, adapterTimeout);
    }
}

// Change notifications. Every handler holds the lock until it has left, its exit trace included.

void TulSshdManagementComponent::onCliSshMoChangeNotification(const NotificationT& notification) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    applyStateChange(notification, cliSubsystem, _configHandler.getCliport(), _cliSshAdmState);
    TUL_TRACE_EXIT(TulSshd, " << ");
}

void TulSshdManagementComponent::onNetconfSshMoChangeNotification(const NotificationT& notification) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    applyStateChange(notification, netconfSubsystem, _configHandler.getNetconfport(), _netconfSshAdmState);
    TUL_TRACE_EXIT(TulSshd, " << ");
}

void TulSshdManagementComponent::onServiceCategoryMoChangeNotification(const NotificationT& notification) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    for (BryOamSpiCmEvent_Event_1** entry = notification.events; entry != nullptr && *entry != nullptr; ++entry) {
        const BryOamSpiCmEvent_Event_1& event = **entry;
        if (event.eventType == DELETED) {
            _vorma->setDscp("");
            TUL_INFO(TulSshd, "As ServiceCategory mo was deleted, dscp for sshd set to default");
        } else if (!isCreationOrChange(event)) {
            continue;
        } else if (event.dn == nullptr) {
            TUL_ERROR(TulSshd, "CM Event type, %d received with NULL dn value", event.eventType);
        } else if (!isOamCm(event.dn)) {
            TUL_ERROR(TulSshd, "CM Event type, %d received with incorrect dn value - %s", event.eventType, event.dn);
        } else {
            const std::string dscp = getDscp();
            _vorma->setDscp(dscp);
            TUL_INFO(TulSshd, "dscp value for SSHD set to : %s.", dscp.c_str());
        }
    }
    _vorma->invokeVorma(adapterTimeout);  // always, also when no event counted: something may be queued
    TUL_TRACE_EXIT(TulSshd, " << ");
}

void TulSshdManagementComponent::onSshMoCipherChangeNotification(const NotificationT& notification) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    std::string dn;
    bool changed = false;
    for (BryOamSpiCmEvent_Event_1** entry = notification.events; entry != nullptr && *entry != nullptr; ++entry) {
        const BryOamSpiCmEvent_Event_1& event = **entry;
        if (isCreationOrChange(event)) {
            // No null test: the framework owes the DN. std::string answers a null with an exception.
            dn = std::string(event.dn);
            changed = true;
        } else if (event.eventType == DELETED) {
            TUL_ERROR(TulSshd, "Unexpected delete event received on system created on Ssh MO");
        }
    }
    if (changed) {
        const std::map<std::string, std::string> selected = fetchCipherConfiguration(dn);
        if (!selected.empty()) {
            _vorma->setCiphers(selected);
        }
    }
    _vorma->invokeVorma(adapterTimeout);  // always, as above
    TUL_TRACE_EXIT(TulSshd, " << ");
}

}  // namespace TulSshdManagement

using TulSshdManagement::TulSshdManagementComponent;

extern "C" {

__attribute__((visibility("default"))) BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor,
                                                             const char* configuration) {
    return TulSshdManagementComponent::instance().lcmInit(accessor, configuration);
}

__attribute__((visibility("default"))) void bryLCMterminate() {
    TulSshdManagementComponent::instance().lcmTerminate();
}
}
