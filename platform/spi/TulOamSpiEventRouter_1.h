#ifndef TUL_OAM_SPI_EVENT_ROUTER_1_H
#define TUL_OAM_SPI_EVENT_ROUTER_1_H

/*
 * The event router: who wants to hear of what.
 *
 * A consumer registers a record with one callback and then subscribes to event types, each with a filter of
 * name/value pairs. What a filter may hold depends on the event type; see the header of the event.
 *
 * Threads: all operations may be called from any thread, also from inside a callback. Callbacks come on the
 * router's own threads. For one consumer they come one after the other, in the order of the commits; several
 * consumers may be called at the same time.
 */

#include "BryMgmtSpiInterface_1.h"
#include "BryReturn.h"

#define TUL_OAM_SPI_EVENT_SERVICE "TulOamSpiEventService"
#define TUL_OAM_SPI_EVENT_ROUTER_NAME "TulOamSpiEventRouter"
#define TUL_OAM_SPI_EVENT_ROUTER_VERSION_1 "1"

typedef struct BryNameValuePair {
    const char* name;
    const char* value;
} BryNameValuePair;
typedef BryNameValuePair BryNameValuePairT;

BRY_LAYOUT_OFFSET(BryNameValuePair, name, 0, 0);
BRY_LAYOUT_OFFSET(BryNameValuePair, value, 4, 8);
BRY_LAYOUT_SIZE(BryNameValuePair, 8, 16);

/* Names a registered consumer. Never 0 for a live one; never used again after unregisterConsumer. */
typedef unsigned long BryOamSpiEventConsumerHandleT;

BRY_LAYOUT_SIZE(BryOamSpiEventConsumerHandleT, 4, 8);

/*
 * A consumer. It stays at its address, unchanged, while it is registered: the router keeps the pointer.
 *
 * notify gets the consumer's handle, the type of the event, the filter of the subscription that matched and
 * the event record of that type. All of them belong to the framework and are valid during the call only.
 * The result is 0; another one is recorded by the router and changes nothing. It must not throw.
 */
typedef struct BryOamSpiEventConsumerRecord {
    BryReturnT (*notify)(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter,
                         void* value);
} BryOamSpiEventConsumerRecord;

BRY_LAYOUT_OFFSET(BryOamSpiEventConsumerRecord, notify, 0, 0);
BRY_LAYOUT_SIZE(BryOamSpiEventConsumerRecord, 4, 8);

typedef struct TulOamSpiEventRouter_1 {
    BryMgmtSpiInterface_1 header;

    void (*reserved1)(void); /* the framework's own; the development node has null here */

    /* Fills *handle. 0, or BRY_INVALID_ARGUMENT, or BRY_ALREADY_EXISTS for a record that is registered. */
    BryReturnT (*registerConsumer)(BryOamSpiEventConsumerRecord* consumer, BryOamSpiEventConsumerHandleT* handle);

    /*
     * filter is a null-terminated array. The array and its pairs belong to the consumer and stay valid until
     * removeSubscription or unregisterConsumer. A filter without pairs matches every event of the type.
     * 0, BRY_INVALID_HANDLE, or BRY_INVALID_ARGUMENT for a filter that the event type does not know.
     */
    BryReturnT (*addSubscription)(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                  BryNameValuePairT** filter);

    /* Takes the same three arguments as addSubscription did. 0, BRY_INVALID_HANDLE or BRY_NOT_FOUND. */
    BryReturnT (*removeSubscription)(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                     BryNameValuePairT** filter);

    /*
     * Once it has returned, notify is not called again. It waits for a callback that is under way on another
     * thread; called from inside the consumer's own callback it returns at once. 0 or BRY_INVALID_HANDLE.
     */
    BryReturnT (*unregisterConsumer)(BryOamSpiEventConsumerHandleT handle, BryOamSpiEventConsumerRecord* consumer);
} TulOamSpiEventRouter_1;

BRY_LAYOUT_OFFSET(TulOamSpiEventRouter_1, header, 0, 0);
BRY_LAYOUT_OFFSET(TulOamSpiEventRouter_1, registerConsumer, 16, 32);
BRY_LAYOUT_OFFSET(TulOamSpiEventRouter_1, addSubscription, 20, 40);
BRY_LAYOUT_OFFSET(TulOamSpiEventRouter_1, removeSubscription, 24, 48);
BRY_LAYOUT_OFFSET(TulOamSpiEventRouter_1, unregisterConsumer, 28, 56);

#endif
