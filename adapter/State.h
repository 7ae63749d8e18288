#ifndef VORMA_STATE_H
#define VORMA_STATE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Doors.h"

namespace Vorma {

/** Ports go from 1 to 65535. */
inline constexpr long long mostPort = 65535;

/** What was asked for and is in force: the one truth, of which every file of sshd is made. */
struct State {
    State();

    /** The port of each door that is open. */
    std::array<std::optional<int>, doorCount> ports;

    /** Since when each door is as it is, in seconds of the epoch; 0: nobody has written it down. */
    std::array<std::int64_t, doorCount> since{};

    /** The value of each setting that was set, in the order of the table. */
    std::vector<std::optional<std::string>> settings;

    bool operator==(const State&) const = default;

    /** As it is written down: a version, only what is set, and a check sum at the end. */
    std::string text() const;

    /**
     * Reads what any release has written; nothing when it is damaged. Refusal with Exit::Store, naming the file,
     * when it is sound but says more than this release knows.
     */
    static std::optional<State> read(const std::string& text, const std::string& file);
};

}  // namespace Vorma

#endif
