/*
 * A framework that knows a component only by the SPI headers: loads its library, drives it through a whole life,
 * unloads it, again and again, and ends with 0 only if each life was as it should be and left nothing behind.
 *
 *     foreign-host LIBRARY SCRIPT-FOLDER [LIVES]
 *
 * A line for each hundred lives; at the first fault a line that names it, and the end with 1.
 */

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "TulCommon_1.h"
#include "framework.h"
#include "process.h"

static const char configuration[] =
    "<TulConfiguration><TulSshdManager><sshdManagement>true</sshdManagement><cliPort>2022</cliPort>"
    "<netconfPort>2830</netconfPort><renegotiationTime>3600</renegotiationTime></TulSshdManager></TulConfiguration>";

/* The whole of a life, as the adapter sees it. */
static const char* const expectedRuns[] = {
    "vorma clissh unlock port 2022",
    "vorma netconfssh unlock port 2830",
    "vorma spi-revision", /* asked in each life: nothing is left of the one before */
    "vorma ssh --ipQos 46 --renegotiationTime 3600 --ciphers aes256-ctr",
    "vorma clissh lock",
    "vorma netconfssh lock",
    "vorma ssh --ipQos 46",
    "vorma ssh --ciphers aes256-ctr",
    "vorma clissh lock",
    "vorma netconfssh lock",
};
enum { EXPECTED_RUNS = sizeof expectedRuns / sizeof expectedRuns[0] };

/* What the log has besides information: the two MOs are not there yet. */
static const char expectedComplaints[] =
    "getDnValue: Could not find first instance of classpath : ManagedElement,SystemFunctions,SysM,CliSsh; "
    "getDnValue: Could not find first instance of classpath : ManagedElement,SystemFunctions,SysM,NetconfSsh; ";

static int life; /* the one under way, from 1; 0: none */

/* Exit codes: 1 for the component's faults, 2 for the host's own. _exit: what is wrong must not go on. */
static void fail(const char* format, ...) __attribute__((noreturn, format(printf, 1, 2)));
static void fail(const char* format, ...) {
    va_list args;
    printf("foreign-host: life %d: ", life);
    va_start(args, format);
    vprintf(format, args);
    va_end(args);
    printf("\n");
    fflush(stdout);
    _exit(1);
}

static void require(bool condition, const char* what) {
    if (!condition) {
        fail("%s", what);
    }
}

/* C has no cast from what dlsym gives to a function. */
static void findSymbol(void* library, const char* name, void* function) {
    void* const symbol = dlsym(library, name);
    if (symbol == NULL) {
        fail("no symbol %s", name);
    }
    memcpy(function, &symbol, sizeof symbol);
}

static void changeState(const char* pattern, const char* dn) {
    TulMoAttributeValue_3 locked = {.asEnum = 0};
    BryOamSpiCmEvent_Attribute_1 state = {"administrativeState", TUL_MO_TYPE_ENUMERATION_3, 1, &locked};
    BryOamSpiCmEvent_Attribute_1* attributes[] = {&state, NULL};
    BryOamSpiCmEvent_Event_1 event = {dn, ATTRIBUTES_CHANGED, attributes};
    require(frameworkNotify(pattern, &event), "a state change reached no consumer");
}

static void change(const char* pattern, const char* dn) {
    BryOamSpiCmEvent_Attribute_1* attributes[] = {NULL};
    BryOamSpiCmEvent_Event_1 event = {dn, ATTRIBUTES_CHANGED, attributes};
    require(frameworkNotify(pattern, &event), "a change reached no consumer");
}

static void notifyAll(void) {
    changeState("^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$",
                "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1");
    changeState("^ManagedElement=.*,SystemFunctions=.*,SysM=.*,NetconfSsh=.*$",
                "ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1");
    change("^ManagedElement=.*,Transport=.*,DiffServCategory=OamCM$",
           "ManagedElement=1,Transport=1,DiffServCategory=OamCM");
    change("^ManagedElement=.*,SystemFunctions=.*,SecM=.*,Ssh=.*$",
           "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1");
}

static void drive(void* library) {
    BryLcmInitT init = NULL;
    BryLcmTerminateT terminate = NULL;
    findSymbol(library, BRY_LCM_INIT_SYMBOL, &init);
    findSymbol(library, BRY_LCM_TERMINATE_SYMBOL, &terminate);
    require(init(frameworkAccessor(), configuration) == BRY_OK, "init failed");
    require(frameworkHeld.component != NULL, "init registered no component");
    require(frameworkHeld.component->start(BRY_REASON_NORMAL) == BRY_OK, "start failed");
    notifyAll();
    require(frameworkHeld.component->stop(BRY_REASON_NORMAL) == BRY_OK, "stop failed");
    terminate();
}

static void checkHeld(void) {
    require(frameworkHeld.component == NULL, "the component is still registered");
    require(frameworkHeld.subscriptions == 0, "a subscription is left");
    require(frameworkHeld.consumers == 0, "a consumer is still registered");
    require(frameworkHeld.containers == 0, "a value container was not given back");
    require(frameworkHeld.transactions == 0, "a transaction was left open");
}

static void checkSeen(void) {
    if (strcmp(frameworkSeen.complaints, expectedComplaints) != 0) {
        fail("the log has \"%s\" instead of \"%s\"", frameworkSeen.complaints, expectedComplaints);
    }
    for (int i = 0; i < EXPECTED_RUNS || i < frameworkSeen.runCount; ++i) {
        const char* const expected = i < EXPECTED_RUNS ? expectedRuns[i] : "no more";
        const char* const run = i < frameworkSeen.runCount ? frameworkSeen.runs[i] : "none";
        if (strcmp(run, expected) != 0) {
            fail("adapter run %d was \"%s\" instead of \"%s\"", i + 1, run, expected);
        }
    }
}

static void live(const char* file) {
    frameworkForget();
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fail("%s", dlerror());
    }
    drive(library);
    dlclose(library);
    checkHeld();
    checkSeen();
    require(!processMaps(file), "the library is still mapped");
}

static void liveOften(const char* file, int lives) {
    for (int i = 0; i < lives; ++i) {
        ++life;
        live(file);
        if (life % 100 == 0) {
            const struct Process now = processNow();
            printf("%d lives, %ld KiB resident, %zu bytes of heap\n", life, now.residentKib, now.heapBytes);
        }
    }
}

/* Sanitizers keep what was freed and do malloc's work themselves: their own check for leaks takes our place. */
#if defined(__has_feature)
#define HAS_SANITIZER (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_SANITIZER 1
#else
#define HAS_SANITIZER 0
#endif
enum { RESIDENT_SLACK_KIB = 512, HEAP_SLACK_BYTES = 16384 };

static void checkGrowth(const struct Process* before, const struct Process* after) {
    printf("descriptors %d -> %d, threads %d -> %d, resident %ld -> %ld KiB, heap %zu -> %zu bytes\n",
           before->descriptors, after->descriptors, before->threads, after->threads, before->residentKib,
           after->residentKib, before->heapBytes, after->heapBytes);
    require(after->descriptors == before->descriptors, "the number of descriptors has changed");
    require(after->threads == before->threads, "the number of threads has changed");
    if (!HAS_SANITIZER) {
        require(after->heapBytes <= before->heapBytes + HEAP_SLACK_BYTES, "the heap has grown");
        require(after->residentKib <= before->residentKib + RESIDENT_SLACK_KIB, "the resident memory has grown");
    }
}

int main(int argc, char** argv) {
    const int lives = argc > 3 ? atoi(argv[3]) : 1000;
    if (argc < 3 || lives < 10) {
        fprintf(stderr, "usage: foreign-host LIBRARY SCRIPT-FOLDER [LIVES], 10 or more lives\n");
        return 2;
    }
    setvbuf(stdout, NULL, _IOLBF, BUFSIZ);
    if (frameworkAttach(argv[2]) != BRY_OK) {
        fprintf(stderr, "foreign-host: libtul_common does not take this framework\n");
        return 2;
    }
    const int warmUp = lives / 10; /* the C library's and libtul_common's own caches fill */
    liveOften(argv[1], warmUp);
    const struct Process before = processNow();
    liveOften(argv[1], lives - warmUp);
    const struct Process after = processAtRest(before.threads);
    checkGrowth(&before, &after);
    tulCommonDetach();
    return 0;
}
