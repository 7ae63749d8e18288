#ifndef BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1_H
#define BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1_H

/*
 * The notification of a configuration change: what one commit did to the MOs that a subscription asks for.
 *
 * Event type: "BryOamSpiCmEvent_Notification_1". Filter: pairs with the name
 * "BryOamSpiCmEvent_FilterTypeRegExp_1", each value a regular expression (POSIX extended syntax). An event
 * matches when one of the expressions is found in the DN of its MO.
 *
 * Ownership: the record and everything that it points to belong to the framework and are valid during the
 * callback only.
 */

#include <stdint.h>

#include "TulMoAttributeValue_3.h"

#define BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1 "BryOamSpiCmEvent_Notification_1"
#define BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1 "BryOamSpiCmEvent_FilterTypeRegExp_1"

/* In C++ the underlying type is fixed, so that a type which is not listed can be stored and compared. */
#ifdef __cplusplus
enum CmEventType : int32_t
#else
typedef int32_t CmEventType;
enum
#endif
{
    CREATED = 1,           /* attributes: all that were given a value */
    DELETED = 2,           /* attributes: none */
    ATTRIBUTES_CHANGED = 3 /* attributes: those that have another value now */
};

BRY_LAYOUT_SIZE(CmEventType, 4, 4);
BRY_LAYOUT_NUMBER(CREATED, 1);
BRY_LAYOUT_NUMBER(DELETED, 2);
BRY_LAYOUT_NUMBER(ATTRIBUTES_CHANGED, 3);

typedef struct BryOamSpiCmEvent_Attribute_1 {
    const char* name;
    TulOamSpiMoAttributeType_3 type;
    uint32_t nrOfValues; /* 0: the attribute has no value any more */
    TulMoAttributeValue_3* values;
} BryOamSpiCmEvent_Attribute_1;

BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Attribute_1, name, 0, 0);
BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Attribute_1, type, 4, 8);
BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Attribute_1, nrOfValues, 8, 12);
BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Attribute_1, values, 12, 16);

typedef struct BryOamSpiCmEvent_Event_1 {
    const char* dn; /* from ManagedElement down, "Class=key" parts with commas; may be null */
    CmEventType eventType;
    BryOamSpiCmEvent_Attribute_1** attributes; /* null-terminated */
} BryOamSpiCmEvent_Event_1;

BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Event_1, dn, 0, 0);
BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Event_1, eventType, 4, 8);
BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Event_1, attributes, 8, 16);

typedef struct BryOamSpiCmEvent_Notification_1T {
    uint32_t reserved[5];              /* the framework's; a consumer does not read them */
    BryOamSpiCmEvent_Event_1** events; /* null-terminated, in the order of the changes */
} BryOamSpiCmEvent_Notification_1T;

BRY_LAYOUT_OFFSET(BryOamSpiCmEvent_Notification_1T, events, 20, 24);

#endif
