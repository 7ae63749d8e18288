#ifndef TUL_FUZZ_TARGET_H
#define TUL_FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>

/** What each target defines: takes any bytes and throws Violation when a rule does not hold. Always 0. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
