#ifndef TUL_MW_SPI_LOG_1_H
#define TUL_MW_SPI_LOG_1_H

/*
 * Where log records go, and how much is wanted.
 *
 * Levels are those of syslog: 3 errors, 4 and above warnings too, 6 and above information too; 8 and above add
 * traces. Any number may be set; only the comparison counts.
 *
 * Threads: any, also several at once, also from inside any other SPI operation. An implementation must not
 * call back into a component.
 */

#include <stdint.h>

#include "BryMgmtSpiInterface_1.h"

#define TUL_MW_SPI_LOG_NAME "TulMwSpiLog"
#define TUL_MW_SPI_LOG_VERSION_1 "1"

typedef struct TulMwSpiLog_1 {
    BryMgmtSpiInterface_1 header;

    /* The level that is wanted now. It is asked before every record and must be cheap. */
    int32_t (*getLevel)(void);

    /*
     * Takes one record. function is the plain name of the operation that wrote it, severity 3, 4 or 6,
     * category always 1. format is the same text for all records of one kind (it names the kind and is never
     * to be expanded again); text is the finished message: any bytes but NUL, so escape it before printing.
     */
    void (*log)(const char* function, int32_t severity, int32_t category, const char* format, const char* text);
} TulMwSpiLog_1;

BRY_LAYOUT_OFFSET(TulMwSpiLog_1, header, 0, 0);
BRY_LAYOUT_OFFSET(TulMwSpiLog_1, getLevel, 12, 24);
BRY_LAYOUT_OFFSET(TulMwSpiLog_1, log, 16, 32);

#endif
