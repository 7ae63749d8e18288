/*
 * Prints size, alignment and offset of every record of the SPI and of its fields, as this architecture has them: a
 * section for docs/abi.md.
 *
 * The list of fields is made from the headers. A field that it lacks leaves a hole that no alignment explains; then
 * this fails.
 */

#include <stdio.h>
#include <stdlib.h>

#include "layouts.h"

static const char* recordName = "";
static size_t recordSize;
static size_t recordAlignment = 1;
static size_t end; /* of the fields so far */

static void requireNoHole(size_t offset, size_t alignment, const char* before) {
    if (offset >= end + alignment) {
        fprintf(stderr, "error: %s has %zu bytes at %zu, before %s, that are no field of the list\n", recordName,
                offset - end, end, before);
        exit(1);
    }
}

static void record(const char* name, size_t size, size_t alignment) {
    requireNoHole(recordSize, recordAlignment, "its end");
    printf("| **%s** | | %zu | %zu |\n", name, size, alignment);
    recordName = name;
    recordSize = size;
    recordAlignment = alignment;
    end = 0;
}

static void field(const char* name, size_t offset, size_t size, size_t alignment) {
    requireNoHole(offset, alignment, name);
    printf("| `%s` | %zu | %zu | %zu |\n", name, offset, size, alignment);
    end = offset + size > end ? offset + size : end;
}

/* Alignments of fields are asked for in the compilers' own way: C's is for types alone. */
#define RECORD(name) record(#name, sizeof(name), __alignof__(name));
#define FIELD(name, part) \
    field(#part, offsetof(name, part), sizeof(((name*)NULL)->part), __alignof__(((name*)NULL)->part));

int main(void) {
    printf("## Layouts on " TUL_ARCHITECTURE
           "\n\n| Record, field | Offset | Size | Alignment |\n|---|--:|--:|--:|\n");
    LAYOUTS(RECORD, FIELD)
    requireNoHole(recordSize, recordAlignment, "its end");
    return 0;
}
