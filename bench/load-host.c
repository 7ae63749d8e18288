/*
 * A process that has nothing loaded yet loads one library:
 *
 *     bench-load-host LIBRARY
 *
 * A library with the two entry points of a component is also initialised and terminated. Prints how many nanoseconds
 * all of it took, and how many KiB of resident memory the process had more once the library was loaded, and before it
 * was unloaded.
 */

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "BryMgmtSpiComponent_2.h"
#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"

static const char configuration[] =
    "<TulConfiguration><TulSshdManager><sshdManagement>true</sshdManagement><cliPort>2022</cliPort>"
    "<netconfPort>2830</netconfPort><renegotiationTime>3600</renegotiationTime></TulSshdManager></TulConfiguration>";

static BryReturnT take(BryMgmtSpiComponent_2* component) {
    (void)component;
    return BRY_OK;
}

static BryReturnT getInterface(const char* componentName, const char* interfaceName, const char* interfaceVersion,
                               void** interfaceRecord) {
    (void)componentName, (void)interfaceName, (void)interfaceVersion, (void)interfaceRecord;
    return BRY_NOT_FOUND;
}

static BryMgmtSpiPortal_1 portal1 = {{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
static BryMgmtSpiPortal_3 portal3 = {{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"}, NULL, NULL, take, take};

static void* getPortal(const char* interfaceVersion) {
    return strcmp(interfaceVersion, "1") == 0 ? (void*)&portal1 : (void*)&portal3;
}

static const BryMgmtSpiPortalAccessor accessor = {getPortal};

static long long now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

static long residentKib(void) {
    long pages = 0;
    FILE* statm = fopen("/proc/self/statm", "re");
    if (statm == NULL || fscanf(statm, "%*d %ld", &pages) != 1) {
        perror("/proc/self/statm");
    }
    fclose(statm);
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

/* C has no cast from what dlsym gives to a function. */
static int findSymbol(void* library, const char* name, void* function) {
    void* const symbol = dlsym(library, name);
    memcpy(function, &symbol, sizeof symbol);
    return symbol != NULL;
}

int main(int argc, char** argv) {
    const long before = residentKib();
    BryLcmInitT init = NULL;
    BryLcmTerminateT terminate = NULL;
    const long long begin = now();
    void* const library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
    if (library == NULL) {
        fprintf(stderr, "usage: bench-load-host LIBRARY\n%s\n", argc == 2 ? dlerror() : "");
        return 2;
    }
    const long long loaded = now();
    const long resident = residentKib() - before;
    const long long goOn = now();
    const int isComponent =
        findSymbol(library, BRY_LCM_INIT_SYMBOL, &init) && findSymbol(library, BRY_LCM_TERMINATE_SYMBOL, &terminate);
    if (isComponent && init(&accessor, configuration) != BRY_OK) {
        fprintf(stderr, "bench-load-host: init failed\n");
        return 1;
    }
    const long long initialised = now();
    const long residentInitialised = residentKib() - before;
    const long long again = now();
    if (isComponent) {
        terminate();
    }
    dlclose(library);
    printf("%lld %ld %ld\n", now() - again + initialised - goOn + loaded - begin, resident, residentInitialised);
    return 0;
}
