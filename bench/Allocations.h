#ifndef TUL_BENCH_ALLOCATIONS_H
#define TUL_BENCH_ALLOCATIONS_H

#include <cstddef>

namespace TulBench {

/** How many blocks the whole process has asked malloc, calloc, realloc and new for so far. */
std::size_t allocations();

}  // namespace TulBench

#endif
