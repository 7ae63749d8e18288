#ifndef BRY_MGMT_SPI_PORTAL_1_H
#define BRY_MGMT_SPI_PORTAL_1_H

/*
 * The portal of version "1": how a component finds the interfaces of others.
 *
 * Threads: any.
 */

#include "BryMgmtSpiInterface_1.h"
#include "BryReturn.h"

#define BRY_MGMT_SPI_PORTAL_NAME "BryMgmtSpiPortal"

typedef struct BryMgmtSpiPortal_1 {
    BryMgmtSpiInterface_1 header;

    /*
     * Stores the interface record with that identity into *interfaceRecord. A null text matches anything.
     * 0, BRY_NOT_FOUND, or BRY_INVALID_ARGUMENT for a null interfaceName or interfaceRecord.
     * The record belongs to the framework and stays valid while the framework runs.
     */
    BryReturnT (*getInterface)(const char* componentName, const char* interfaceName, const char* interfaceVersion,
                               void** interfaceRecord);
} BryMgmtSpiPortal_1;

BRY_LAYOUT_OFFSET(BryMgmtSpiPortal_1, header, 0, 0);
BRY_LAYOUT_OFFSET(BryMgmtSpiPortal_1, getInterface, 12, 24);

#endif
