#ifndef BRY_MGMT_SPI_PORTAL_3_H
#define BRY_MGMT_SPI_PORTAL_3_H

/*
 * The portal of version "3": how a component makes itself known.
 *
 * Threads: the thread that calls bryLCMinit or bryLCMterminate.
 */

#include "BryMgmtSpiComponent_2.h"

typedef struct BryMgmtSpiPortal_3 {
    BryMgmtSpiInterface_1 header;

    void (*reserved1)(void); /* the framework's own; the development node has null here */
    void (*reserved2)(void); /* the framework's own; the development node has null here */

    /*
     * Makes the component known. The record is kept by address, not copied.
     * 0, BRY_INVALID_ARGUMENT for an incomplete record, or BRY_ALREADY_EXISTS for a name that is taken.
     */
    BryReturnT (*registerComponent)(BryMgmtSpiComponent_2* component);

    /* Forgets the component. 0, or BRY_NOT_FOUND for a record that is not registered. */
    BryReturnT (*unregisterComponent)(BryMgmtSpiComponent_2* component);
} BryMgmtSpiPortal_3;

BRY_LAYOUT_OFFSET(BryMgmtSpiPortal_3, header, 0, 0);
BRY_LAYOUT_OFFSET(BryMgmtSpiPortal_3, registerComponent, 20, 40);
BRY_LAYOUT_OFFSET(BryMgmtSpiPortal_3, unregisterComponent, 24, 48);

#endif
