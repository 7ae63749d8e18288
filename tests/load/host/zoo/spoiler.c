/*
 * Puts itself before the real component and passes every call on to it, so that all is as it should be but one
 * thing, which is chosen by SPOIL_... when it is compiled.
 */

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryOamSpiCmEvent_Notification_1.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiEventRouter_1.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

#define EXPORT __attribute__((visibility("default")))

EXPORT BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration);
EXPORT void bryLCMterminate(void);

static void* real;

static void findSymbol(const char* name, void* function) {
    void* const symbol = dlsym(real, name);
    memcpy(function, &symbol, sizeof symbol);
}

/* Not every animal needs each of these. */
__attribute__((unused)) static void* interfaceOf(const BryMgmtSpiPortalAccessor* accessor, const char* name) {
    const BryMgmtSpiPortal_1* portal = accessor->getPortal("1");
    void* found = NULL;
    portal->getInterface(NULL, name, NULL, &found);
    return found;
}

__attribute__((unused)) static void* sleepForEver(void* unused) {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t never = PTHREAD_COND_INITIALIZER;
    pthread_mutex_lock(&mutex);
    for (;;) {
        pthread_cond_wait(&never, &mutex);
    }
    return unused;
}

static void spoil(const BryMgmtSpiPortalAccessor* accessor) {
    (void)accessor;
#ifdef SPOIL_DESCRIPTOR
    if (open("/dev/null", O_RDONLY | O_CLOEXEC) < 0) {
        abort();
    }
#endif
#ifdef SPOIL_HEAP
    char* volatile lost = malloc(65536);
    memset(lost, 1, 65536);
    lost = NULL;
#endif
#ifdef SPOIL_THREAD
    pthread_t thread;
    pthread_create(&thread, NULL, sleepForEver, NULL);
    pthread_detach(thread);
#endif
#ifdef SPOIL_LOG
    const TulMwSpiLog_1* log = interfaceOf(accessor, TUL_MW_SPI_LOG_NAME);
    log->log("spoil", 4, 1, "%s", "something is odd");
#endif
#if defined(SPOIL_CONSUMER) || defined(SPOIL_SUBSCRIPTION)
    static BryOamSpiEventConsumerRecord consumer;
    static BryNameValuePair pattern = {BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1, "^Zoo=.*$"};
    static BryNameValuePairT* filter[] = {&pattern, NULL};
    const TulOamSpiEventRouter_1* router = interfaceOf(accessor, TUL_OAM_SPI_EVENT_ROUTER_NAME);
    BryOamSpiEventConsumerHandleT handle = 0;
    memcpy(&consumer, &real, sizeof real); /* nobody calls it */
    router->registerConsumer(&consumer, &handle);
#ifdef SPOIL_SUBSCRIPTION
    router->addSubscription(handle, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1, filter);
#endif
    (void)filter;
#endif
#ifdef SPOIL_CONTAINER
    const TulOamSpiManagedObject_3* mos = interfaceOf(accessor, TUL_OAM_SPI_MANAGED_OBJECT_NAME);
    static TulMoAttributeValueResult_3 kept;
    mos->getAttribute(0, "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1", "selectedCiphers", &kept);
#endif
#ifdef SPOIL_TRANSACTION
    const TulOamSpiTransactionMaster_1* transactions = interfaceOf(accessor, TUL_OAM_SPI_TRANSACTION_MASTER_NAME);
    TulOamSpiTransactionHandleT transaction = 0;
    transactions->newTransaction(TUL_LOCK_POLICY_SHARED, 60, &transaction);
#endif
}

BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration) {
    BryLcmInitT init = NULL;
    real = dlopen(REAL_COMPONENT, RTLD_NOW | RTLD_LOCAL);
    findSymbol(BRY_LCM_INIT_SYMBOL, &init);
    spoil(accessor);
#ifdef SPOIL_RUNS
    configuration =
        "<TulConfiguration><TulSshdManager><sshdManagement>true</sshdManagement><cliPort>2023</cliPort>"
        "<netconfPort>2830</netconfPort><renegotiationTime>3600</renegotiationTime></TulSshdManager></"
        "TulConfiguration>";
#endif
    return init(accessor, configuration);
}

void bryLCMterminate(void) {
    BryLcmTerminateT terminate = NULL;
    findSymbol(BRY_LCM_TERMINATE_SYMBOL, &terminate);
#ifndef SPOIL_RECORD
    terminate();
#endif
#ifndef SPOIL_STATICS
    dlclose(real);
#endif
}
