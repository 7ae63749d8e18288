#ifndef TUL_MO_ATTRIBUTE_VALUE_3_H
#define TUL_MO_ATTRIBUTE_VALUE_3_H

/*
 * Values of managed-object attributes, as all MO and CM interfaces pass them.
 *
 * Byte order is the machine's; every supported one is little-endian. A value is written widened to its
 * 64-bit member and may be read through any narrower member of the same kind.
 */

#include <stdbool.h>
#include <stdint.h>

#include "BryLayout.h"

/*
 * Type codes. 12 is fixed, the others are the development edition's. In C++ the underlying type is fixed,
 * so that a code which is not listed can be stored and compared.
 */
#ifdef __cplusplus
enum TulOamSpiMoAttributeType_3 : int32_t
#else
typedef int32_t TulOamSpiMoAttributeType_3;
enum
#endif
{
    TUL_MO_TYPE_INT8_3 = 1,
    TUL_MO_TYPE_INT16_3 = 2,
    TUL_MO_TYPE_INT32_3 = 3,
    TUL_MO_TYPE_INT64_3 = 4,
    TUL_MO_TYPE_UINT8_3 = 5,
    TUL_MO_TYPE_UINT16_3 = 6,
    TUL_MO_TYPE_UINT32_3 = 7,
    TUL_MO_TYPE_UINT64_3 = 8,
    TUL_MO_TYPE_BOOLEAN_3 = 9,
    TUL_MO_TYPE_STRING_3 = 10,
    TUL_MO_TYPE_REFERENCE_3 = 11, /* the DN of another MO, in asString */
    TUL_MO_TYPE_ENUMERATION_3 = 12
};

BRY_LAYOUT_SIZE(TulOamSpiMoAttributeType_3, 4, 4);
BRY_LAYOUT_NUMBER(TUL_MO_TYPE_ENUMERATION_3, 12);

typedef union TulMoAttributeValue_3 {
    int64_t asInt64;      /* all signed integers, widened */
    uint64_t asUint64;    /* all unsigned integers and booleans, widened */
    int32_t asEnum;       /* an enumeration is the first 32-bit word, signed */
    uint8_t asUint8;      /* the low byte of an unsigned integer */
    const char* asString; /* NUL-terminated UTF-8; owned by the container */
} TulMoAttributeValue_3;

BRY_LAYOUT_SIZE(TulMoAttributeValue_3, 8, 8);

/* All values of one attribute. No value is: a null container, nrOfValues 0, or null values. */
typedef struct TulMoAttributeValueContainer_3 {
    TulOamSpiMoAttributeType_3 type;
    uint32_t nrOfValues;
    TulMoAttributeValue_3* values; /* nrOfValues of them */
} TulMoAttributeValueContainer_3;

BRY_LAYOUT_OFFSET(TulMoAttributeValueContainer_3, type, 0, 0);
BRY_LAYOUT_OFFSET(TulMoAttributeValueContainer_3, nrOfValues, 4, 4);
BRY_LAYOUT_OFFSET(TulMoAttributeValueContainer_3, values, 8, 8);
BRY_LAYOUT_SIZE(TulMoAttributeValueContainer_3, 12, 16);

/* An attribute with its name: what createMo takes. */
typedef struct TulMoNamedAttribute_3 {
    const char* name;
    TulMoAttributeValueContainer_3 value;
} TulMoNamedAttribute_3;

BRY_LAYOUT_OFFSET(TulMoNamedAttribute_3, name, 0, 0);
BRY_LAYOUT_OFFSET(TulMoNamedAttribute_3, value, 4, 8);
BRY_LAYOUT_SIZE(TulMoNamedAttribute_3, 16, 24);

/*
 * How the framework hands a container to a reader and takes it back. The reader calls release exactly once
 * with a container that is not null; a null release means that there is nothing to give back.
 */
typedef struct TulMoAttributeValueResult_3 {
    void (*release)(TulMoAttributeValueContainer_3* container);
    TulMoAttributeValueContainer_3* container;
} TulMoAttributeValueResult_3;

BRY_LAYOUT_OFFSET(TulMoAttributeValueResult_3, release, 0, 0);
BRY_LAYOUT_OFFSET(TulMoAttributeValueResult_3, container, 4, 8);
BRY_LAYOUT_SIZE(TulMoAttributeValueResult_3, 8, 16);

#endif
