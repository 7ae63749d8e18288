#ifndef BRY_LAYOUT_H
#define BRY_LAYOUT_H

/*
 * Compile-time proof of layouts and numbers.
 *
 * Both sides of the SPI are built apart from each other, so the place of every field, the width of every type
 * and the numbers that are passed are part of the contract. Each header proves its own: the first number is the
 * one of the 32-bit ARM node, the second what natural alignment makes of the same fields on a 64-bit host.
 */

#include <stddef.h>

#ifdef __cplusplus
#define BRY_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define BRY_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

#define BRY_LAYOUT_IS(what, on32, on64, text) \
    BRY_STATIC_ASSERT((sizeof(void*) == 4 && (what) == (on32)) || (sizeof(void*) == 8 && (what) == (on64)), text)

#define BRY_LAYOUT_OFFSET(record, field, on32, on64) \
    BRY_LAYOUT_IS(offsetof(record, field), on32, on64, #record "." #field " is out of place")

#define BRY_LAYOUT_SIZE(type, on32, on64) BRY_LAYOUT_IS(sizeof(type), on32, on64, #type " has the wrong size")

#define BRY_LAYOUT_NUMBER(name, number) BRY_STATIC_ASSERT((name) == (number), #name " is another number")

#endif
