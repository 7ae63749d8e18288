/* A small component for the loader's ladder; RUNG_... chooses what it does wrong when it is compiled. */

#include <stddef.h>

#include "BryMgmtSpiPortal_3.h"

#define EXPORT __attribute__((visibility("default")))

EXPORT BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration);
EXPORT void bryLCMterminate(void);

#ifdef RUNG_UNRESOLVED
extern int nobodyDefinesThis(void);
#endif

static BryMgmtSpiPortal_3* portal;
static BryMgmtSpiInterface_1* nothing[] = {NULL};

static BryReturnT startOrStop(BryStateChangeReason reason) {
    (void)reason;
    return BRY_OK;
}

static BryMgmtSpiComponent_2 record = {
    "Rung", BRY_MGMT_SPI_COMPONENT_NAME, "2", nothing, nothing, startOrStop, startOrStop, nothing, false};

#ifndef RUNG_NO_INIT
BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration) {
    (void)configuration;
    portal = accessor->getPortal("3");
#ifdef RUNG_REGISTERS_TWO
    static BryMgmtSpiComponent_2 second;
    second = record;
    second.componentName = "Rung2";
    portal->registerComponent(&second);
#endif
#ifdef RUNG_REGISTERS_NULL
    portal->registerComponent(NULL);
#endif
#ifdef RUNG_UNRESOLVED
    return nobodyDefinesThis();
#else
    return portal->registerComponent(&record);
#endif
}
#endif

void bryLCMterminate(void) {
    portal->unregisterComponent(&record);
#ifdef RUNG_UNREGISTERS_TWICE
    portal->unregisterComponent(&record);
#endif
#ifdef RUNG_REGISTERS_IN_TERMINATE
    portal->registerComponent(&record);
#endif
}
