#ifndef VORMA_SIGHT_H
#define VORMA_SIGHT_H

#include <array>
#include <optional>
#include <string>

#include "Doors.h"
#include "Listener.h"

namespace Vorma {

/** What a run has found out about a door before it changes anything. */
struct Seen {
    std::optional<Listener> listener; /**< that serves it as the state says; none: it is closed, or was put right */
    std::optional<std::string> complaint; /**< why it is not as the state says, and could not be put right */
};

using Sight = std::array<Seen, doorCount>;

}  // namespace Vorma

#endif
