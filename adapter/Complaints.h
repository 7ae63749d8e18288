#ifndef VORMA_COMPLAINTS_H
#define VORMA_COMPLAINTS_H

#include <cstddef>
#include <map>
#include <string>

namespace Vorma {

/** Why doors, by their index, are not as the state says. */
using Complaints = std::map<std::size_t, std::string>;

}  // namespace Vorma

#endif
