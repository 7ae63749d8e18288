#ifndef BRY_MW_SPI_TRACE_H
#define BRY_MW_SPI_TRACE_H

/*
 * Where trace records go. The interface has one version and is looked up without naming it.
 *
 * sourceFile is relative to the source tree and has no extension; function is the plain name of the
 * operation; format and text are as in TulMwSpiLog_1.h.
 *
 * Threads: as for TulMwSpiLog_1.h.
 */

#include <stdint.h>

#include "BryMgmtSpiInterface_1.h"

#define BRY_MW_SPI_TRACE_NAME "BryMwSpiTrace"

enum {
    BRY_TRACE_KIND_OTHER = 0,
    BRY_TRACE_KIND_ENTRY = 9, /* an operation begins */
    BRY_TRACE_KIND_EXIT = 10  /* an operation ends */
};

/* The level of a trace record; a trace copy of a log record has the record's severity instead. */
enum { BRY_TRACE_LEVEL_TRACE = 14 };

typedef struct BryMwSpiTrace {
    BryMgmtSpiInterface_1 header;

    /* The older form: a kind and no subsystem. */
    void (*trace)(const char* sourceFile, const char* function, int32_t line, int32_t kind, const char* format,
                  const char* text);

    /* The newer form: the subsystem that it belongs to ("TulSshd", "Common") and a level. */
    void (*traceV2)(const char* subsystem, int32_t level, const char* sourceFile, const char* function, int32_t line,
                    const char* format, const char* text);
} BryMwSpiTrace;

BRY_LAYOUT_OFFSET(BryMwSpiTrace, header, 0, 0);
BRY_LAYOUT_OFFSET(BryMwSpiTrace, trace, 12, 24);
BRY_LAYOUT_OFFSET(BryMwSpiTrace, traceV2, 16, 32);

#endif
