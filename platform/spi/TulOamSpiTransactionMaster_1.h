#ifndef TUL_OAM_SPI_TRANSACTION_MASTER_1_H
#define TUL_OAM_SPI_TRANSACTION_MASTER_1_H

/*
 * Transactions on the managed objects.
 *
 * What is done in a transaction becomes visible to others, and is notified, when it is committed, all at once.
 * A transaction that is left open holds up nobody; it ends by itself when its time-out has passed.
 *
 * Threads: any; one transaction is used by one thread at a time.
 */

#include <stdint.h>

#include "BryMgmtSpiInterface_1.h"
#include "BryReturn.h"

#define TUL_OAM_SPI_TRANSACTION_SERVICE "TulOamSpiTransactionService"
#define TUL_OAM_SPI_TRANSACTION_MASTER_NAME "TulOamSpiTransactionMaster"
#define TUL_OAM_SPI_TRANSACTION_MASTER_VERSION_1 "1"

/* Names an open transaction. 0 names none: a read with it sees what is committed. */
typedef unsigned long TulOamSpiTransactionHandleT;

BRY_LAYOUT_SIZE(TulOamSpiTransactionHandleT, 4, 8);

/* What happens when two transactions change the same MO. Either way nobody waits for anybody. */
typedef int32_t TulLockPolicyT;

BRY_LAYOUT_SIZE(TulLockPolicyT, 4, 4);

enum {
    TUL_LOCK_POLICY_SHARED = 1,   /* the changes are merged attribute by attribute; the last commit wins */
    TUL_LOCK_POLICY_EXCLUSIVE = 2 /* commit gives BRY_CONFLICT if a touched MO was changed meanwhile */
};

BRY_LAYOUT_NUMBER(TUL_LOCK_POLICY_SHARED, 1);
BRY_LAYOUT_NUMBER(TUL_LOCK_POLICY_EXCLUSIVE, 2);

typedef struct TulOamSpiTransactionMaster_1 {
    BryMgmtSpiInterface_1 header;

    /*
     * Opens a transaction and fills *transaction. timeout is in seconds, 1 or more.
     * 0, BRY_INVALID_ARGUMENT for another lock policy or time-out, or BRY_NO_RESOURCES.
     */
    BryReturnT (*newTransaction)(TulLockPolicyT lockPolicy, unsigned int timeout,
                                 TulOamSpiTransactionHandleT* transaction);

    /*
     * Puts all changes in force and ends the transaction. On failure nothing is in force; the transaction
     * stays open until it is aborted or its time-out has passed.
     * 0, BRY_INVALID_HANDLE, BRY_TIMED_OUT, BRY_CONFLICT, or what a change would have been refused with.
     */
    BryReturnT (*commit)(TulOamSpiTransactionHandleT transaction);

    /* Drops all changes and ends the transaction. 0 or BRY_INVALID_HANDLE. */
    BryReturnT (*abort)(TulOamSpiTransactionHandleT transaction);
} TulOamSpiTransactionMaster_1;

BRY_LAYOUT_OFFSET(TulOamSpiTransactionMaster_1, header, 0, 0);
BRY_LAYOUT_OFFSET(TulOamSpiTransactionMaster_1, newTransaction, 12, 24);
BRY_LAYOUT_OFFSET(TulOamSpiTransactionMaster_1, commit, 16, 32);
BRY_LAYOUT_OFFSET(TulOamSpiTransactionMaster_1, abort, 20, 40);

#endif
