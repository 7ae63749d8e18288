#ifndef TUL_FUZZ_REFERENCE_REVISION_H
#define TUL_FUZZ_REFERENCE_REVISION_H

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace TulFuzz {

/** major, minor and patch of a text, or nothing when it is no revision. Reads letter by letter, without streams. */
std::optional<std::array<std::int32_t, 3>> expectedRevision(std::string_view text);

}  // namespace TulFuzz

#endif
