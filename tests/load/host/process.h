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
    long residentKib;
    size_t heapBytes; /* what malloc has given out, unless a sanitizer does its work */
};

struct Process processNow(void);

/* True while the file is mapped, under whatever name the kernel lists it. */
bool processMaps(const char* file);

#ifdef __cplusplus
}
#endif

#endif
