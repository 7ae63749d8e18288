#ifndef BRY_MGMT_SPI_INTERFACE_1_H
#define BRY_MGMT_SPI_INTERFACE_1_H

/*
 * The identity of an interface: who offers it, what it is called, which version it has.
 *
 * It heads every interface record of the framework and is the key of every look-up. A null pointer means
 * "not given": in a look-up or in a dependency such a field matches anything.
 *
 * Ownership: the texts belong to whoever built the record and live as long as it.
 */

#include "BryLayout.h"

typedef struct BryMgmtSpiInterface_1 {
    const char* componentName;    /* the component that offers the interface, or null */
    const char* interfaceName;    /* never null in a record that is offered */
    const char* interfaceVersion; /* a decimal number as text, or null */
} BryMgmtSpiInterface_1;

BRY_LAYOUT_OFFSET(BryMgmtSpiInterface_1, componentName, 0, 0);
BRY_LAYOUT_OFFSET(BryMgmtSpiInterface_1, interfaceName, 4, 8);
BRY_LAYOUT_OFFSET(BryMgmtSpiInterface_1, interfaceVersion, 8, 16);
BRY_LAYOUT_SIZE(BryMgmtSpiInterface_1, 12, 24);

#endif
