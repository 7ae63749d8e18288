#ifndef TUL_BENCH_SCRIPT_H
#define TUL_BENCH_SCRIPT_H

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace TulBench {

/** A command line: the path of a program and its arguments. */
using Command = std::vector<std::string>;

/** Starts it by a bare posix_spawn: nothing is redirected. std::runtime_error when it cannot be run. */
pid_t start(const Command& command);

/** Waits for a process; std::runtime_error unless it exits with 0. */
void await(pid_t pid, const Command& command);

/** Runs it, and tells how many bytes of memory it had resident when it had most of them. Takes its time. */
std::size_t residentAtMost(const Command& command);

/** The least that a run with its output can cost: posix_spawn, read, waitpid. */
std::string runBySpawn(const Command& command);

/** The same with fork and exec. */
std::string runByFork(const Command& command);

/** The same with POCO's launcher. */
std::string runByPoco(const Command& command);

}  // namespace TulBench

#endif
