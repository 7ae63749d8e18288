#ifndef TUL_WALK_PROCESSES_H
#define TUL_WALK_PROCESSES_H

#include <sys/types.h>

#include <compare>
#include <string>
#include <vector>

namespace TulTest {

/** A process and when it began, since numbers are used again. */
struct Process {
    pid_t pid = 0;
    std::string began;

    auto operator<=>(const Process&) const = default;
};

/** Its words, a blank between them; empty when it is gone or a zombie. */
std::string commandLine(pid_t pid);

/** From /proc/PID/status: a number of the line that begins with the key; -1 when there is none. */
pid_t statusNumber(pid_t pid, const std::string& key);

bool isAlive(pid_t pid);
Process processOf(pid_t pid);
std::vector<pid_t> allProcesses();

/** Ours that have the text in their command line. */
std::vector<pid_t> processesNaming(const std::string& text);

/** The sshd listeners that read the file, without their sessions and without those that only check it. */
std::vector<Process> listenersOf(const std::string& file);
bool isListenerOf(const std::string& commandLine, const std::string& file);

/** Kills all that name the text until none is left. */
void sweep(const std::string& text);

}  // namespace TulTest

#endif
