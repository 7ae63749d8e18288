#ifndef VORMA_DOORS_H
#define VORMA_DOORS_H

#include <array>
#include <cstddef>

namespace Vorma {

/** A door: a port of the node that a listener of its own serves. A third door is one more row. */
struct DoorRow {
    const char* name;    /**< in command lines, in the state, of its files */
    const char* setting; /**< the key in vorma.conf of what this door alone serves */
};

inline constexpr std::array doorRows = {
    DoorRow{"clissh", "CLISSH_CONFIG"},
    DoorRow{"netconfssh", "NETCONFSSH_CONFIG"},
};

inline constexpr std::size_t doorCount = doorRows.size();

}  // namespace Vorma

#endif
