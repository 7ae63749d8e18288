/*
 * A framework for 32-bit machines that has none of our headers: every record that it hands to the component's
 * library, and every one that it gets from it, is an array of 32-bit words whose places were counted by hand. It
 * loads the library, starts it, sends a change to each of its four handlers, stops and unloads it, and ends with 0
 * only if the adapter was run as it should.
 *
 *     words-host LIBRARY SCRIPT-FOLDER
 */

#include <dlfcn.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef uint32_t word;
typedef int32_t code;

_Static_assert(sizeof(void*) == sizeof(word), "for 32-bit machines");

#define WORD(pointer) ((word)(uintptr_t)(pointer))
#define POINTER(word) ((void*)(uintptr_t)(word))
#define TEXT(word) ((const char*)(uintptr_t)(word))

/* libtul_common, by the layout of its words: accessor, folder of scripts, function that is told of each run. */
extern code tulCommonAttach(const word* settings);
extern void tulCommonDetach(void);

static void require(bool condition, const char* what) {
    if (!condition) {
        printf("words-host: not so: %s\n", what);
        exit(1);
    }
}

static void requireText(const char* text, const char* expected) {
    if (text == NULL || strcmp(text, expected) != 0) {
        printf("words-host: \"%s\" instead of \"%s\"\n", text == NULL ? "(null)" : text, expected);
        exit(1);
    }
}

/* --- runs of the adapter --- */

static char runs[2048];

/* scriptName, arguments (null-terminated), failure, milliseconds */
static void scriptRan(const word* run) {
    strcat(runs, TEXT(run[0]));
    for (const word* argument = POINTER(run[1]); *argument != 0; ++argument) {
        strcat(strcat(runs, " "), TEXT(*argument));
    }
    strcat(runs, run[2] == 0 ? "\n" : " FAILED\n");
}

static void expectRuns(const char* expected) {
    requireText(runs, expected);
    runs[0] = '\0';
}

/* --- the model --- */

static int released;

static void release(word* container) {
    ++released;
    container[0] = 0;
}

static code getAttribute(word transaction, const char* dn, const char* attribute, word* result) {
    /* An attribute's container: type, number of values, values of eight bytes each. */
    static word dscpValue[2] = {46, 0};
    static word ciphers[4] = {0, 0xAAAAAAAA, 0, 0xAAAAAAAA};
    static word state[2] = {1, 0xAAAAAAAA};
    static word container[3];
    require(transaction == 0, "reads are made outside of transactions");
    result[0] = WORD(release);
    if (strcmp(attribute, "dscp") == 0) {
        requireText(dn, "ManagedElement=1,Transport=1,DiffServCategory=OamCM");
        memcpy(container, (word[]){5, 1, WORD(dscpValue)}, sizeof container);
    } else if (strcmp(attribute, "selectedCiphers") == 0) {
        ciphers[0] = WORD("aes256-ctr");
        ciphers[2] = WORD("aes128-ctr");
        memcpy(container, (word[]){10, 2, WORD(ciphers)}, sizeof container);
    } else if (strcmp(attribute, "administrativeState") == 0) {
        memcpy(container, (word[]){12, 1, WORD(state)}, sizeof container);
    } else {
        result[0] = 0;
        result[1] = 0;
        return 0;
    }
    --released;
    result[1] = WORD(container);
    return 0;
}

static bool hasCliSsh;

static code findInstances(word transaction, const char* classPath, bool (*visitor)(void*, const char*),
                          void* context) {
    require(transaction == 0, "searches are made outside of transactions");
    const char* dn = NULL;
    if (strcmp(classPath, "ManagedElement,SystemFunctions,SysM") == 0) {
        dn = "ManagedElement=1,SystemFunctions=1,SysM=1";
    } else if (strcmp(classPath, "ManagedElement,SystemFunctions,SysM,NetconfSsh") == 0) {
        dn = "ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1";
    } else if (strcmp(classPath, "ManagedElement,SystemFunctions,SysM,CliSsh") == 0 && hasCliSsh) {
        dn = "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1";
    } else if (strcmp(classPath, "ManagedElement,Transport") == 0) {
        dn = "ManagedElement=1,Transport=1";
    } else if (strcmp(classPath, "ManagedElement,SystemFunctions,SecM,Ssh") == 0) {
        dn = "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1";
    }
    if (dn != NULL) {
        visitor(context, dn);
    }
    return 0;
}

static code newTransaction(code lockPolicy, word timeout, word* transaction) {
    require(lockPolicy == 1 && timeout == 3600, "a creation's transaction is shared and open for an hour");
    *transaction = 0x7A57;
    return 0;
}

static code createMo(word transaction, const char* parentDn, const char* className, const char* keyName,
                     const char* key, const word* attributes) {
    const word* const attribute = POINTER(attributes[0]);
    require(transaction == 0x7A57 && attributes[1] == 0, "one attribute, in the open transaction");
    requireText(parentDn, "ManagedElement=1,SystemFunctions=1,SysM=1");
    requireText(className, "CliSsh");
    requireText(keyName, "cliSshId");
    requireText(key, "1");
    /* name, and the container in it: type, number of values, values */
    requireText(TEXT(attribute[0]), "administrativeState");
    require(attribute[1] == 12 && attribute[2] == 1, "one enumeration");
    require(((const word*)POINTER(attribute[3]))[0] == 1, "which says unlocked");
    return 0;
}

static code commit(word transaction) {
    require(transaction == 0x7A57, "the open transaction is committed");
    hasCliSsh = true;
    return 0;
}

/* --- the event router --- */

enum { CONSUMERS = 4 };
static word* records[CONSUMERS];
static word* filters[CONSUMERS];

static code registerConsumer(word* record, word* handle) {
    for (word place = 0; place < CONSUMERS; ++place) {
        if (records[place] == NULL) {
            records[place] = record;
            *handle = 0x100 + place;
            return 0;
        }
    }
    return -16;
}

static code addSubscription(word handle, const char* eventType, word* filter) {
    const word* const pair = POINTER(filter[0]);
    requireText(eventType, "BryOamSpiCmEvent_Notification_1");
    require(filter[1] == 0, "one pattern for each consumer");
    requireText(TEXT(pair[0]), "BryOamSpiCmEvent_FilterTypeRegExp_1");
    filters[handle - 0x100] = filter;
    return 0;
}

static code removeSubscription(word handle, const char* eventType, word* filter) {
    requireText(eventType, "BryOamSpiCmEvent_Notification_1");
    require(filters[handle - 0x100] == filter, "a subscription is removed with its own filter");
    filters[handle - 0x100] = NULL;
    return 0;
}

static code unregisterConsumer(word handle, word* record) {
    require(records[handle - 0x100] == record, "a consumer is unregistered with its own record");
    records[handle - 0x100] = NULL;
    return 0;
}

/* The one event of one MO, for the consumer that asked for it by this pattern. */
static void notify(const char* pattern, const char* dn, word eventType, word* attributes) {
    word event[3] = {WORD(dn), eventType, WORD(attributes)};
    word events[2] = {WORD(event), 0};
    word notification[6] = {0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, WORD(events)};
    for (word place = 0; place < CONSUMERS; ++place) {
        const word* const pair = filters[place] == NULL ? NULL : POINTER(filters[place][0]);
        if (pair != NULL && strcmp(TEXT(pair[1]), pattern) == 0) {
            code (*const callback)(word, const char*, word*, void*) = POINTER(records[place][0]);
            require(callback(0x100 + place, "BryOamSpiCmEvent_Notification_1", filters[place], notification) == 0,
                    "a callback returns 0");
            return;
        }
    }
    require(false, pattern);
}

static void changeState(const char* pattern, const char* dn, word state) {
    word values[2] = {state, 0xAAAAAAAA};
    word attribute[4] = {WORD("administrativeState"), 12, 1, WORD(values)};
    word attributes[2] = {WORD(attribute), 0};
    notify(pattern, dn, 3, attributes);
}

/* --- log, trace, portals --- */

static char complaints[1024];

static code getLevel(void) {
    return 15;
}

static void writeLog(const char* function, code severity, code category, const char* format, const char* text) {
    (void)format;
    require(category == 1, "every record has the category 1");
    if (severity <= 4) {
        strcat(strcat(strcat(strcat(complaints, function), ": "), text), "\n");
    }
}

static int traces;

static void trace(const char* file, const char* function, code line, code kind, const char* format,
                  const char* text) {
    (void)function, (void)format, (void)text;
    require(strlen(file) > 0 && line > 0 && (kind == 0 || kind == 9 || kind == 10), "a trace is whole");
    ++traces;
}

static void traceV2(const char* subsystem, code level, const char* file, const char* function, code line,
                    const char* format, const char* text) {
    (void)file, (void)function, (void)format, (void)text;
    require(strlen(subsystem) > 0 && level > 0 && line > 0, "a newer trace is whole");
}

/* Each begins with three texts: component, interface, version. */
static word logTable[5], traceTable[5], managedObjectTable[10], transactionTable[6], routerTable[8];

static code getInterface(const char* component, const char* name, const char* version, word* found) {
    word* const tables[] = {logTable, traceTable, managedObjectTable, transactionTable, routerTable};
    (void)component, (void)version;
    for (size_t i = 0; i < sizeof tables / sizeof tables[0]; ++i) {
        if (strcmp(TEXT(tables[i][1]), name) == 0) {
            *found = WORD(tables[i]);
            return 0;
        }
    }
    return -4;
}

static word* component;

static code registerComponent(word* record) {
    component = record;
    return 0;
}

static code unregisterComponent(word* record) {
    require(component == record, "a component is unregistered with its own record");
    component = NULL;
    return 0;
}

static word portal1[4], portal3[7];

static void* getPortal(const char* version) {
    return strcmp(version, "1") == 0 ? portal1 : portal3;
}

#define FILL(table, ...) memcpy(table, ((word[]){__VA_ARGS__}), sizeof((word[]){__VA_ARGS__}))

static void fillTables(void) {
    FILL(logTable, WORD("Log"), WORD("TulMwSpiLog"), WORD("1"), WORD(getLevel), WORD(writeLog));
    FILL(traceTable, WORD("Trace"), WORD("BryMwSpiTrace"), 0, WORD(trace), WORD(traceV2));
    FILL(managedObjectTable, WORD("TulOamSpiExtCmRouterService"), WORD("TulOamSpiManagedObject"), WORD("3"),
         WORD(getAttribute), WORD(findInstances), 0, 0, 0, WORD(createMo), 0);
    FILL(transactionTable, WORD("TulOamSpiTransactionService"), WORD("TulOamSpiTransactionMaster"), WORD("1"),
         WORD(newTransaction), WORD(commit), 0);
    FILL(routerTable, WORD("TulOamSpiEventService"), WORD("TulOamSpiEventRouter"), WORD("1"), 0,
         WORD(registerConsumer), WORD(addSubscription), WORD(removeSubscription), WORD(unregisterConsumer));
    FILL(portal1, WORD("Portal"), WORD("BryMgmtSpiPortal"), WORD("1"), WORD(getInterface));
    FILL(portal3, WORD("Portal"), WORD("BryMgmtSpiPortal"), WORD("3"), 0, 0, WORD(registerComponent),
         WORD(unregisterComponent));
}

/* --- the component's record --- */

static void checkDependency(const word* identity, const char* component_, const char* name, const char* version) {
    require((identity[0] == 0) == (component_ == NULL) && (identity[2] == 0) == (version == NULL), name);
    requireText(TEXT(identity[1]), name);
    if (component_ != NULL) {
        requireText(TEXT(identity[0]), component_);
    }
    if (version != NULL) {
        requireText(TEXT(identity[2]), version);
    }
}

static void checkComponent(void) {
    require(component != NULL, "init registers a component");
    requireText(TEXT(component[0]), "TulSshdManagementComponent");
    requireText(TEXT(component[1]), "BryMgmtSpiComponent");
    requireText(TEXT(component[2]), "2");
    const word* const provided = POINTER(component[3]);
    const word* const dependencies = POINTER(component[4]);
    const word* const extra = POINTER(component[7]);
    require(provided[0] == 0 && extra[0] == 0, "it offers nothing");
    require(dependencies[6] == 0, "it depends on six interfaces");
    checkDependency(POINTER(dependencies[1]), NULL, "TulMwSpiLog", "1");
    checkDependency(POINTER(dependencies[2]), NULL, "BryMwSpiTrace", NULL);
    checkDependency(POINTER(dependencies[3]), "TulOamSpiEventService", "TulOamSpiEventRouter", "1");
    checkDependency(POINTER(dependencies[4]), "TulOamSpiExtCmRouterService", "TulOamSpiManagedObject", "3");
    checkDependency(POINTER(dependencies[5]), "TulOamSpiTransactionService", "TulOamSpiTransactionMaster", "1");
    require(*(const unsigned char*)(component + 8) == 0, "the last byte is false");
}

static code callWithReason(word function) {
    code (*const operation)(code) = POINTER(function);
    return operation(0);
}

/* --- a whole life --- */

static const char configuration[] =
    "<TulConfiguration><TulSshdManager><sshdManagement>true</sshdManagement><cliPort>2022</cliPort>"
    "<netconfPort>2830</netconfPort><renegotiationTime>3600</renegotiationTime></TulSshdManager></TulConfiguration>";

static void sendChanges(void) {
    word none[1] = {0};
    changeState("^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$",
                "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1", 0);
    expectRuns("vorma clissh lock\n");
    changeState("^ManagedElement=.*,SystemFunctions=.*,SysM=.*,NetconfSsh=.*$",
                "ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1", 1);
    expectRuns("");
    notify("^ManagedElement=.*,Transport=.*,DiffServCategory=OamCM$",
           "ManagedElement=1,Transport=1,DiffServCategory=OamCM", 2, none);
    expectRuns("vorma ssh --removeIpQoS\n");
    notify("^ManagedElement=.*,SystemFunctions=.*,SecM=.*,Ssh=.*$", "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1",
           1, none);
    expectRuns("vorma ssh --ciphers aes256-ctr,aes128-ctr\n");
}

int main(int argc, char** argv) {
    word accessor[1] = {WORD(getPortal)};
    require(argc == 3, "usage: words-host LIBRARY SCRIPT-FOLDER");
    fillTables();
    require(tulCommonAttach((word[]){WORD(accessor), WORD(argv[2]), WORD(scriptRan)}) == 0,
            "libtul_common is attached");
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    require(library != NULL, library == NULL ? dlerror() : "");
    code (*const init)(const word*, const char*) = POINTER(WORD(dlsym(library, "bryLCMinit")));
    void (*const terminate)(void) = POINTER(WORD(dlsym(library, "bryLCMterminate")));
    require(init(accessor, configuration) == 0, "init returns 0");
    checkComponent();

    require(callWithReason(component[5]) == 0, "start returns 0");
    expectRuns(
        "vorma clissh unlock port 2022\nvorma netconfssh unlock port 2830\nvorma spi-revision\n"
        "vorma ssh --ipQos 46 --renegotiationTime 3600 --ciphers aes256-ctr,aes128-ctr\n");
    sendChanges();
    require(callWithReason(component[6]) == 0, "stop returns 0");
    expectRuns("vorma clissh lock\nvorma netconfssh lock\n");
    terminate();
    require(component == NULL, "terminate unregisters the component");
    requireText(
        complaints,
        "getDnValue: Could not find first instance of classpath : ManagedElement,SystemFunctions,SysM,CliSsh\n");
    require(traces > 0 && released == 0, "there are traces, and every container was given back");
    dlclose(library);
    require(dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) == NULL, "the library is gone");
    tulCommonDetach();
    printf("words-host: a whole life\n");
    return 0;
}
