#include "Spi.h"

#include <cassert>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "Refusal.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiEventRouter_1.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulNode {

namespace {

Services* node = nullptr;

/** Nothing is thrown into C: what an operation throws becomes its result, with a record that says why. */
template <class Operation>
BryReturnT guarded(const char* function, Operation&& operation) {
    try {
        operation();
        return BRY_OK;
    } catch (const Refusal& refusal) {
        if (refusal.code() == BRY_INVALID_HANDLE) {
            node->journal.accuse(std::string("calls ") + function + " with a dead handle: " + refusal.what());
        } else {
            node->journal.log(Warning, function, codeText(refusal.code()) + ": " + refusal.what());
        }
        return refusal.code();
    } catch (const std::bad_alloc&) {
        return BRY_NO_RESOURCES;
    } catch (const std::exception& e) {
        node->journal.log(Error, function, e.what());
        return BRY_FAILED;
    }
}

/** As guarded(), for questions: that there is nothing is an answer, and no fault to write down. */
template <class Question>
BryReturnT answered(const char* function, Question&& question) {
    BryReturnT result = BRY_OK;
    const auto ask = [&] {
        try {
            question();
        } catch (const Refusal& refusal) {
            if (refusal.code() != BRY_NOT_FOUND) {
                throw;
            }
            result = BRY_NOT_FOUND;
        }
    };
    const BryReturnT failure = guarded(function, ask);
    return failure == BRY_OK ? result : failure;
}

template <class Pointer>
void require(Pointer pointer, const char* name) {
    if (pointer == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, std::string(name) + " is a null pointer");
    }
}

const char* orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

Attributes readAttributes(TulMoNamedAttribute_3** attributes) {
    require(attributes, "the array of attributes");
    Attributes result;
    for (; *attributes != nullptr; ++attributes) {
        require((*attributes)->name, "the name of an attribute");
        if (!result.emplace((*attributes)->name, readContainer((*attributes)->value)).second) {
            throw Refusal(BRY_INVALID_ARGUMENT, std::string((*attributes)->name) + " is given twice");
        }
    }
    return result;
}

// --- portals ---------------------------------------------------------------------------------------------------

BryReturnT getInterface(const char* componentName, const char* interfaceName, const char* interfaceVersion,
                        void** interfaceRecord) {
    return answered("getInterface", [&] {
        require(interfaceRecord, "the place for the interface");
        *interfaceRecord = node->registry.find(componentName, interfaceName, interfaceVersion);
    });
}

BryReturnT registerComponent(BryMgmtSpiComponent_2* component) {
    return guarded("registerComponent", [&] { node->registry.registerComponent(component); });
}

BryReturnT unregisterComponent(BryMgmtSpiComponent_2* component) {
    return guarded("unregisterComponent", [&] { node->registry.unregisterComponent(component); });
}

constexpr const char* portalComponent = "TulPortalComponent";

BryMgmtSpiPortal_1 portal1 = {{portalComponent, BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
BryMgmtSpiPortal_3 portal3 = {
    {portalComponent, BRY_MGMT_SPI_PORTAL_NAME, "3"}, nullptr, nullptr, registerComponent, unregisterComponent};

void* getPortal(const char* interfaceVersion) {
    if (std::strcmp(orEmpty(interfaceVersion), "1") == 0) {
        return &portal1;
    }
    return std::strcmp(orEmpty(interfaceVersion), "3") == 0 ? &portal3 : nullptr;
}

constexpr BryMgmtSpiPortalAccessor portalAccessor = {getPortal};

// --- log and trace ---------------------------------------------------------------------------------------------

std::int32_t getLevel() {
    return node->journal.level();
}

void log(const char* function, std::int32_t severity, std::int32_t /*category*/, const char* /*format*/,
         const char* text) {
    guarded("log", [&] { node->journal.log(severity, orEmpty(function), orEmpty(text)); });
}

/**
 * Every trace comes in both forms, and every log record as a trace too. To show each once, only the newer form of
 * what is a trace and nothing else is kept.
 */
void trace(const char* /*sourceFile*/, const char* /*function*/, std::int32_t /*line*/, std::int32_t /*kind*/,
           const char* /*format*/, const char* /*text*/) {}

void traceV2(const char* subsystem, std::int32_t level, const char* sourceFile, const char* function,
             std::int32_t line, const char* /*format*/, const char* text) {
    if (level != BRY_TRACE_LEVEL_TRACE) {
        return;
    }
    guarded("traceV2", [&] {
        const std::string place = std::string(orEmpty(sourceFile)) + ":" + std::to_string(line);
        node->journal.trace(orEmpty(function), std::string(orEmpty(subsystem)) + " " + place + ": " + orEmpty(text));
    });
}

TulMwSpiLog_1 logInterface = {{"TulMwLogService", TUL_MW_SPI_LOG_NAME, TUL_MW_SPI_LOG_VERSION_1}, getLevel, log};
BryMwSpiTrace traceInterface = {{"TulMwTraceService", BRY_MW_SPI_TRACE_NAME, nullptr}, trace, traceV2};

// --- managed objects and transactions --------------------------------------------------------------------------

BryReturnT newTransaction(TulLockPolicyT lockPolicy, unsigned int timeout, TulOamSpiTransactionHandleT* transaction) {
    return guarded("newTransaction", [&] {
        require(transaction, "the place for the handle");
        *transaction = node->transactions.open(lockPolicy, timeout, ownerComponent);
    });
}

BryReturnT commit(TulOamSpiTransactionHandleT transaction) {
    return guarded("commit", [&] { node->transactions.commit(transaction); });
}

BryReturnT abort(TulOamSpiTransactionHandleT transaction) {
    return guarded("abort", [&] { node->transactions.abort(transaction); });
}

void release(TulMoAttributeValueContainer_3* container) {
    if (!node->values.giveBack(container)) {
        node->journal.accuse("gives a value container back that it does not hold");
    }
}

BryReturnT getAttribute(TulOamSpiTransactionHandleT transaction, const char* dn, const char* attributeName,
                        TulMoAttributeValueResult_3* result) {
    return answered("getAttribute", [&] {
        require(dn, "the DN");
        require(attributeName, "the name of the attribute");
        require(result, "the place for the result");
        AttributeValue value = node->transactions.getAttribute(transaction, dn, attributeName);
        *result = {release, node->values.issue(std::move(value))};
    });
}

BryReturnT findInstances(TulOamSpiTransactionHandleT transaction, const char* classPath, TulOamSpiMoVisitor_3 visitor,
                         void* context) {
    return guarded("findInstances", [&] {
        require(classPath, "the class path");
        require(visitor, "the visitor");
        for (const std::string& dn : node->transactions.instances(transaction, classPath)) {
            if (!visitor(context, dn.c_str())) {
                return;
            }
        }
    });
}

BryReturnT setAttributes(TulOamSpiTransactionHandleT transaction, const char* dn,
                         TulMoNamedAttribute_3** attributes) {
    return guarded("setAttributes", [&] {
        require(dn, "the DN");
        node->transactions.set(transaction, dn, readAttributes(attributes));
    });
}

BryReturnT createMo(TulOamSpiTransactionHandleT transaction, const char* parentDn, const char* className,
                    const char* keyAttributeName, const char* keyAttributeValue, TulMoNamedAttribute_3** attributes) {
    return guarded("createMo", [&] {
        require(parentDn, "the DN of the parent");
        require(className, "the name of the class");
        require(keyAttributeName, "the name of the key attribute");
        require(keyAttributeValue, "the key");
        node->transactions.createBelow(transaction, parentDn, className, keyAttributeName, keyAttributeValue,
                                       readAttributes(attributes));
    });
}

BryReturnT deleteMo(TulOamSpiTransactionHandleT transaction, const char* dn) {
    return guarded("deleteMo", [&] {
        require(dn, "the DN");
        node->transactions.remove(transaction, dn);
    });
}

TulOamSpiTransactionMaster_1 transactionInterface = {
    {TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, TUL_OAM_SPI_TRANSACTION_MASTER_VERSION_1},
    newTransaction,
    commit,
    abort};
TulOamSpiManagedObject_3 managedObjectInterface = {
    {TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3},
    getAttribute,
    findInstances,
    setAttributes,
    nullptr,
    nullptr,
    createMo,
    deleteMo};

// --- events ----------------------------------------------------------------------------------------------------

BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* consumer, BryOamSpiEventConsumerHandleT* handle) {
    return guarded("registerConsumer", [&] {
        require(handle, "the place for the handle");
        *handle = node->router.registerConsumer(consumer);
    });
}

BryReturnT addSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter) {
    return guarded("addSubscription", [&] { node->router.addSubscription(handle, eventType, filter); });
}

BryReturnT removeSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                              BryNameValuePairT** filter) {
    return guarded("removeSubscription", [&] { node->router.removeSubscription(handle, eventType, filter); });
}

BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT handle, BryOamSpiEventConsumerRecord* consumer) {
    return guarded("unregisterConsumer", [&] { node->router.unregisterConsumer(handle, consumer); });
}

TulOamSpiEventRouter_1 routerInterface = {
    {TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, TUL_OAM_SPI_EVENT_ROUTER_VERSION_1},
    nullptr,
    registerConsumer,
    addSubscription,
    removeSubscription,
    unregisterConsumer};

}  // namespace

Spi::Spi(Services& services) {
    assert(node == nullptr);
    node = &services;
    for (BryMgmtSpiInterface_1* identity :
         {&portal1.header, &portal3.header, &logInterface.header, &traceInterface.header, &routerInterface.header,
          &managedObjectInterface.header, &transactionInterface.header}) {
        services.registry.offer(*identity);
    }
}

Spi::~Spi() {
    node = nullptr;
}

const BryMgmtSpiPortalAccessor* Spi::accessor() {
    return &portalAccessor;
}

void Spi::scriptRan(const TulCommonScriptRun_1* run) {
    guarded("scriptRan", [&] { node->runs.add(*run); });
}

}  // namespace TulNode
