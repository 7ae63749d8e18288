#ifndef TUL_TEST_PROCESS_TABLE_H
#define TUL_TEST_PROCESS_TABLE_H

#include <sys/types.h>

#include <filesystem>
#include <optional>

namespace TulTest {

/** Members of a process group that are alive; the dead that nobody has reaped do not count. */
int livingMembers(pid_t group);

/** False also for the dead that nobody has reaped. */
bool isAlive(pid_t pid);

/** Waits, bounded, until the group has no living member. */
bool groupDies(pid_t group);

/** The number that a script wrote into a file; nothing when there is no complete line yet. */
std::optional<pid_t> readPid(const std::filesystem::path& file);

/** As above; waits for it, bounded. */
pid_t awaitPid(const std::filesystem::path& file);

}  // namespace TulTest

#endif
