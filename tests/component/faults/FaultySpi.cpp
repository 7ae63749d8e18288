#include "FaultySpi.h"

#include <algorithm>
#include <stdexcept>

#include "AllocationFaults.h"
#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "Portal.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulTest {

namespace {

FaultySpi* current = nullptr;

/** The framework's own tables. */
struct Framework {
    BryMgmtSpiPortal_1* portal1;
    BryMgmtSpiPortal_3* portal3;
    TulMwSpiLog_1* log;
    BryMwSpiTrace* trace;
    TulOamSpiManagedObject_3* managedObject;
    TulOamSpiTransactionMaster_1* transactionMaster;
    TulOamSpiEventRouter_1* eventRouter;
} real;

/** The code of the fault, or what the framework answers. */
template <class ForwardT>
BryReturnT answer(const char* operation, const ForwardT& forward) {
    const AllocationFaults::Pause pause;
    return current->isFaulty(operation) ? current->fault().code : forward();
}

// Managed objects

BryReturnT getAttribute(TulOamSpiTransactionHandleT transaction, const char* dn, const char* name,
                        TulMoAttributeValueResult_3* result) {
    return answer("getAttribute", [&] { return real.managedObject->getAttribute(transaction, dn, name, result); });
}

struct Visit {
    TulOamSpiMoVisitor_3 visitor;
    void* context;
};

/** The visitor is the platform's code, not the framework's: there allocations may fail again. */
bool visit(void* context, const char* dn) {
    const AllocationFaults::Pause resumed(false);
    const Visit& visit = *static_cast<Visit*>(context);
    return visit.visitor(visit.context, dn);
}

BryReturnT findInstances(TulOamSpiTransactionHandleT transaction, const char* classPath, TulOamSpiMoVisitor_3 visitor,
                         void* context) {
    Visit wrapped{visitor, context};
    return answer("findInstances",
                  [&] { return real.managedObject->findInstances(transaction, classPath, visit, &wrapped); });
}

BryReturnT createMo(TulOamSpiTransactionHandleT transaction, const char* parentDn, const char* className,
                    const char* keyName, const char* keyValue, TulMoNamedAttribute_3** attributes) {
    return answer("createMo", [&] {
        const std::string dn = std::string(parentDn) + "," + className + "=" + keyValue;
        if (current->framework().model.contains(dn)) {
            return BryReturnT{BRY_ALREADY_EXISTS};
        }
        const AttributeValues state = enumeration(attributes[0]->value.values[0].asInt64);
        current->atCommit([dn, state] { current->framework().givenMo(dn, {{"administrativeState", state}}); });
        return real.managedObject->createMo(transaction, parentDn, className, keyName, keyValue, attributes);
    });
}

BryReturnT deleteMo(TulOamSpiTransactionHandleT transaction, const char* dn) {
    return answer("deleteMo", [&] {
        current->atCommit([name = std::string(dn)] { current->framework().model.erase(name); });
        return real.managedObject->deleteMo(transaction, dn);
    });
}

// Transactions

BryReturnT newTransaction(TulLockPolicyT policy, unsigned int timeout, TulOamSpiTransactionHandleT* transaction) {
    return answer("newTransaction", [&] {
        current->dropUncommitted();
        return real.transactionMaster->newTransaction(policy, timeout, transaction);
    });
}

BryReturnT commit(TulOamSpiTransactionHandleT transaction) {
    return answer("commit", [&] {
        current->commit();
        return real.transactionMaster->commit(transaction);
    });
}

// Event router

BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* record, BryOamSpiEventConsumerHandleT* handle) {
    return answer("registerConsumer", [&] {
        const auto& known = current->framework().consumers;
        const bool isKnown = std::any_of(known.begin(), known.end(),
                                         [record](const auto& consumer) { return consumer.record == record; });
        return isKnown ? BryReturnT{BRY_ALREADY_EXISTS} : real.eventRouter->registerConsumer(record, handle);
    });
}

BryReturnT addSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter) {
    return answer("addSubscription", [&] { return real.eventRouter->addSubscription(handle, eventType, filter); });
}

BryReturnT removeSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                              BryNameValuePairT** filter) {
    return answer("removeSubscription",
                  [&] { return real.eventRouter->removeSubscription(handle, eventType, filter); });
}

BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT handle, BryOamSpiEventConsumerRecord* record) {
    return answer("unregisterConsumer", [&] { return real.eventRouter->unregisterConsumer(handle, record); });
}

// Log and trace: never a fault, their operations return nothing

std::int32_t getLevel() {
    return real.log->getLevel();
}

void log(const char* function, std::int32_t severity, std::int32_t category, const char* format, const char* text) {
    const AllocationFaults::Pause pause;
    real.log->log(function, severity, category, format, text);
}

void trace(const char* sourceFile, const char* function, std::int32_t line, std::int32_t kind, const char* format,
           const char* text) {
    const AllocationFaults::Pause pause;
    real.trace->trace(sourceFile, function, line, kind, format, text);
}

void traceV2(const char* subsystem, std::int32_t level, const char* sourceFile, const char* function,
             std::int32_t line, const char* format, const char* text) {
    const AllocationFaults::Pause pause;
    real.trace->traceV2(subsystem, level, sourceFile, function, line, format, text);
}

// Portals

TulMwSpiLog_1 logTable{{"TulMwLogService", TUL_MW_SPI_LOG_NAME, "1"}, getLevel, log};
BryMwSpiTrace traceTable{{"BryMwTraceService", BRY_MW_SPI_TRACE_NAME, "2"}, trace, traceV2};
TulOamSpiManagedObject_3 managedObjectTable{{TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, "3"},
                                            getAttribute,
                                            findInstances,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            createMo,
                                            deleteMo};
TulOamSpiTransactionMaster_1 transactionMasterTable{
    {TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1"}, newTransaction, commit, nullptr};
TulOamSpiEventRouter_1 eventRouterTable{{TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1"},
                                        nullptr,
                                        registerConsumer,
                                        addSubscription,
                                        removeSubscription,
                                        unregisterConsumer};

void* tableOf(const std::string& interfaceName) {
    static const std::map<std::string, void*> tables{{TUL_MW_SPI_LOG_NAME, &logTable},
                                                     {BRY_MW_SPI_TRACE_NAME, &traceTable},
                                                     {TUL_OAM_SPI_MANAGED_OBJECT_NAME, &managedObjectTable},
                                                     {TUL_OAM_SPI_TRANSACTION_MASTER_NAME, &transactionMasterTable},
                                                     {TUL_OAM_SPI_EVENT_ROUTER_NAME, &eventRouterTable}};
    return tables.at(interfaceName);
}

BryReturnT getInterface(const char* /*componentName*/, const char* interfaceName, const char* /*version*/,
                        void** interfaceRecord) {
    const AllocationFaults::Pause pause;
    const bool faulty = current->isFaulty(std::string("getInterface ") + interfaceName);
    if (faulty && current->fault().code != BRY_OK) {
        return current->fault().code;
    }
    *interfaceRecord = faulty ? nullptr : tableOf(interfaceName);
    return BRY_OK;
}

BryReturnT registerComponent(BryMgmtSpiComponent_2* component) {
    return answer("registerComponent", [&] { return real.portal3->registerComponent(component); });
}

BryReturnT unregisterComponent(BryMgmtSpiComponent_2* component) {
    return answer("unregisterComponent", [&] { return real.portal3->unregisterComponent(component); });
}

BryMgmtSpiPortal_1 portal1{{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
BryMgmtSpiPortal_3 portal3{
    {"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"}, nullptr, nullptr, registerComponent, unregisterComponent};

void* getPortal(const char* interfaceVersion) {
    const AllocationFaults::Pause pause;
    if (current->isFaulty(std::string("getPortal ") + interfaceVersion)) {
        return nullptr;
    }
    return std::string(interfaceVersion) == "1" ? static_cast<void*>(&portal1) : &portal3;
}

const BryMgmtSpiPortalAccessor portalAccessor{getPortal};

template <class InterfaceT>
InterfaceT* found(const char* name, const char* version) {
    void* record = nullptr;
    real.portal1->getInterface(nullptr, name, version, &record);
    return static_cast<InterfaceT*>(record);
}

Framework tablesOf(const RecordingFramework& recording) {
    const BryMgmtSpiPortalAccessor& accessor = *recording.accessor();
    real.portal1 = static_cast<BryMgmtSpiPortal_1*>(accessor.getPortal("1"));
    return {real.portal1,
            static_cast<BryMgmtSpiPortal_3*>(accessor.getPortal("3")),
            found<TulMwSpiLog_1>(TUL_MW_SPI_LOG_NAME, "1"),
            found<BryMwSpiTrace>(BRY_MW_SPI_TRACE_NAME, "2"),
            found<TulOamSpiManagedObject_3>(TUL_OAM_SPI_MANAGED_OBJECT_NAME, "3"),
            found<TulOamSpiTransactionMaster_1>(TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1"),
            found<TulOamSpiEventRouter_1>(TUL_OAM_SPI_EVENT_ROUTER_NAME, "1")};
}

}  // namespace

FaultySpi::FaultySpi(RecordingFramework& recording) : _framework(recording) {
    current = this;
    real = tablesOf(recording);
    tulCommonDetach();
    const TulCommonSettings_1 settings{&portalAccessor, nullptr, nullptr};
    if (tulCommonAttach(&settings) != BRY_OK) {
        throw std::logic_error("libtul_common cannot be attached");
    }
    // Every stop and every start of a consumer looks the router up then, which makes more places to fail.
    Tul::Portal::instance().reset(false);
}

FaultySpi::~FaultySpi() {
    tulCommonDetach();
    current = nullptr;
}

const BryMgmtSpiPortalAccessor* FaultySpi::accessor() const {
    return &portalAccessor;
}

bool FaultySpi::isFaulty(const std::string& operation) {
    const unsigned int use = ++uses[operation];
    return operation == _fault.operation && isHit(use, _fault.first, _fault.persistence);
}

void FaultySpi::commit() {
    for (const auto& change : _uncommitted) {
        change();
    }
    _uncommitted.clear();
}

}  // namespace TulTest
