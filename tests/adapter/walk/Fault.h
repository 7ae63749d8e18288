#ifndef TUL_WALK_FAULT_H
#define TUL_WALK_FAULT_H

#include <optional>
#include <string>
#include <vector>

#include "Call.h"

namespace TulTest {

enum class Mode { KillGroup, KillAlone, Fail };

constexpr const char* modes[] = {"kill-group", "kill-alone", "fail"};

/** What befalls a run: the adapter is killed at a call (after it, when it has an effect), or the call fails. */
struct Fault {
    Mode mode = Mode::KillGroup;
    CallAddress address;
    int error = 0;

    /** As --point takes it: "adapter.openat#12", with "=EMFILE" when it fails. */
    std::string text() const;
};

/** The reverse of Fault::text() without a mode; std::invalid_argument when it cannot be read. */
Fault readFault(const std::string& text);

/** A call of an undisturbed run. */
struct RecordedCall {
    CallAddress address;
    bool hasEffect = false;
    std::vector<int> failures;
};

}  // namespace TulTest

#endif
