/*
 * A framework for 32-bit machines that has none of our headers: every record that it hands to the component's
 * library, and every one that it gets from it, is an array of 32-bit words whose places were counted by hand. It
 * loads the library, starts it, sends a change to each of its four handlers, stops and unloads it. In a second life
 * the component manages nothing and takes its MOs away. It ends with 0 only if the adapter was run and the model
 * changed as it should.
 *
 *     words-host LIBRARY SCRIPT-FOLDER [DEFECT]
 *
 * A defect is something that this framework then does wrong, so that it must not end with 0; see spoil().
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

static bool same(const char* text, const char* other) {
    return text == NULL || other == NULL ? text == other : strcmp(text, other) == 0;
}

static void requireText(const char* text, const char* expected) {
    if (!same(text, expected)) {
        printf("words-host: \"%s\" instead of \"%s\"\n", text == NULL ? "(null)" : text,
               expected == NULL ? "(null)" : expected);
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

static char changes[1024];

static void expectChanges(const char* expected) {
    requireText(changes, expected);
    changes[0] = '\0';
}

static code newTransaction(code lockPolicy, word timeout, word* transaction) {
    sprintf(changes + strlen(changes), "lock policy %d, %u seconds\n", lockPolicy, timeout);
    *transaction = 0x7A57;
    return 0;
}

static code createMo(word transaction, const char* parentDn, const char* className, const char* keyName,
                     const char* key, const word* attributes) {
    const word* const attribute = POINTER(attributes[0]);
    require(transaction == 0x7A57 && attributes[1] == 0, "one attribute, in the open transaction");
    /* name, and the container in it: type, number of values, values of eight bytes each */
    require(attribute[1] == 12 && attribute[2] == 1, "one enumeration");
    const word* const value = POINTER(attribute[3]);
    require(value[1] == 0, "a value has all its eight bytes");
    sprintf(changes + strlen(changes), "create %s,%s with %s=%s %s=%u\n", parentDn, className, keyName, key,
            TEXT(attribute[0]), value[0]);
    hasCliSsh = true;
    return 0;
}

static code deleteMo(word transaction, const char* dn) {
    require(transaction == 0x7A57, "a deletion is in the open transaction");
    sprintf(changes + strlen(changes), "delete %s\n", dn);
    return 0;
}

static code commit(word transaction) {
    require(transaction == 0x7A57, "the open transaction is committed");
    strcat(changes, "commit\n");
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

static void requireNobodyListens(void) {
    for (word place = 0; place < CONSUMERS; ++place) {
        require(filters[place] == NULL, "stop removes every subscription");
        require(records[place] == NULL, "stop unregisters every consumer");
    }
}

static word placeOfEvents = 5;

/* The one event of one MO, for the consumer that asked for it by this pattern. */
static void notify(const char* pattern, const char* dn, word eventType, word* attributes) {
    word event[3] = {WORD(dn), eventType, WORD(attributes)};
    word events[2] = {WORD(event), 0};
    word notification[6] = {0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0};
    notification[placeOfEvents] = WORD(events);
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

static word typeOfNetconfState = 12;

static void changeState(const char* pattern, const char* dn, word type, word state) {
    word values[2] = {state, 0xAAAAAAAA};
    word attribute[4] = {WORD("administrativeState"), type, 1, WORD(values)};
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

enum { LOG, TRACE, ROUTER, MANAGED_OBJECTS, TRANSACTIONS, INTERFACES };

/* Component, interface, version: how each is looked up, and in this order depended on. */
static const char* identities[INTERFACES][3] = {{NULL, "TulMwSpiLog", "1"},
                                                {NULL, "BryMwSpiTrace", NULL},
                                                {"TulOamSpiEventService", "TulOamSpiEventRouter", "1"},
                                                {"TulOamSpiExtCmRouterService", "TulOamSpiManagedObject", "3"},
                                                {"TulOamSpiTransactionService", "TulOamSpiTransactionMaster", "1"}};

/* Each begins with three texts: component, interface, version. */
static word tables[INTERFACES][10];

static code getInterface(const char* component, const char* name, const char* version, word* found) {
    for (size_t i = 0; i < INTERFACES; ++i) {
        if (same(identities[i][0], component) && same(identities[i][1], name) && same(identities[i][2], version)) {
            *found = WORD(tables[i]);
            return 0;
        }
    }
    printf("words-host: nobody should look up (%s, %s, %s)\n", component == NULL ? "(null)" : component,
           name == NULL ? "(null)" : name, version == NULL ? "(null)" : version);
    exit(1);
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
    require(same(version, "1") || same(version, "3"), "a portal is asked for by the version 1 or 3");
    return *version == '1' ? portal1 : portal3;
}

#define FILL(table, ...) memcpy(table, ((word[]){__VA_ARGS__}), sizeof((word[]){__VA_ARGS__}))

static void fillTables(void) {
    FILL(tables[LOG], WORD("Log"), WORD("TulMwSpiLog"), WORD("1"), WORD(getLevel), WORD(writeLog));
    FILL(tables[TRACE], WORD("Trace"), WORD("BryMwSpiTrace"), 0, WORD(trace), WORD(traceV2));
    FILL(tables[ROUTER], WORD("TulOamSpiEventService"), WORD("TulOamSpiEventRouter"), WORD("1"), 0,
         WORD(registerConsumer), WORD(addSubscription), WORD(removeSubscription), WORD(unregisterConsumer));
    FILL(tables[MANAGED_OBJECTS], WORD("TulOamSpiExtCmRouterService"), WORD("TulOamSpiManagedObject"), WORD("3"),
         WORD(getAttribute), WORD(findInstances), 0, 0, 0, WORD(createMo), WORD(deleteMo));
    FILL(tables[TRANSACTIONS], WORD("TulOamSpiTransactionService"), WORD("TulOamSpiTransactionMaster"), WORD("1"),
         WORD(newTransaction), WORD(commit), 0);
    FILL(portal1, WORD("TulPortalComponent"), WORD("BryMgmtSpiPortal"), WORD("1"), WORD(getInterface));
    FILL(portal3, WORD("TulPortalComponent"), WORD("BryMgmtSpiPortal"), WORD("3"), 0, 0, WORD(registerComponent),
         WORD(unregisterComponent));
}

static code doNothing(void) {
    return 0;
}

/* Each defect is one that a check must notice. */
static void spoil(const char* defect) {
    word* const router = tables[ROUTER];
    if (strcmp(defect, "events-a-word-early") == 0) {
        placeOfEvents = 4;
    } else if (strcmp(defect, "state-of-another-type") == 0) {
        typeOfNetconfState = 11;
    } else if (strcmp(defect, "interface-of-another-version") == 0) {
        identities[MANAGED_OBJECTS][2] = "4";
    } else if (strcmp(defect, "router-slots-swapped") == 0) {
        FILL(router + 6, WORD(unregisterConsumer), WORD(removeSubscription));
    } else if (strcmp(defect, "router-without-removal") == 0) {
        FILL(router + 6, WORD(doNothing), WORD(doNothing));
    } else if (strcmp(defect, "deletion-in-the-slot-of-creation") == 0) {
        FILL(tables[MANAGED_OBJECTS] + 8, WORD(deleteMo), WORD(createMo));
    } else {
        require(false, "a defect that spoil() knows");
    }
}

/* --- the component's record --- */

static void checkIdentity(word identity, const char* const* expected) {
    for (size_t i = 0; i < 3; ++i) {
        requireText(TEXT(((const word*)POINTER(identity))[i]), expected[i]);
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
    checkIdentity(dependencies[0], (const char* const[]){"TulPortalComponent", "BryMgmtSpiPortal", "3"});
    for (size_t i = 0; i < INTERFACES; ++i) {
        checkIdentity(dependencies[1 + i], identities[i]);
    }
    require(*(const unsigned char*)(component + 8) == 0, "the last byte is false");
}

static code callWithReason(word function) {
    code (*const operation)(code) = POINTER(function);
    return operation(0);
}

/* --- two lives --- */

static void sendChanges(void) {
    word none[1] = {0};
    changeState("^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$",
                "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1", 12, 0);
    expectRuns("vorma clissh lock\n");
    changeState("^ManagedElement=.*,SystemFunctions=.*,SysM=.*,NetconfSsh=.*$",
                "ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1", typeOfNetconfState, 0);
    expectRuns("vorma netconfssh lock\n");
    notify("^ManagedElement=.*,Transport=.*,DiffServCategory=OamCM$",
           "ManagedElement=1,Transport=1,DiffServCategory=OamCM", 2, none);
    expectRuns("vorma ssh --removeIpQoS\n");
    notify("^ManagedElement=.*,SystemFunctions=.*,SecM=.*,Ssh=.*$", "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1",
           1, none);
    expectRuns("vorma ssh --ciphers aes256-ctr,aes128-ctr\n");
}

static void manage(void) {
    require(callWithReason(component[5]) == 0, "start returns 0");
    expectRuns(
        "vorma clissh unlock port 2022\nvorma netconfssh unlock port 2830\nvorma spi-revision\n"
        "vorma ssh --ipQos 46 --renegotiationTime 3600 --ciphers aes256-ctr,aes128-ctr\n");
    expectChanges(
        "lock policy 1, 3600 seconds\ncreate ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh with cliSshId=1 "
        "administrativeState=1\ncommit\n");
    sendChanges();
    require(callWithReason(component[6]) == 0, "stop returns 0");
    requireNobodyListens();
    expectRuns("vorma clissh lock\nvorma netconfssh lock\n");
    requireText(
        complaints,
        "getDnValue: Could not find first instance of classpath : ManagedElement,SystemFunctions,SysM,CliSsh\n");
    complaints[0] = '\0';
}

static void withdraw(void) {
    require(callWithReason(component[5]) == 0, "start returns 0 also where there is nothing to manage");
    requireNobodyListens();
    expectRuns("vorma clissh lock\nvorma netconfssh lock\n");
    expectChanges(
        "lock policy 2, 3600 seconds\ndelete ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1\ncommit\n"
        "lock policy 2, 3600 seconds\ndelete ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1\ncommit\n");
}

#define CONFIGURATION(management)                                             \
    "<TulConfiguration><TulSshdManager><sshdManagement>" management           \
    "</sshdManagement><cliPort>2022</cliPort><netconfPort>2830</netconfPort>" \
    "<renegotiationTime>3600</renegotiationTime></TulSshdManager></TulConfiguration>"

static void live(const char* path, const word* accessor, const char* configuration, void (*run)(void)) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    require(library != NULL, library == NULL ? dlerror() : "");
    code (*const init)(const word*, const char*) = POINTER(WORD(dlsym(library, "bryLCMinit")));
    void (*const terminate)(void) = POINTER(WORD(dlsym(library, "bryLCMterminate")));
    require(init(accessor, configuration) == 0, "init returns 0");
    checkComponent();
    run();
    terminate();
    require(component == NULL, "terminate unregisters the component");
    requireText(complaints, "");
    dlclose(library);
    require(dlopen(path, RTLD_NOW | RTLD_NOLOAD) == NULL, "the library is gone");
}

int main(int argc, char** argv) {
    word accessor[1] = {WORD(getPortal)};
    require(argc == 3 || argc == 4, "usage: words-host LIBRARY SCRIPT-FOLDER [DEFECT]");
    fillTables();
    if (argc == 4) {
        spoil(argv[3]);
    }
    require(tulCommonAttach((word[]){WORD(accessor), WORD(argv[2]), WORD(scriptRan)}) == 0,
            "libtul_common is attached");
    live(argv[1], accessor, CONFIGURATION("true"), manage);
    live(argv[1], accessor, CONFIGURATION("false"), withdraw);
    tulCommonDetach();
    require(traces > 0 && released == 0, "there are traces, and every container was given back");
    printf("words-host: two whole lives\n");
    return 0;
}
