#ifndef TUL_LOGGING_WRAPPER_H
#define TUL_LOGGING_WRAPPER_H

#include "Trace.h"
#include "TulExport.h"

namespace Tul {

/**
 * The one road to the framework's log and trace interfaces.
 *
 * While no framework is attached, or it has no such interface, records go to stderr in syslog form
 * ("<3>function: text") and the level is 6. What is written there is escaped: control characters and bytes
 * that are not UTF-8 appear as \xNN. A trace record goes there in its older form, as "<7>function: text"; the
 * newer form writes nothing then, since it only repeats a record that is written already.
 *
 * An interface is looked up at the first record after each attach (TulCommon_1.h). One that is missing then is
 * not asked for again before the next attach.
 *
 * Nothing here filters: ask get_level() before each record. Any thread; no operation throws or changes
 * errno. A record that cannot be formatted for lack of memory is replaced by its bare format.
 */
class TUL_EXPORT LoggingWrapper {
public:
    static LoggingWrapper& instance();

    /** The level that is wanted now: syslog severities, 8 and above for traces. Cheap, no allocation. */
    int get_level() const noexcept;

    /** Writes a log record. category is 1 for all records of a component. */
    void log_printf(const char* function, int severity, int category, const char* format, ...) noexcept
        __attribute__((format(printf, 5, 6)));

    /** Writes a trace record in the older form; kind 9 is an entry, 10 an exit, 0 anything else. */
    void trace_printf(const char* sourceFile, const char* function, int line, int kind, const char* format,
                      ...) noexcept __attribute__((format(printf, 6, 7)));

    /** Writes a trace record of a subsystem. The level is the severity of a log record's copy, 14 for a trace. */
    void trace_v2_printf(const Trace::Handle& handle, int level, const char* sourceFile, const char* function,
                         int line, const char* format, ...) noexcept __attribute__((format(printf, 7, 8)));

    LoggingWrapper(const LoggingWrapper&) = delete;
    LoggingWrapper& operator=(const LoggingWrapper&) = delete;

private:
    LoggingWrapper() = default;
};

}  // namespace Tul

#endif
