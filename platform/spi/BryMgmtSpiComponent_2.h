#ifndef BRY_MGMT_SPI_COMPONENT_2_H
#define BRY_MGMT_SPI_COMPONENT_2_H

/*
 * What a component tells the framework about itself, and the entry points of its library.
 *
 * Life: the framework loads the library, calls bryLCMinit, then any number of start and stop pairs through
 * the record, then bryLCMterminate, then unloads the library. The record and everything that it points to
 * stay where they are, unchanged, from the registration until bryLCMterminate has returned.
 *
 * Threads: the framework makes these calls one at a time.
 */

#include <stdbool.h>

#include "BryMgmtSpiInterface_1.h"
#include "BryMgmtSpiPortalAccessor.h"
#include "BryReturn.h"

#define BRY_MGMT_SPI_COMPONENT_NAME "BryMgmtSpiComponent"
#define BRY_MGMT_SPI_COMPONENT_VERSION_2 "2"

typedef struct BryMgmtSpiComponent_2 {
    const char* componentName;                   /* unique among the loaded components */
    const char* interfaceName;                   /* "BryMgmtSpiComponent" */
    const char* interfaceVersion;                /* "2" */
    BryMgmtSpiInterface_1** interfaceArray;      /* what it offers; null-terminated */
    BryMgmtSpiInterface_1** dependencyArray;     /* what must be there before start; null-terminated */
    BryReturnT (*start)(BryStateChangeReason);   /* 0, or the component is not running */
    BryReturnT (*stop)(BryStateChangeReason);    /* 0, or the component did not stop cleanly */
    BryMgmtSpiInterface_1** extraInterfaceArray; /* the framework's; null-terminated */
    bool flag;                                   /* the framework's; false */
} BryMgmtSpiComponent_2;

BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, componentName, 0, 0);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, interfaceName, 4, 8);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, interfaceVersion, 8, 16);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, interfaceArray, 12, 24);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, dependencyArray, 16, 32);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, start, 20, 40);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, stop, 24, 48);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, extraInterfaceArray, 28, 56);
BRY_LAYOUT_OFFSET(BryMgmtSpiComponent_2, flag, 32, 64);
BRY_LAYOUT_SIZE(BryMgmtSpiComponent_2, 36, 72);

/*
 * The two symbols that a component library exports.
 *
 * bryLCMinit: registers the component and reads its configuration (NUL-terminated text, may be null).
 *   0, or the code of what failed (BRY_FAILED for a null accessor or one without the portal of version "3"); the
 *   library may be terminated and unloaded either way.
 * bryLCMterminate: forgets the configuration and unregisters the component. It does not stop it.
 */
typedef BryReturnT (*BryLcmInitT)(const BryMgmtSpiPortalAccessor* accessor, const char* configuration);
typedef void (*BryLcmTerminateT)(void);

#define BRY_LCM_INIT_SYMBOL "bryLCMinit"
#define BRY_LCM_TERMINATE_SYMBOL "bryLCMterminate"

#endif
