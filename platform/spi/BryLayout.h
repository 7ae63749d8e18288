#ifndef BRY_LAYOUT_H
#define BRY_LAYOUT_H

/*
 * Compile-time proof of record layouts.
 *
 * Both sides of the SPI are built apart from each other, so the place of every field is part of the
 * contract. Each record proves its own: the first number is the one of the 32-bit ARM node, the second
 * what natural alignment makes of the same fields on a 64-bit host.
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

#define BRY_LAYOUT_SIZE(record, on32, on64) BRY_LAYOUT_IS(sizeof(record), on32, on64, #record " has the wrong size")

#endif
