#ifndef BRY_MGMT_SPI_PORTAL_ACCESSOR_H
#define BRY_MGMT_SPI_PORTAL_ACCESSOR_H

/*
 * The first thing a component gets: the way to the framework's portals.
 *
 * Ownership: the accessor and the portals belong to the framework and outlive every component.
 * Threads: getPortal may be called from any thread.
 */

#include "BryLayout.h"

typedef struct BryMgmtSpiPortalAccessor {
    /*
     * The portal of an interface version: "1" is a BryMgmtSpiPortal_1, "3" a BryMgmtSpiPortal_3.
     * Null when the framework has no portal of that version.
     */
    void* (*getPortal)(const char* interfaceVersion);
} BryMgmtSpiPortalAccessor;

BRY_LAYOUT_OFFSET(BryMgmtSpiPortalAccessor, getPortal, 0, 0);

#endif
