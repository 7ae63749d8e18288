#ifndef VORMA_SURROUNDINGS_H
#define VORMA_SURROUNDINGS_H

namespace Vorma {

/** Standard streams that the caller has closed lead nowhere, so that no file of ours gets their numbers. */
void holdStandardStreams();

/** None of the signals that the program lives by is blocked or ignored, but those of a write to a closed or full
 * place. */
void takeSignalsAfresh();

/**
 * Umask, folder, limits, niceness, scheduling, processors and the out-of-memory score become those of a daemon that
 * was started at boot, so that listeners get none of the caller's. What needs more privilege than we have stays.
 */
void shedTheCaller();

}  // namespace Vorma

#endif
