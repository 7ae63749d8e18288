#ifndef VORMA_WATCH_H
#define VORMA_WATCH_H

#include "Deadline.h"
#include "Descriptor.h"
#include "Directory.h"

namespace Vorma {

/** Tells when a file in a folder was written, such as the number of a listener that has just begun to listen. */
class Watch {
public:
    /** Where no watch is to be had, await() only takes its time: it wakes, and proves nothing. */
    explicit Watch(const Directory& folder);

    /** Waits for that, for the end of a process, or for the moment. */
    void await(const Tul::Descriptor& process, const Tul::Deadline& deadline) const;

private:
    Tul::Descriptor _events;
};

}  // namespace Vorma

#endif
