#ifndef VORMA_WATCH_H
#define VORMA_WATCH_H

#include <signal.h>

#include "Deadline.h"
#include "Descriptor.h"
#include "Directory.h"

namespace Vorma {

/**
 * Tells when a file in a folder was made or written, such as the number of a listener that has just begun to listen.
 * By the kernel's older means, a signal: to close the newer one, inotify, takes 12 ms, more than a whole lock.
 *
 * One at a time in a process. Where there is no such means, await() only takes its time: it wakes, and proves
 * nothing.
 */
class Watch {
public:
    explicit Watch(const Directory& folder);
    ~Watch();

    /** Waits for that, for the end of a process, or for the moment. */
    void await(const Tul::Descriptor& process, const Tul::Deadline& deadline) const;

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    Tul::Descriptor _folder;
    sigset_t _before{}; /**< the signals that were blocked before: while waiting, none but these */
};

}  // namespace Vorma

#endif
