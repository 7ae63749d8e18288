#ifndef TUL_COMMON_1_H
#define TUL_COMMON_1_H

/*
 * How a framework sets up libtul_common in its process.
 *
 * The library serves every component of the process and must know the framework before the first of them is
 * loaded: it finds the log, trace, MO and event-router interfaces through the framework's portal, and the
 * scripts in the framework's folder. A framework therefore calls tulCommonAttach first and tulCommonDetach
 * after the last component has been unloaded. Without it the library logs to stderr and finds no interface.
 *
 * Threads: one at a time, and never while a component is loaded.
 */

#include <stdint.h>

#include "BryMgmtSpiPortalAccessor.h"
#include "BryReturn.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One finished run of a script; all pointers are valid during the call only. */
typedef struct TulCommonScriptRun_1 {
    const char* scriptName;
    const char* const* arguments; /* null-terminated */
    const char* failure;          /* null: it ran and exited with 0; else what went wrong */
    uint32_t milliseconds;        /* from start to end, by the monotonic clock */
} TulCommonScriptRun_1;

BRY_LAYOUT_OFFSET(TulCommonScriptRun_1, scriptName, 0, 0);
BRY_LAYOUT_OFFSET(TulCommonScriptRun_1, arguments, 4, 8);
BRY_LAYOUT_OFFSET(TulCommonScriptRun_1, failure, 8, 16);
BRY_LAYOUT_OFFSET(TulCommonScriptRun_1, milliseconds, 12, 24);
BRY_LAYOUT_SIZE(TulCommonScriptRun_1, 16, 32);

typedef struct TulCommonSettings_1 {
    const BryMgmtSpiPortalAccessor* portalAccessor; /* outlives the attachment; not null */
    const char* scriptDirectory;                    /* copied; null: the installed default */

    /* Called after each run on the thread that made it; null: nobody wants to know. It must not throw. */
    void (*scriptRan)(const TulCommonScriptRun_1* run);
} TulCommonSettings_1;

BRY_LAYOUT_OFFSET(TulCommonSettings_1, portalAccessor, 0, 0);
BRY_LAYOUT_OFFSET(TulCommonSettings_1, scriptDirectory, 4, 8);
BRY_LAYOUT_OFFSET(TulCommonSettings_1, scriptRan, 8, 16);
BRY_LAYOUT_SIZE(TulCommonSettings_1, 12, 24);

/* 0; BRY_INVALID_ARGUMENT for null settings or accessor; BRY_ALREADY_EXISTS when attached. */
BryReturnT tulCommonAttach(const TulCommonSettings_1* settings);

/* Forgets the framework. Nothing happens when not attached. */
void tulCommonDetach(void);

#ifdef __cplusplus
}
#endif

#endif
