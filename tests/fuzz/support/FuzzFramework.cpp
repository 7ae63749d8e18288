#include "FuzzFramework.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <stdexcept>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "TulCommon_1.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulFuzz {

namespace {

FuzzFramework* current = nullptr;

/** Reads a text to its end: a sanitizer sees one that is not terminated or not there any more. */
volatile std::size_t touched = 0;
void touch(const char* text) {
    touched = std::strlen(text);
}

std::int32_t getLevel() {
    return current->logLevel;
}

void log(const char* function, std::int32_t, std::int32_t, const char* format, const char* text) {
    touch(function);
    touch(format);
    touch(text);
}

void trace(const char* sourceFile, const char* function, std::int32_t, std::int32_t, const char* format,
           const char* text) {
    touch(sourceFile);
    log(function, 0, 0, format, text);
}

void traceV2(const char* subsystem, std::int32_t, const char* sourceFile, const char* function, std::int32_t line,
             const char* format, const char* text) {
    touch(subsystem);
    trace(sourceFile, function, line, 0, format, text);
}

BryReturnT getAttribute(TulOamSpiTransactionHandleT, const char* dn, const char* attributeName,
                        TulMoAttributeValueResult_3* result) {
    return current->onGetAttribute ? current->onGetAttribute(dn, attributeName, *result) : BRY_OK;
}

BryReturnT findInstances(TulOamSpiTransactionHandleT, const char* classPath, TulOamSpiMoVisitor_3 visitor,
                         void* context) {
    return current->onFindInstances ? current->onFindInstances(classPath, visitor, context) : BRY_OK;
}

BryReturnT createMo(TulOamSpiTransactionHandleT, const char*, const char*, const char*, const char*,
                    TulMoNamedAttribute_3**) {
    return BRY_OK;
}

BryReturnT deleteMo(TulOamSpiTransactionHandleT, const char*) {
    return BRY_OK;
}

BryReturnT newTransaction(TulLockPolicyT, unsigned int, TulOamSpiTransactionHandleT* transaction) {
    *transaction = 1;
    return BRY_OK;
}

BryReturnT endTransaction(TulOamSpiTransactionHandleT) {
    return BRY_OK;
}

BryReturnT registerComponent(BryMgmtSpiComponent_2*) {
    return BRY_OK;
}

}  // namespace

/** The router's table: it looks into the framework. */
struct LightTables {
    static BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* record, BryOamSpiEventConsumerHandleT* handle) {
        current->_consumers.push_back({record, "", nullptr});
        *handle = current->_consumers.size();
        return BRY_OK;
    }

    static BryReturnT addSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                      BryNameValuePairT** filter) {
        current->_consumers.at(handle - 1).eventType = eventType;
        current->_consumers.at(handle - 1).filter = filter;
        return BRY_OK;
    }

    static BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT, BryOamSpiEventConsumerRecord* record) {
        std::erase_if(current->_consumers,
                      [record](const FuzzFramework::Consumer& consumer) { return consumer.record == record; });
        return BRY_OK;
    }
};

namespace {

BryReturnT keepSubscription(BryOamSpiEventConsumerHandleT, const char*, BryNameValuePairT**) {
    return BRY_OK;
}

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
    {TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1"},
    newTransaction,
    endTransaction,
    endTransaction};
TulOamSpiEventRouter_1 eventRouterTable{{TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1"},
                                        nullptr,
                                        LightTables::registerConsumer,
                                        LightTables::addSubscription,
                                        keepSubscription,
                                        LightTables::unregisterConsumer};

BryReturnT getInterface(const char*, const char* interfaceName, const char*, void** interfaceRecord) {
    static const std::map<std::string, void*> tables{{TUL_MW_SPI_LOG_NAME, &logTable},
                                                     {BRY_MW_SPI_TRACE_NAME, &traceTable},
                                                     {TUL_OAM_SPI_MANAGED_OBJECT_NAME, &managedObjectTable},
                                                     {TUL_OAM_SPI_TRANSACTION_MASTER_NAME, &transactionMasterTable},
                                                     {TUL_OAM_SPI_EVENT_ROUTER_NAME, &eventRouterTable}};
    *interfaceRecord = tables.at(interfaceName);
    return BRY_OK;
}

BryMgmtSpiPortal_1 portal1{{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
BryMgmtSpiPortal_3 portal3{
    {"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"}, nullptr, nullptr, registerComponent, registerComponent};

void* getPortal(const char* interfaceVersion) {
    return std::string(interfaceVersion) == "1" ? static_cast<void*>(&portal1) : &portal3;
}

const BryMgmtSpiPortalAccessor portalAccessor{getPortal};

}  // namespace

FuzzFramework::FuzzFramework() {
    current = this;
    const TulCommonSettings_1 settings{&portalAccessor, "/", nullptr};
    if (tulCommonAttach(&settings) != BRY_OK) {
        throw std::logic_error("one framework at a time");
    }
}

FuzzFramework::~FuzzFramework() {
    tulCommonDetach();
    current = nullptr;
}

const BryMgmtSpiPortalAccessor* FuzzFramework::accessor() const {
    return &portalAccessor;
}

BryReturnT FuzzFramework::notify(std::size_t index, void* notification) {
    const Consumer& consumer = _consumers.at(index);
    return consumer.record->notify(index + 1, consumer.eventType.c_str(), consumer.filter, notification);
}

}  // namespace TulFuzz
