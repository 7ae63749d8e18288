#ifndef VORMA_RESTORING_H
#define VORMA_RESTORING_H

#include <string>

#include "Configuration.h"
#include "Deadline.h"
#include "Door.h"
#include "Sight.h"
#include "State.h"
#include "Store.h"

namespace Vorma {

/**
 * Puts in force again what the state says, after a run that was cut short and wherever a listener has died: by the
 * very file that was in force, as long as that is sound, and by none that sshd does not take. Doors that are as they
 * should be are not touched.
 */
Sight restoreAll(const Store& store, const Configuration& configuration, const State& state,
                 const Tul::Deadline& deadline);

/** The state that can be told of a store that was lost: what still serves is open, and can be locked. */
State adopted(const Store& store);

/** Puts one door's old file back, and its listener where it was; DoorFailure or another exception when it cannot. */
void putBack(const Store& store, const Configuration& configuration, const Door& door, const State& state,
             const std::vector<Endpoint>& held, const Tul::Deadline& deadline);

/** A quick look: nothing is left to do for the door. The listener that serves it, if any, is handed out. */
bool isInLine(const Store& store, const Door& door, const State& state, std::optional<Listener>& listener);

/** What the doors' listeners really do, in a few words. */
std::string inForce(const Store& store, const Configuration& configuration);

}  // namespace Vorma

#endif
