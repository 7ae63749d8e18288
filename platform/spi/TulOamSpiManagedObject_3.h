#ifndef TUL_OAM_SPI_MANAGED_OBJECT_3_H
#define TUL_OAM_SPI_MANAGED_OBJECT_3_H

/*
 * Access to the managed objects.
 *
 * An MO is named by its distinguished name (DN): "Class=key" parts from the root down, with commas, for
 * example "ManagedElement=1,SystemFunctions=1,SysM=1". A class path is the same without the keys:
 * "ManagedElement,SystemFunctions,SysM".
 *
 * A transaction sees its own changes; transaction 0 sees what is committed.
 *
 * Threads: any; see TulOamSpiTransactionMaster_1.h for the use of one transaction.
 */

#include <stdbool.h>

#include "BryMgmtSpiInterface_1.h"
#include "BryReturn.h"
#include "TulMoAttributeValue_3.h"
#include "TulOamSpiTransactionMaster_1.h"

#define TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE "TulOamSpiExtCmRouterService"
#define TUL_OAM_SPI_MANAGED_OBJECT_NAME "TulOamSpiManagedObject"
#define TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3 "3"

/* Gets one DN, valid during the call, and the context of the caller. False ends the search. */
typedef bool (*TulOamSpiMoVisitor_3)(void* context, const char* dn);

typedef struct TulOamSpiManagedObject_3 {
    BryMgmtSpiInterface_1 header;

    /*
     * Reads one attribute. On success *result holds what is to be given back through its release; the
     * container is null or empty when the attribute has no value.
     * 0, BRY_NOT_FOUND for no such MO, BRY_UNKNOWN_CLASS for no such attribute, BRY_BAD_DN,
     * BRY_INVALID_HANDLE, BRY_TIMED_OUT or BRY_INVALID_ARGUMENT.
     */
    BryReturnT (*getAttribute)(TulOamSpiTransactionHandleT transaction, const char* dn, const char* attributeName,
                               TulMoAttributeValueResult_3* result);

    /*
     * Calls the visitor for each MO of a class path, in the order of their DNs, until it returns false.
     * 0 (also when there is none), BRY_UNKNOWN_CLASS, BRY_INVALID_HANDLE, BRY_TIMED_OUT or
     * BRY_INVALID_ARGUMENT. The visitor may call the framework and must not throw.
     */
    BryReturnT (*findInstances)(TulOamSpiTransactionHandleT transaction, const char* classPath,
                                TulOamSpiMoVisitor_3 visitor, void* context);

    /*
     * Gives attributes of an MO new values; a container without values takes the value away. attributes is
     * null-terminated. 0, or the code of the first one that the model refuses (then none is changed).
     */
    BryReturnT (*setAttributes)(TulOamSpiTransactionHandleT transaction, const char* dn,
                                TulMoNamedAttribute_3** attributes);

    void (*reserved4)(void); /* the framework's own; the development node has null here */
    void (*reserved5)(void); /* the framework's own; the development node has null here */

    /*
     * Creates an MO of a class below a parent, with its key and its first attributes. attributes is
     * null-terminated; everything is copied before the call returns.
     * 0, BRY_NO_PARENT_MO, BRY_ALREADY_EXISTS, BRY_UNKNOWN_CLASS, BRY_WRONG_PARENT, BRY_WRONG_TYPE,
     * BRY_OUT_OF_RANGE, BRY_BAD_DN, BRY_INVALID_HANDLE, BRY_TIMED_OUT or BRY_INVALID_ARGUMENT.
     */
    BryReturnT (*createMo)(TulOamSpiTransactionHandleT transaction, const char* parentDn, const char* className,
                           const char* keyAttributeName, const char* keyAttributeValue,
                           TulMoNamedAttribute_3** attributes);

    /* Deletes an MO without children. 0, BRY_NOT_FOUND, BRY_HAS_CHILDREN, or as above. */
    BryReturnT (*deleteMo)(TulOamSpiTransactionHandleT transaction, const char* dn);
} TulOamSpiManagedObject_3;

BRY_LAYOUT_OFFSET(TulOamSpiManagedObject_3, header, 0, 0);
BRY_LAYOUT_OFFSET(TulOamSpiManagedObject_3, createMo, 32, 64);
BRY_LAYOUT_OFFSET(TulOamSpiManagedObject_3, deleteMo, 36, 72);

#endif
