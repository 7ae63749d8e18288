#ifndef TUL_EXPORT_H
#define TUL_EXPORT_H

/** Marks what libtul_common offers to others: everything is built with hidden visibility. */
#define TUL_EXPORT __attribute__((visibility("default")))

#endif
