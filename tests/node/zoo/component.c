/*
 * The animals of the zoo: one component, and what it does wrong is chosen by ZOO_... when it is compiled. Without
 * any it behaves. It writes what it hears into the log, so that a test can follow it.
 */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryOamSpiCmEvent_Notification_1.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiEventRouter_1.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

#ifndef ZOO_VERSION
#define ZOO_VERSION "2"
#endif
#ifndef ZOO_INIT_RESULT
#define ZOO_INIT_RESULT BRY_OK
#endif
#ifndef ZOO_START_RESULT
#define ZOO_START_RESULT BRY_OK
#endif
#ifndef ZOO_STOP_RESULT
#define ZOO_STOP_RESULT BRY_OK
#endif

#define EXPORT __attribute__((visibility("default")))

EXPORT BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration);
EXPORT void bryLCMterminate(void);

static BryMgmtSpiPortal_1* portal1;
static BryMgmtSpiPortal_3* portal3;
static TulMwSpiLog_1* logger;
static TulOamSpiEventRouter_1* router;

static void say(const char* function, const char* text) {
    logger->log(function, 6, 1, "%s", text);
}

static BryReturnT notify(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter,
                         void* value) {
    const BryOamSpiCmEvent_Notification_1T* notification = value;
    (void)handle;
    (void)eventType;
    (void)filter;
    say("notify", notification->events[0]->dn);
#ifdef ZOO_SLOW
    for (const char* gate = getenv("ZOO_GATE"); gate != NULL && access(gate, F_OK) != 0;) {
        usleep(1000);
    }
    say("notify", "the slow callback ends");
#endif
    return BRY_OK;
}

static BryOamSpiEventConsumerRecord consumer = {notify};
static BryOamSpiEventConsumerHandleT consumerHandle;
static BryNameValuePair pattern = {BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1, "^ManagedElement=.*$"};
static BryNameValuePairT* filter[] = {&pattern, NULL};

static BryMgmtSpiInterface_1 logId = {NULL, TUL_MW_SPI_LOG_NAME, "1"};
static BryMgmtSpiInterface_1 routerId = {TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1"};
static BryMgmtSpiInterface_1 unknownId = {NULL, "TulMissing", "7"};
static BryMgmtSpiInterface_1 ownId = {"Zoo", "ZooInterface", "1"};

static BryMgmtSpiInterface_1* nothing[] = {NULL};
#ifdef ZOO_OFFERS
static BryMgmtSpiInterface_1* offered[] = {&ownId, NULL};
#endif
#if defined(ZOO_ENDLESS_ARRAY)
static BryMgmtSpiInterface_1* dependencies[1000];
#elif defined(ZOO_MISSING_DEPENDENCY)
static BryMgmtSpiInterface_1* dependencies[] = {&logId, &unknownId, NULL};
#elif defined(ZOO_NEEDS_OFFERED)
static BryMgmtSpiInterface_1* dependencies[] = {&ownId, NULL};
#else
static BryMgmtSpiInterface_1* dependencies[] = {&logId, &routerId, NULL};
#endif

static BryReturnT start(BryStateChangeReason reason);
static BryReturnT stop(BryStateChangeReason reason);

#ifndef ZOO_NAME
#define ZOO_NAME "Zoo"
#endif

static BryMgmtSpiComponent_2 record = {ZOO_NAME,     BRY_MGMT_SPI_COMPONENT_NAME,
                                       ZOO_VERSION,
#if defined(ZOO_NULL_ARRAY)
                                       NULL,
#elif defined(ZOO_OFFERS)
                                       offered,
#else
                                       nothing,
#endif
                                       dependencies,
#ifdef ZOO_NULL_START
                                       NULL,
#else
                                       start,
#endif
                                       stop,         nothing,
                                       false};

static BryReturnT start(BryStateChangeReason reason) {
    (void)reason;
    say("start", "starts");
    router->registerConsumer(&consumer, &consumerHandle);
    router->addSubscription(consumerHandle, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1, filter);
#ifdef ZOO_REGISTERS_IN_START
    static BryMgmtSpiComponent_2 second;
    second = record;
    second.componentName = "Second";
    portal3->registerComponent(&second);
#endif
#if defined(ZOO_OPEN_TRANSACTION) || defined(ZOO_DEAD_TRANSACTION) || defined(ZOO_CHANGES_IN_START)
    TulOamSpiTransactionMaster_1* transactions = NULL;
    TulOamSpiTransactionHandleT transaction = 0;
    portal1->getInterface(NULL, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1", (void**)&transactions);
    transactions->newTransaction(TUL_LOCK_POLICY_SHARED, 3600, &transaction);
#endif
#ifdef ZOO_DEAD_TRANSACTION
    transactions->abort(transaction);
    transactions->commit(transaction);
#endif
#if defined(ZOO_KEEPS_VALUE) || defined(ZOO_RELEASES_TWICE) || defined(ZOO_CHANGES_IN_START)
    TulOamSpiManagedObject_3* mos = NULL;
    portal1->getInterface(NULL, TUL_OAM_SPI_MANAGED_OBJECT_NAME, "3", (void**)&mos);
#endif
#if defined(ZOO_KEEPS_VALUE) || defined(ZOO_RELEASES_TWICE)
    TulMoAttributeValueResult_3 result;
    mos->getAttribute(0, "ManagedElement=1", "managedElementId", &result);
#endif
#ifdef ZOO_RELEASES_TWICE
    result.release(result.container);
    result.release(result.container);
#endif
#ifdef ZOO_CHANGES_IN_START
    TulMoNamedAttribute_3* none[] = {NULL};
    mos->createMo(transaction, "ManagedElement=1,Transport=1", "DiffServCategory", "diffServCategoryId", "Zoo", none);
    transactions->commit(transaction);
    usleep(50000); /* long enough for a hasty router */
    say("start", "returns");
#endif
    return ZOO_START_RESULT;
}

static BryReturnT stop(BryStateChangeReason reason) {
    (void)reason;
    say("stop", "stops");
#ifndef ZOO_LEAKS_CONSUMER
    router->removeSubscription(consumerHandle, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1, filter);
    router->unregisterConsumer(consumerHandle, &consumer);
#endif
    return ZOO_STOP_RESULT;
}

BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration) {
    portal1 = accessor->getPortal("1");
    portal3 = accessor->getPortal("3");
    portal1->getInterface(NULL, TUL_MW_SPI_LOG_NAME, "1", (void**)&logger);
    portal1->getInterface(NULL, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1", (void**)&router);
    say("init", configuration == NULL ? "no configuration" : configuration);
#ifdef ZOO_ENDLESS_ARRAY
    for (int i = 0; i < 1000; ++i) {
        dependencies[i] = &logId;
    }
#endif
    (void)logId;
    (void)start;
    (void)unknownId;
    (void)ownId;
    (void)routerId;
#ifndef ZOO_REGISTERS_NOTHING
    portal3->registerComponent(&record);
#endif
#ifdef ZOO_REGISTERS_TWICE
    portal3->registerComponent(&record);
#endif
    return ZOO_INIT_RESULT;
}

#ifndef ZOO_NO_TERMINATE
void bryLCMterminate(void) {
    say("terminate", "terminates");
#ifndef ZOO_STAYS_REGISTERED
    portal3->unregisterComponent(&record);
#endif
}
#endif
