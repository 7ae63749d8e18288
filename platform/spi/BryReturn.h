#ifndef BRY_RETURN_H
#define BRY_RETURN_H

/*
 * Result codes of every SPI operation.
 *
 * 0 is success, everything else a failure. A component passes on the codes of the framework unchanged,
 * so a caller must be ready for any value. The names below are those that the development edition uses.
 */

#include <stdint.h>

#include "BryLayout.h"

typedef int32_t BryReturnT;

BRY_LAYOUT_SIZE(BryReturnT, 4, 4);

enum {
    BRY_OK = 0,
    BRY_FAILED = -1,           /* no better code, or not to be retried */
    BRY_NO_PARENT_MO = -2,     /* the parent of the MO to be created does not exist */
    BRY_INVALID_ARGUMENT = -3, /* a null pointer or a number out of its range */
    BRY_NOT_FOUND = -4,        /* no such MO, attribute, interface or consumer */
    BRY_ALREADY_EXISTS = -5,   /* an MO with that key, or a second registration */
    BRY_INVALID_HANDLE = -6,   /* a transaction or consumer that is not alive */
    BRY_CONFLICT = -7,         /* somebody else committed a change of the same MO first */
    BRY_NO_CONFIGURATION = -8, /* a component was given no configuration */
    BRY_TIMED_OUT = -9,        /* the transaction outlived its time-out */
    BRY_UNKNOWN_CLASS = -10,   /* the model has no such class or attribute */
    BRY_WRONG_PARENT = -11,    /* the model allows no such child there */
    BRY_BAD_DN = -12,          /* not a distinguished name */
    BRY_WRONG_TYPE = -13,      /* the value has another type than the model asks for */
    BRY_OUT_OF_RANGE = -14,    /* the value is outside the model's range */
    BRY_HAS_CHILDREN = -15,    /* the MO still contains others */
    BRY_NO_RESOURCES = -16     /* out of memory, disk or handles */
};

/*
 * Why a component is started or stopped. Set by the framework; a component may print it and do nothing else
 * with it.
 */
typedef int32_t BryStateChangeReason;

BRY_LAYOUT_SIZE(BryStateChangeReason, 4, 4);

enum {
    BRY_REASON_NORMAL = 0,   /* start-up or shutdown of the node */
    BRY_REASON_OPERATOR = 1, /* an operator asked for it */
    BRY_REASON_RELOAD = 2    /* the library is about to be replaced */
};

#endif
