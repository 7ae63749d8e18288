#ifndef TUL_LOGGING_H
#define TUL_LOGGING_H

#include <cstddef>

#include "LoggingWrapper.h"

/*
 * How the components write their records. Macros, because a record carries the place that it is written at and
 * because its arguments must not be evaluated when the level does not ask for it.
 *
 * Every record goes out twice, so arguments are evaluated twice: they must have no side effect.
 *
 * TUL_ERROR, TUL_WARNING, TUL_INFO(handle, format, ...)          log record and its trace copy
 * TUL_TRACE_ENTRY, TUL_TRACE_EXIT, TUL_TRACE(handle, format, ...) trace in the older and the newer form
 */

namespace Tul {

/** A source file's path without its extension, made at compile time. */
template <std::size_t size>
struct SourceFile {
    char path[size]{};

    consteval explicit SourceFile(const char (&file)[size]) {
        std::size_t end = size - 1;
        for (std::size_t i = 0; i < size; ++i) {
            path[i] = file[i];
            if (file[i] == '/') {
                end = size - 1;
            } else if (file[i] == '.') {
                end = i;
            }
        }
        for (std::size_t i = end; i < size; ++i) {
            path[i] = '\0';
        }
    }
};

}  // namespace Tul

#define TUL_LOG_RECORD(handle, severity, ...)                                                        \
    do {                                                                                             \
        Tul::LoggingWrapper& tulLog = Tul::LoggingWrapper::instance();                               \
        if (tulLog.get_level() >= (severity)) {                                                      \
            static constexpr Tul::SourceFile tulFile{__FILE__};                                      \
            tulLog.log_printf(__func__, severity, 1, __VA_ARGS__);                                   \
            tulLog.trace_v2_printf(handle, severity, tulFile.path, __func__, __LINE__, __VA_ARGS__); \
        }                                                                                            \
    } while (false)

#define TUL_TRACE_RECORD(handle, kind, ...)                                                    \
    do {                                                                                       \
        Tul::LoggingWrapper& tulLog = Tul::LoggingWrapper::instance();                         \
        if (tulLog.get_level() > 7) {                                                          \
            static constexpr Tul::SourceFile tulFile{__FILE__};                                \
            tulLog.trace_printf(tulFile.path, __func__, __LINE__, kind, __VA_ARGS__);          \
            tulLog.trace_v2_printf(handle, 14, tulFile.path, __func__, __LINE__, __VA_ARGS__); \
        }                                                                                      \
    } while (false)

#define TUL_ERROR(handle, ...) TUL_LOG_RECORD(handle, 3, __VA_ARGS__)
#define TUL_WARNING(handle, ...) TUL_LOG_RECORD(handle, 4, __VA_ARGS__)
#define TUL_INFO(handle, ...) TUL_LOG_RECORD(handle, 6, __VA_ARGS__)
#define TUL_TRACE_ENTRY(handle, ...) TUL_TRACE_RECORD(handle, 9, __VA_ARGS__)
#define TUL_TRACE_EXIT(handle, ...) TUL_TRACE_RECORD(handle, 10, __VA_ARGS__)
#define TUL_TRACE(handle, ...) TUL_TRACE_RECORD(handle, 0, __VA_ARGS__)

#endif
