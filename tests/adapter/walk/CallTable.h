#ifndef TUL_WALK_CALL_TABLE_H
#define TUL_WALK_CALL_TABLE_H

#include <array>

namespace TulTest {

/** What calls of a kind do, and how they may fail. */
struct Trait {
    enum class Kind { Process, Open, Duplicate, Rename, Sync, Plain };

    bool hasEffect = false;
    std::array<int, 3> errors{};  ///< error numbers; 0: no more
    bool onDisk = false;          ///< fails only where the first argument is a file on a disk
    bool ofAdapter = false;       ///< fails only for the adapter: for sshd the others are enough
    Kind kind = Kind::Plain;
};

struct NamedCall {
    long code;
    const char* name;
    const Trait* trait;
};

/** By its number or its name; the null pointer for calls on which nothing hangs. */
const NamedCall* findCall(long code);
const NamedCall* findCall(const char* name);

/** The traits of a call; plain ones when nothing hangs on it. */
const Trait& traitOf(long code);

}  // namespace TulTest

#endif
