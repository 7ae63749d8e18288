#include "LoggingWrapper.h"

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "Escape.h"
#include "LogSinks.h"

namespace Tul {

namespace {

constexpr int levelWithoutFramework = 6;
constexpr int debugSeverity = 7;

/** Whoever writes a record between a failed call and the look at errno must find it unchanged. */
class KeepErrno {
public:
    KeepErrno() = default;
    ~KeepErrno() { errno = _errno; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;

private:
    const int _errno = errno;
};

/** Room for text: 1 KiB on the stack, more from the heap. The stack serves too when the heap is exhausted. */
class TextBuffer {
public:
    char* reserve(std::size_t size) noexcept {
        if (size > _size) {
            _long.reset(new (std::nothrow) char[size]);
            _size = _long == nullptr ? sizeof(_short) : size;
        }
        return data();
    }

    char* data() noexcept { return _long == nullptr ? _short : _long.get(); }
    std::size_t size() const noexcept { return _size; }

private:
    char _short[1024];
    std::unique_ptr<char[]> _long;
    std::size_t _size = sizeof(_short);
};

/** The finished text of a record, or its bare format when it cannot be made. */
__attribute__((format(printf, 2, 0))) const char* formatInto(TextBuffer& buffer, const char* format,
                                                             va_list args) noexcept {
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, args);
    bool complete = length >= 0 && static_cast<std::size_t>(length) < buffer.size();
    if (length >= 0 && !complete) {
        const std::size_t needed = static_cast<std::size_t>(length) + 1;
        buffer.reserve(needed);
        complete = buffer.size() >= needed && std::vsnprintf(buffer.data(), needed, format, again) >= 0;
    }
    va_end(again);
    return complete ? buffer.data() : format;
}

/** One write, so that records of several threads do not mix. */
void writeToStderr(int severity, const char* function, const char* text) noexcept {
    char prefix[256];
    std::snprintf(prefix, sizeof(prefix), "<%d>%s: ", severity, function);
    TextBuffer line;
    line.reserve((std::strlen(prefix) + std::strlen(text)) * escapedBytesPerByte + 1);
    std::size_t length = escape(prefix, line.data(), line.size() - 1);
    length += escape(text, line.data() + length, line.size() - 1 - length);
    line.data()[length] = '\n';
    // There is nobody left to be told of a failure.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), length + 1);
}

}  // namespace

LoggingWrapper& LoggingWrapper::instance() {
    static LoggingWrapper wrapper;
    return wrapper;
}

int LoggingWrapper::get_level() const noexcept {
    const KeepErrno keepErrno;
    const TulMwSpiLog_1* log = LogSinks::log();
    return log == nullptr ? levelWithoutFramework : log->getLevel();
}

void LoggingWrapper::log_printf(const char* function, int severity, int category, const char* format, ...) noexcept {
    const KeepErrno keepErrno;
    TextBuffer buffer;
    va_list args;
    va_start(args, format);
    const char* text = formatInto(buffer, format, args);
    va_end(args);
    if (const TulMwSpiLog_1* log = LogSinks::log()) {
        log->log(function, severity, category, format, text);
    } else {
        writeToStderr(severity, function, text);
    }
}

void LoggingWrapper::trace_printf(const char* sourceFile, const char* function, int line, int kind,
                                  const char* format, ...) noexcept {
    const KeepErrno keepErrno;
    TextBuffer buffer;
    va_list args;
    va_start(args, format);
    const char* text = formatInto(buffer, format, args);
    va_end(args);
    if (const BryMwSpiTrace* trace = LogSinks::trace()) {
        trace->trace(sourceFile, function, line, kind, format, text);
    } else {
        writeToStderr(debugSeverity, function, text);
    }
}

void LoggingWrapper::trace_v2_printf(const Trace::Handle& handle, int level, const char* sourceFile,
                                     const char* function, int line, const char* format, ...) noexcept {
    const KeepErrno keepErrno;
    const BryMwSpiTrace* trace = LogSinks::trace();
    if (trace == nullptr) {
        // Nothing is lost: this is the twin of a log record or of an older trace record, which was written.
        return;
    }
    TextBuffer buffer;
    va_list args;
    va_start(args, format);
    trace->traceV2(handle.subsystem, level, sourceFile, function, line, format, formatInto(buffer, format, args));
    va_end(args);
}

}  // namespace Tul
