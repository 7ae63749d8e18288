#ifndef VORMA_SSH_SETTING_H
#define VORMA_SSH_SETTING_H

#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace Vorma {

/** A revision of the command line. */
struct Revision {
    int major;
    int minor;
    int patch;

    bool operator==(const Revision&) const = default;
    bool operator<(const Revision& other) const {
        return std::tie(major, minor, patch) < std::tie(other.major, other.minor, other.patch);
    }
};

/** A setting that holds for all doors. A new one is one more row of the table. */
struct SshSetting {
    const char* name;    /**< in the state and in the status */
    const char* option;  /**< that sets it */
    const char* operand; /**< what the help calls its value */
    const char* removal; /**< the option that gives sshd its own choice back; null when there is none */
    Revision since;      /**< the revision in which the option came */
    const char* allowed; /**< for who gave something else */
    bool (*isAllowed)(std::string_view value);
    const char* keyword; /**< in sshd's file */
    bool lastCounts;     /**< of this keyword sshd takes the last value; of all others the first */
    std::string (*inFile)(const std::string& value);
    /** How `sshd -T` may print the value: in any of these spellings, its keyword in small letters before it. */
    std::vector<std::string> (*effective)(const std::string& value);
};

const std::vector<SshSetting>& sshSettings();

/** A plain decimal number without sign or leading zeros within bounds; else -1. */
long long number(std::string_view text, long long least, long long most);

}  // namespace Vorma

#endif
