#ifndef TUL_CAPTURED_STREAM_H
#define TUL_CAPTURED_STREAM_H

#include <cstddef>
#include <string>

#include "Descriptor.h"

namespace Tul {

/** Reads a pipe to its end and keeps a part of what comes, so that the writer never waits and memory is bounded. */
class CapturedStream {
public:
    enum class Keep { First, Last };

    /** Keeps the first or the last `limit` bytes. */
    CapturedStream(Descriptor readEnd, Keep keep, std::size_t limit);

    /** Negative after the end of the stream. */
    int descriptor() const { return _readEnd.number(); }

    /** Reads once, waiting for nothing if poll() has found it readable. std::system_error when it cannot. */
    void read();

    std::string& text() { return _text; }

private:
    void keep(const char* data, std::size_t size);

    Descriptor _readEnd;
    const Keep _keep;
    const std::size_t _limit;
    std::string _text;
};

}  // namespace Tul

#endif
