#ifndef TUL_FOREIGN_HOST_PROCESS_H
#define TUL_FOREIGN_HOST_PROCESS_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What a component must leave in the host's process as it found it. */
struct Process {
    int descriptors;
    int threads;
    long residentKib; /* without what files back, which the kernel may load and drop as it likes; 0 under qemu */
    size_t heapBytes; /* what malloc has given out, unless a sanitizer does its work */
};

struct Process processNow(void);

/* As processNow, once there are that many threads; after five seconds, however many there are. The kernel lists a
 * thread a little longer than it takes to join it. */
struct Process processAtRest(int threads);

/* True while the file is mapped, under whatever name the kernel lists it. */
bool processMaps(const char* file);

#ifdef __cplusplus
}
#endif

#endif
