#include "LightFramework.h"

#include <cstring>
#include <mutex>
#include <stdexcept>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "TulCommon_1.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiManagedObject_3.h"

namespace TulTest {

namespace {

LightFramework* current = nullptr;

// Log and trace

std::int32_t getLevel() {
    return 6;
}

void log(const char*, std::int32_t severity, std::int32_t, const char*, const char* text) {
    if (severity <= 4) {
        current->complaints.fetch_add(1, std::memory_order_relaxed);
    }
    if (current->onLog) {
        current->onLog(text);
    }
}

void trace(const char*, const char*, std::int32_t, std::int32_t, const char*, const char*) {}
void traceV2(const char*, std::int32_t, const char*, const char*, std::int32_t, const char*, const char*) {}

// A node with one MO of every class, so that start adopts ours and finds them unlocked, each time.

TulMoAttributeValue_3 unlockedValue{.asEnum = 1};
TulMoAttributeValue_3 dscpValue{.asUint64 = 46};
TulMoAttributeValue_3 cipherValues[]{{.asString = "aes256-ctr"}, {.asString = "aes128-ctr"}};
TulMoAttributeValueContainer_3 unlocked{TUL_MO_TYPE_ENUMERATION_3, 1, &unlockedValue};
TulMoAttributeValueContainer_3 dscp{TUL_MO_TYPE_UINT8_3, 1, &dscpValue};
TulMoAttributeValueContainer_3 ciphers{TUL_MO_TYPE_STRING_3, 2, cipherValues};

TulMoAttributeValueContainer_3* containerOf(const std::string& attributeName) {
    if (attributeName == "administrativeState") {
        return &unlocked;
    }
    if (attributeName == "dscp") {
        return &dscp;
    }
    return attributeName == "selectedCiphers" ? &ciphers : nullptr;
}

BryReturnT getAttribute(TulOamSpiTransactionHandleT, const char*, const char* name,
                        TulMoAttributeValueResult_3* result) {
    *result = {nullptr, containerOf(name)};
    return BRY_OK;
}

BryReturnT findInstances(TulOamSpiTransactionHandleT, const char* classPath, TulOamSpiMoVisitor_3 visitor,
                         void* context) {
    std::string dn;
    for (const char* letter = classPath; *letter != '\0'; ++letter) {
        dn += *letter == ',' ? std::string("=1,") : std::string(1, *letter);
    }
    visitor(context, (dn + "=1").c_str());
    return BRY_OK;
}

// Event router

BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* record, BryOamSpiEventConsumerHandleT* handle) {
    return current->registerConsumer(record, handle);
}
BryReturnT addSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter) {
    return current->subscribe(handle, eventType, filter);
}
BryReturnT removeSubscription(BryOamSpiEventConsumerHandleT handle, const char*, BryNameValuePairT**) {
    return current->unsubscribe(handle);
}
BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT handle, BryOamSpiEventConsumerRecord*) {
    return current->unregisterConsumer(handle);
}

// Portals

TulMwSpiLog_1 logTable{{"TulMwLogService", TUL_MW_SPI_LOG_NAME, "1"}, getLevel, log};
BryMwSpiTrace traceTable{{"TulMwTraceService", BRY_MW_SPI_TRACE_NAME, nullptr}, trace, traceV2};
// What nobody calls, because the MOs are there, is not there either.
TulOamSpiManagedObject_3 managedObjectTable{{TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, "3"},
                                            getAttribute,
                                            findInstances,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr};
TulOamSpiTransactionMaster_1 transactionTable{
    {TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1"}, nullptr, nullptr, nullptr};
TulOamSpiEventRouter_1 routerTable{{TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1"},
                                   nullptr,
                                   registerConsumer,
                                   addSubscription,
                                   removeSubscription,
                                   unregisterConsumer};

BryReturnT getInterface(const char*, const char* name, const char*, void** interfaceRecord) {
    for (BryMgmtSpiInterface_1* table : {&logTable.header, &traceTable.header, &managedObjectTable.header,
                                         &transactionTable.header, &routerTable.header}) {
        if (std::strcmp(table->interfaceName, name) == 0) {
            *interfaceRecord = table;
            return BRY_OK;
        }
    }
    return BRY_NOT_FOUND;
}

BryReturnT registerComponent(BryMgmtSpiComponent_2* component) {
    current->component = component;
    return BRY_OK;
}
BryReturnT unregisterComponent(BryMgmtSpiComponent_2*) {
    current->component = nullptr;
    return BRY_OK;
}

BryMgmtSpiPortal_1 portal1{{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
BryMgmtSpiPortal_3 portal3{
    {"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"}, nullptr, nullptr, registerComponent, unregisterComponent};

void* getPortal(const char* version) {
    return *version == '1' ? static_cast<void*>(&portal1) : &portal3;
}

constexpr BryMgmtSpiPortalAccessor portalAccessor{getPortal};

}  // namespace

LightFramework::LightFramework() {
    current = this;
    const TulCommonSettings_1 settings{&portalAccessor, nullptr, nullptr};
    if (tulCommonAttach(&settings) != BRY_OK) {
        throw std::logic_error("libtul_common is attached already");
    }
}

LightFramework::~LightFramework() {
    tulCommonDetach();
    current = nullptr;
}

const BryMgmtSpiPortalAccessor* LightFramework::accessor() {
    return &portalAccessor;
}

bool LightFramework::deliver(std::size_t consumer, BryOamSpiCmEvent_Notification_1T* notification) {
    Slot& slot = _slots.at(consumer);
    if (slot.isWanted.load(std::memory_order_relaxed)) {
        return false;
    }
    const std::shared_lock lock(slot.mutex);
    if (slot.filter == nullptr || slot.held) {
        return false;
    }
    return slot.record->notify(consumer + 1, slot.eventType.c_str(), slot.filter, notification) == BRY_OK;
}

void LightFramework::hold(bool held) {
    for (const std::size_t number : {SERVICE_CATEGORY, SSH}) {
        change(number, [held](Slot& slot) { slot.held = held; });
    }
}

BryReturnT LightFramework::change(std::size_t number, const std::function<void(Slot&)>& what) {
    if (number >= _slots.size()) {
        return BRY_INVALID_HANDLE;
    }
    Slot& slot = _slots.at(number);
    slot.isWanted.store(true, std::memory_order_relaxed);
    const std::unique_lock lock(slot.mutex);
    slot.isWanted.store(false, std::memory_order_relaxed);
    what(slot);
    return BRY_OK;
}

BryReturnT LightFramework::registerConsumer(BryOamSpiEventConsumerRecord* record,
                                            BryOamSpiEventConsumerHandleT* handle) {
    // Only the thread that comes here changes a record, so that it may look for a free place without the locks.
    for (std::size_t number = 0; number < _slots.size(); ++number) {
        if (_slots.at(number).record == nullptr) {
            *handle = number + 1;
            return change(number, [record](Slot& slot) { slot.record = record; });
        }
    }
    return BRY_NO_RESOURCES;
}

BryReturnT LightFramework::subscribe(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                     BryNameValuePairT** filter) {
    const BryReturnT result = change(handle - 1, [=](Slot& slot) {
        slot.eventType = eventType;
        slot.filter = filter;
    });
    if (onSubscribed) {
        onSubscribed(handle - 1);
    }
    return result;
}

BryReturnT LightFramework::unsubscribe(BryOamSpiEventConsumerHandleT handle) {
    return change(handle - 1, [](Slot& slot) { slot.filter = nullptr; });
}

BryReturnT LightFramework::unregisterConsumer(BryOamSpiEventConsumerHandleT handle) {
    return change(handle - 1, [](Slot& slot) {
        slot.record = nullptr;
        slot.filter = nullptr;
    });
}

}  // namespace TulTest
