#include "SshSetting.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <set>

namespace Vorma {

namespace {

constexpr std::size_t longestList = 2048;
constexpr std::size_t longestName = 64;

/** sshd takes no longer one. */
constexpr long long longestRekey = 2147483647;

constexpr long long mostDscp = 63;

constexpr std::string_view nameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789@.+-";

bool isName(std::string_view name) {
    return !name.empty() && name.size() <= longestName && name[0] != '-' && name[0] != '+' &&
           name.find_first_not_of(nameCharacters) == std::string_view::npos;
}

/**
 * Plain names only: sshd would also take wildcards and lists relative to its defaults, and would end a list at an
 * empty name without a word.
 */
bool isList(std::string_view list) {
    std::set<std::string_view> seen;
    if (list.size() > longestList) {
        return false;
    }
    for (;;) {
        const std::size_t comma = std::min(list.find(','), list.size());
        if (!isName(list.substr(0, comma)) || !seen.insert(list.substr(0, comma)).second) {
            return false;
        }
        if (comma == list.size()) {
            return true;
        }
        list.remove_prefix(comma + 1);
    }
}

bool isDscp(std::string_view text) {
    return number(text, 0, mostDscp) >= 0;
}

bool isRekey(std::string_view text) {
    return text == "none" || number(text, 1, longestRekey) >= 0;
}

std::string asItIs(const std::string& value) {
    return value;
}

std::vector<std::string> onlyAsItIs(const std::string& value) {
    return {value};
}

/** sshd wants the whole byte, whose upper six bits the DSCP is. */
std::string byteOf(const std::string& dscp) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", static_cast<unsigned>(std::stoi(dscp)) << 2U);
    return text;
}

/** Some have a name, which sshd prints in place of the byte. */
std::string nameOf(int dscp) {
    constexpr int bitsBelowClass = 8;
    switch (dscp) {
        case 46:
            return "ef";
        case 1:
            return "le";
        case 2:
            return "throughput";
        case 4:
            return "lowdelay";
        default:
            break;
    }
    const int low = dscp % bitsBelowClass;
    const std::string upper = std::to_string(dscp / bitsBelowClass);
    if (low == 0) {
        return "cs" + upper;
    }
    return low % 2 == 0 ? "af" + upper + std::to_string(low / 2) : "";
}

/** Printed twice: for interactive and for other sessions. */
std::vector<std::string> dscpAsPrinted(const std::string& dscp) {
    const std::string byte = byteOf(dscp);
    const std::string name = nameOf(std::stoi(dscp));
    std::vector<std::string> spellings = {byte + " " + byte};
    if (!name.empty()) {
        spellings.push_back(name + " " + name);
    }
    return spellings;
}

std::string rekeyInFile(const std::string& seconds) {
    return "default " + seconds;
}

/** The first number is that of bytes: the default. */
std::vector<std::string> rekeyAsPrinted(const std::string& seconds) {
    return {"0 " + (seconds == "none" ? "0" : seconds)};
}

constexpr const char* aList = "names of letters, digits and @.+- with commas between, none twice";

}  // namespace

const std::vector<SshSetting>& sshSettings() {
    static const std::vector<SshSetting> rows = {
        {"ciphers", "--ciphers", "LIST", nullptr, {1, 7, 0}, aList, isList, "Ciphers", false, asItIs, onlyAsItIs},
        {"kexalgorithms",
         "--kexAlgorithms",
         "LIST",
         nullptr,
         {1, 7, 0},
         aList,
         isList,
         "KexAlgorithms",
         false,
         asItIs,
         onlyAsItIs},
        {"macs", "--macs", "LIST", nullptr, {1, 7, 0}, aList, isList, "MACs", false, asItIs, onlyAsItIs},
        {"dscp",
         "--ipQos",
         "DSCP",
         "--removeIpQoS",
         {1, 7, 0},
         "0 to 63",
         isDscp,
         "IPQoS",
         true,
         byteOf,
         dscpAsPrinted},
        {"renegotiationtime",
         "--renegotiationTime",
         "SECONDS|none",
         nullptr,
         {1, 8, 0},
         "1 to 2147483647 seconds, or none",
         isRekey,
         "RekeyLimit",
         false,
         rekeyInFile,
         rekeyAsPrinted},
    };
    return rows;
}

long long number(std::string_view text, long long least, long long most) {
    long long value = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool plain = error == std::errc() && end == text.data() + text.size() && text[0] != '-' &&
                       (text.size() == 1 || text[0] != '0');
    return plain && value >= least && value <= most ? value : -1;
}

}  // namespace Vorma
