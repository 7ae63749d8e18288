#include "Descriptor.h"

#include <fcntl.h>

#include "SystemCall.h"

namespace Tul {

namespace {

constexpr int firstAboveStandard = STDERR_FILENO + 1;

}  // namespace

Descriptor aboveStandard(Descriptor descriptor) {
    if (descriptor.number() >= firstAboveStandard) {
        return descriptor;
    }
    return Descriptor(succeeding("cannot be run, no descriptor left",
                                 [&] { return fcntl(descriptor.number(), F_DUPFD_CLOEXEC, firstAboveStandard); }));
}

Pipe::Pipe() {
    int ends[2];
    succeeding("cannot be run, no pipe", [&] { return pipe2(ends, O_CLOEXEC); });
    Descriptor lowReadEnd(ends[0]);
    Descriptor lowWriteEnd(ends[1]);
    readEnd = aboveStandard(std::move(lowReadEnd));
    writeEnd = aboveStandard(std::move(lowWriteEnd));
}

}  // namespace Tul
