#include "framework.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "TulCommon_1.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiEventRouter_1.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

struct Seen frameworkSeen;
struct Held frameworkHeld;
int frameworkLogLevel = 15;

/* Log and trace: everything but information and traces is a complaint. */

static int32_t getLevel(void) {
    return frameworkLogLevel;
}

static void writeLog(const char* function, int32_t severity, int32_t category, const char* format, const char* text) {
    (void)category;
    (void)format;
    if (severity <= 4) {
        const size_t length = strlen(frameworkSeen.complaints);
        snprintf(frameworkSeen.complaints + length, LONGEST_COMPLAINTS - length, "%s: %s; ", function, text);
    }
}

static void trace(const char* sourceFile, const char* function, int32_t line, int32_t kind, const char* format,
                  const char* text) {
    (void)sourceFile, (void)function, (void)line, (void)kind, (void)format, (void)text;
}

static void traceV2(const char* subsystem, int32_t level, const char* sourceFile, const char* function, int32_t line,
                    const char* format, const char* text) {
    (void)subsystem, (void)level, (void)sourceFile, (void)function, (void)line, (void)format, (void)text;
}

/* The model: what every node has, and the two MOs that a component may make. */

struct Mo {
    const char* classPath;
    const char* dn;
    bool exists;
    bool isMade; /* by the component */
};

static struct Mo model[] = {
    {"ManagedElement,SystemFunctions,SysM", "ManagedElement=1,SystemFunctions=1,SysM=1", true, false},
    {"ManagedElement,SystemFunctions,SecM,Ssh", "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1", true, false},
    {"ManagedElement,Transport", "ManagedElement=1,Transport=1", true, false},
    {"ManagedElement,SystemFunctions,SysM,CliSsh", "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1", false, true},
    {"ManagedElement,SystemFunctions,SysM,NetconfSsh", "ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1",
     false, true},
};
enum { MO_COUNT = sizeof model / sizeof model[0] };

static BryReturnT findInstances(TulOamSpiTransactionHandleT transaction, const char* classPath,
                                TulOamSpiMoVisitor_3 visitor, void* context) {
    (void)transaction;
    for (int i = 0; i < MO_COUNT; ++i) {
        if (model[i].exists && strcmp(model[i].classPath, classPath) == 0 && !visitor(context, model[i].dn)) {
            break;
        }
    }
    return BRY_OK;
}

static void release(TulMoAttributeValueContainer_3* container) {
    --frameworkHeld.containers;
    free(container->values);
    free(container);
}

static BryReturnT give(TulMoAttributeValueResult_3* result, TulOamSpiMoAttributeType_3 type,
                       TulMoAttributeValue_3 value) {
    result->release = release;
    result->container = malloc(sizeof *result->container);
    result->container->type = type;
    result->container->nrOfValues = 1;
    result->container->values = malloc(sizeof value);
    result->container->values[0] = value;
    ++frameworkHeld.containers;
    return BRY_OK;
}

static BryReturnT getAttribute(TulOamSpiTransactionHandleT transaction, const char* dn, const char* attributeName,
                               TulMoAttributeValueResult_3* result) {
    (void)transaction;
    (void)dn;
    if (strcmp(attributeName, "dscp") == 0) {
        return give(result, TUL_MO_TYPE_UINT8_3, (TulMoAttributeValue_3){.asUint64 = 46});
    }
    if (strcmp(attributeName, "selectedCiphers") == 0) {
        return give(result, TUL_MO_TYPE_STRING_3, (TulMoAttributeValue_3){.asString = "aes256-ctr"});
    }
    return BRY_OK; /* it has no value */
}

static BryReturnT setAttributes(TulOamSpiTransactionHandleT transaction, const char* dn,
                                TulMoNamedAttribute_3** attributes) {
    (void)transaction, (void)dn, (void)attributes;
    return BRY_FAILED;
}

/* What is made in the open transaction comes into being with its commit. */
static struct Mo* pending;

static BryReturnT newTransaction(TulLockPolicyT lockPolicy, unsigned int timeout,
                                 TulOamSpiTransactionHandleT* transaction) {
    (void)lockPolicy;
    (void)timeout;
    *transaction = 7;
    ++frameworkHeld.transactions;
    return BRY_OK;
}

static BryReturnT endTransaction(TulOamSpiTransactionHandleT transaction, bool inForce) {
    if (transaction != 7 || frameworkHeld.transactions == 0) {
        return BRY_INVALID_HANDLE;
    }
    if (pending != NULL) {
        pending->exists = inForce;
    }
    pending = NULL;
    --frameworkHeld.transactions;
    return BRY_OK;
}

static BryReturnT commit(TulOamSpiTransactionHandleT transaction) {
    return endTransaction(transaction, true);
}
static BryReturnT abortTransaction(TulOamSpiTransactionHandleT transaction) {
    return endTransaction(transaction, false);
}

static BryReturnT createMo(TulOamSpiTransactionHandleT transaction, const char* parentDn, const char* className,
                           const char* keyAttributeName, const char* keyAttributeValue,
                           TulMoNamedAttribute_3** attributes) {
    char dn[256];
    (void)keyAttributeName;
    snprintf(dn, sizeof dn, "%s,%s=%s", parentDn, className, keyAttributeValue);
    for (int i = 0; i < MO_COUNT; ++i) {
        if (strcmp(model[i].dn, dn) == 0) {
            pending = &model[i];
            return transaction == 7 && attributes[0] != NULL ? BRY_OK : BRY_INVALID_ARGUMENT;
        }
    }
    return BRY_UNKNOWN_CLASS;
}

static BryReturnT deleteMo(TulOamSpiTransactionHandleT transaction, const char* dn) {
    (void)transaction, (void)dn;
    return BRY_FAILED;
}

/* Event router */

struct Consumer {
    BryOamSpiEventConsumerRecord* record; /* null: a free place */
    const char* eventType;
    BryNameValuePairT** filter; /* null: not subscribed */
};

static struct Consumer consumers[MOST_CONSUMERS];

/* A handle is the number of the place, from 1. */
static struct Consumer* consumerOf(BryOamSpiEventConsumerHandleT handle) {
    const bool isAlive = handle >= 1 && handle <= MOST_CONSUMERS && consumers[handle - 1].record != NULL;
    return isAlive ? &consumers[handle - 1] : NULL;
}

static BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* record, BryOamSpiEventConsumerHandleT* handle) {
    for (unsigned int place = 0; place < MOST_CONSUMERS; ++place) {
        if (consumers[place].record == NULL) {
            consumers[place] = (struct Consumer){record, NULL, NULL};
            *handle = place + 1;
            ++frameworkHeld.consumers;
            return BRY_OK;
        }
    }
    return BRY_NO_RESOURCES;
}

static BryReturnT addSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                  BryNameValuePairT** filter) {
    struct Consumer* consumer = consumerOf(handle);
    if (consumer == NULL || consumer->filter != NULL) {
        return BRY_INVALID_HANDLE;
    }
    consumer->eventType = eventType;
    consumer->filter = filter;
    ++frameworkHeld.subscriptions;
    return BRY_OK;
}

static BryReturnT removeSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                     BryNameValuePairT** filter) {
    struct Consumer* consumer = consumerOf(handle);
    if (consumer == NULL || consumer->filter != filter || strcmp(consumer->eventType, eventType) != 0) {
        return BRY_NOT_FOUND;
    }
    consumer->filter = NULL;
    --frameworkHeld.subscriptions;
    return BRY_OK;
}

static BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT handle, BryOamSpiEventConsumerRecord* record) {
    struct Consumer* consumer = consumerOf(handle);
    if (consumer == NULL || consumer->record != record) {
        return BRY_INVALID_HANDLE;
    }
    consumer->record = NULL;
    --frameworkHeld.consumers;
    return BRY_OK;
}

bool frameworkDeliver(const char* pattern, BryOamSpiCmEvent_Notification_1T* notification) {
    for (unsigned int place = 0; place < MOST_CONSUMERS; ++place) {
        struct Consumer* consumer = &consumers[place];
        if (consumer->record != NULL && consumer->filter != NULL &&
            strcmp(consumer->filter[0]->value, pattern) == 0) {
            return consumer->record->notify(place + 1, consumer->eventType, consumer->filter, notification) == BRY_OK;
        }
    }
    return false;
}

bool frameworkNotify(const char* pattern, BryOamSpiCmEvent_Event_1* event) {
    BryOamSpiCmEvent_Event_1* events[] = {event, NULL};
    BryOamSpiCmEvent_Notification_1T notification = {{0}, events};
    return frameworkDeliver(pattern, &notification);
}

/* Portals */

static TulMwSpiLog_1 logTable = {{"HostLog", TUL_MW_SPI_LOG_NAME, "1"}, getLevel, writeLog};
static BryMwSpiTrace traceTable = {{"HostTrace", BRY_MW_SPI_TRACE_NAME, NULL}, trace, traceV2};
static TulOamSpiManagedObject_3 managedObjectTable = {
    {TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, "3"},
    getAttribute,
    findInstances,
    setAttributes,
    NULL,
    NULL,
    createMo,
    deleteMo};
static TulOamSpiTransactionMaster_1 transactionTable = {
    {TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1"},
    newTransaction,
    commit,
    abortTransaction};
static TulOamSpiEventRouter_1 routerTable = {{TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1"},
                                             NULL,
                                             registerConsumer,
                                             addSubscription,
                                             removeSubscription,
                                             unregisterConsumer};

static bool fits(const char* wanted, const char* offered) {
    return wanted == NULL || (offered != NULL && strcmp(wanted, offered) == 0);
}

static BryReturnT getInterface(const char* componentName, const char* interfaceName, const char* interfaceVersion,
                               void** interfaceRecord) {
    BryMgmtSpiInterface_1* const tables[] = {&logTable.header, &traceTable.header, &managedObjectTable.header,
                                             &transactionTable.header, &routerTable.header};
    for (size_t i = 0; i < sizeof tables / sizeof tables[0]; ++i) {
        if (fits(componentName, tables[i]->componentName) && fits(interfaceName, tables[i]->interfaceName) &&
            fits(interfaceVersion, tables[i]->interfaceVersion)) {
            *interfaceRecord = tables[i];
            return BRY_OK;
        }
    }
    return BRY_NOT_FOUND;
}

static BryReturnT registerComponent(BryMgmtSpiComponent_2* component) {
    if (frameworkHeld.component != NULL) {
        return BRY_ALREADY_EXISTS;
    }
    frameworkHeld.component = component;
    return BRY_OK;
}

static BryReturnT unregisterComponent(BryMgmtSpiComponent_2* component) {
    if (frameworkHeld.component != component) {
        return BRY_NOT_FOUND;
    }
    frameworkHeld.component = NULL;
    return BRY_OK;
}

static BryMgmtSpiPortal_1 portal1 = {{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
static BryMgmtSpiPortal_3 portal3 = {
    {"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"}, NULL, NULL, registerComponent, unregisterComponent};

static void* getPortal(const char* interfaceVersion) {
    if (strcmp(interfaceVersion, "1") == 0) {
        return &portal1;
    }
    return strcmp(interfaceVersion, "3") == 0 ? &portal3 : NULL;
}

static const BryMgmtSpiPortalAccessor accessor = {getPortal};

const BryMgmtSpiPortalAccessor* frameworkAccessor(void) {
    return &accessor;
}

/* Adapter runs */

static void append(char* run, const char* text) {
    strncat(run, text, LONGEST_RUN - 1 - strlen(run));
}

static void scriptRan(const TulCommonScriptRun_1* run) {
    if (frameworkSeen.runCount == MOST_RUNS) {
        return;
    }
    char* const kept = frameworkSeen.runs[frameworkSeen.runCount++];
    append(kept, run->scriptName);
    for (const char* const* word = run->arguments; *word != NULL; ++word) {
        append(kept, " ");
        append(kept, *word);
    }
    if (run->failure != NULL) {
        append(kept, " FAILED: ");
        append(kept, run->failure);
    }
}

BryReturnT frameworkAttach(const char* scriptFolder) {
    const TulCommonSettings_1 settings = {&accessor, scriptFolder, scriptRan};
    return tulCommonAttach(&settings);
}

void frameworkForget(void) {
    memset(&frameworkSeen, 0, sizeof frameworkSeen);
    for (int i = 0; i < MO_COUNT; ++i) {
        model[i].exists = !model[i].isMade;
    }
}
