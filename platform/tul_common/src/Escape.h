#ifndef TUL_ESCAPE_H
#define TUL_ESCAPE_H

#include <cstddef>

namespace Tul {

/** How many bytes escaped text can have for each byte of its original. */
inline constexpr std::size_t escapedBytesPerByte = 4;

/**
 * Writes text to `to` so that it can be shown on a terminal and stays one line: control characters and bytes that
 * are not UTF-8 become \xNN. As much as fits into size bytes is written, without a terminating NUL; never half of
 * a character. Returns the number of bytes written.
 */
std::size_t escape(const char* text, char* to, std::size_t size) noexcept;

}  // namespace Tul

#endif
