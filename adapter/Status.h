#ifndef VORMA_STATUS_H
#define VORMA_STATUS_H

#include <string>

#include "Configuration.h"

namespace Vorma {

/**
 * What is wanted of each door, what its listener does, since when, what differs and why. Only looks, and waits for
 * nobody: it may meet a change half way. One fact a line, or JSON.
 */
std::string status(const Configuration& configuration, bool json);

}  // namespace Vorma

#endif
