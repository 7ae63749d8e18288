#ifndef TUL_FOREIGN_HOST_FRAMEWORK_H
#define TUL_FOREIGN_HOST_FRAMEWORK_H

#include <stdbool.h>
#include <stddef.h>

#include "BryMgmtSpiComponent_2.h"
#include "BryOamSpiCmEvent_Notification_1.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The smallest framework that a component can live in: one component, one thread, and a model of a few MOs.
 */

enum { MOST_CONSUMERS = 8, MOST_RUNS = 32, LONGEST_RUN = 256, LONGEST_COMPLAINTS = 1024 };

/* What the framework has seen since the last frameworkForget(). */
struct Seen {
    char runs[MOST_RUNS][LONGEST_RUN]; /* the words of each adapter run, with blanks between them */
    int runCount;
    char complaints[LONGEST_COMPLAINTS]; /* the errors and warnings in the log, each with "; " behind it */
};

/* What a component holds, and must not hold any more when it is gone. */
struct Held {
    int consumers;
    int subscriptions;
    int containers;
    int transactions;
    BryMgmtSpiComponent_2* component;
};

extern struct Seen frameworkSeen;
extern struct Held frameworkHeld;
extern int frameworkLogLevel; /* 15, all records, until somebody sets it */

/* Sets up libtul_common with this framework and a folder of scripts. */
BryReturnT frameworkAttach(const char* scriptFolder);

const BryMgmtSpiPortalAccessor* frameworkAccessor(void);

/* Deletes the MOs that a component has made, and forgets what was seen. */
void frameworkForget(void);

/* Hands an event to the consumer that subscribed with this pattern. False: there is none. */
bool frameworkNotify(const char* pattern, BryOamSpiCmEvent_Event_1* event);

/* The same with a whole notification. */
bool frameworkDeliver(const char* pattern, BryOamSpiCmEvent_Notification_1T* notification);

#ifdef __cplusplus
}
#endif

#endif
