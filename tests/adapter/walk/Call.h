#ifndef TUL_WALK_CALL_H
#define TUL_WALK_CALL_H

#include <sys/types.h>

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace TulTest {

/** Who makes a call: the adapter, a program that it runs, or sshd behind a door (its sessions included). */
enum class Maker { Adapter, Helper, Listener };

std::string nameOf(Maker maker);

/** A system call as its maker enters it. */
struct Call {
    pid_t pid = 0;
    Maker maker = Maker::Adapter;
    long code = 0;
    std::array<std::uint64_t, 6> arguments{};
};

/** "renameat2", or "call-123" where nothing hangs on the name. */
std::string nameOfCall(long code);

/** True for a call that changes something outside of its process. */
bool hasEffect(const Call& call);

/** True for a call that makes a process: vfork comes back to its maker only when the child has gone its own way. */
bool makesProcess(const Call& call);

bool isRename(const Call& call);
bool isSync(const Call& call);

/** With which error numbers the call may fail on a machine in trouble. The maker must still be in the call. */
std::vector<int> failuresOf(const Call& call);

/**
 * A call by its maker, its name and how often that maker had made it, as in "adapter.openat#12". That stays the same
 * from run to run where the number of a call in the whole tree does not, since processes run side by side.
 */
struct CallAddress {
    Maker maker = Maker::Adapter;
    long code = 0;
    int occurrence = 0;

    auto operator<=>(const CallAddress&) const = default;

    std::string text() const;

    /** The reverse of text(); nothing when it cannot be read. */
    static std::optional<CallAddress> read(const std::string& text);
};

/** What a call's arguments name, asked while its maker is stopped; empty when it cannot be told. */
std::string fileBehind(pid_t pid, std::uint64_t descriptor);
std::string renameTarget(const Call& call);

}  // namespace TulTest

#endif
