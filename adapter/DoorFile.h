#ifndef VORMA_DOOR_FILE_H
#define VORMA_DOOR_FILE_H

#include <optional>
#include <string>
#include <vector>

#include "Configuration.h"
#include "Endpoint.h"
#include "State.h"

namespace Vorma {

/** What a door's listener reads: rendered in full from the state, never edited, with a check sum at its end. */
class DoorFile {
public:
    /** As it has to be for the door on the port. */
    static std::string render(std::size_t door, int port, const State& state, const Configuration& configuration);

    /** The port that a file has; nothing when it is damaged, or not of this release. */
    static std::optional<int> portIn(const std::string& text);

    /** Where its listener listens: on all of one address, or on at least one of all addresses. */
    static std::vector<Endpoint> endpointsIn(const std::string& text);
};

}  // namespace Vorma

#endif
