#ifndef TUL_SPAWN_H
#define TUL_SPAWN_H

#include <sys/types.h>

namespace Tul {

/** What a started program leads. */
enum class Leads { Group, Session };

/**
 * Starts a program with the three standard descriptors given, no other, the environment PATH alone, and no signal
 * blocked or ignored. argv is null-terminated and begins with the path.
 *
 * Returns its process number; std::system_error when it cannot be run.
 */
pid_t spawn(char* const* argv, int in, int out, int err, Leads leads = Leads::Group);

}  // namespace Tul

#endif
