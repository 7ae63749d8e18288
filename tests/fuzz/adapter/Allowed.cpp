#include "Allowed.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace TulFuzz {

namespace {

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

bool isAlphanumeric(char letter) {
    return isDigit(letter) || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

bool isOneOf(char letter, std::string_view letters) {
    return letters.find(letter) != std::string_view::npos;
}

/** Of two numbers without leading zeros. */
bool isAtMost(std::string_view one, std::string_view other) {
    return one.size() < other.size() || (one.size() == other.size() && one <= other);
}

bool isName(std::string_view text) {
    return !text.empty() && text.size() <= 64 && !isOneOf(text.front(), "+-") &&
           std::all_of(text.begin(), text.end(),
                       [](char letter) { return isAlphanumeric(letter) || isOneOf(letter, "@.+-"); });
}

bool isList(std::string_view text) {
    std::vector<std::string> names = split(text, ',');
    const bool allNames = std::all_of(names.begin(), names.end(), isName);
    std::sort(names.begin(), names.end());
    return text.size() <= 2048 && allNames && std::adjacent_find(names.begin(), names.end()) == names.end();
}

bool isAddressOfSix(std::string_view text) {
    const bool plain = std::all_of(text.begin(), text.end(),
                                   [](char letter) { return isDigit(letter) || isOneOf(letter, "abcdefABCDEF:."); });
    in6_addr address;
    return plain && inet_pton(AF_INET6, std::string(text).c_str(), &address) == 1;
}

}  // namespace

bool isNumber(std::string_view text, std::string_view least, std::string_view most) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit) &&
           (text.size() == 1 || text.front() != '0') && isAtMost(least, text) && isAtMost(text, most);
}

bool isPort(std::string_view text) {
    return isNumber(text, "1", "65535");
}

bool isPath(std::string_view text) {
    return !text.empty() && text.front() == '/' && text.size() <= 255 &&
           std::all_of(text.begin(), text.end(),
                       [](char letter) { return isAlphanumeric(letter) || isOneOf(letter, "._/+@:=,-"); });
}

bool isRevision(std::string_view text) {
    const std::vector<std::string> numbers = split(text, '.');
    return text.size() <= 20 && numbers.size() == 3 &&
           std::all_of(numbers.begin(), numbers.end(), [](const std::string& number) {
               return !number.empty() && number.size() <= 9 && std::all_of(number.begin(), number.end(), isDigit);
           });
}

bool isAddressOfFour(std::string_view text) {
    const std::vector<std::string> numbers = split(text, '.');
    return numbers.size() == 4 && std::all_of(numbers.begin(), numbers.end(),
                                              [](const std::string& number) { return isNumber(number, "0", "255"); });
}

bool isAddress(std::string_view text) {
    return isAddressOfFour(text) || isAddressOfSix(text);
}

bool isSetting(std::string_view name, std::string_view value) {
    if (name == "dscp") {
        return isNumber(value, "0", "63");
    }
    if (name == "renegotiationtime") {
        return value == "none" || isNumber(value, "1", "2147483647");
    }
    return isList(value);
}

std::vector<std::string> split(std::string_view text, char at) {
    std::vector<std::string> parts(1);
    for (const char letter : text) {
        if (letter == at) {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

std::string sumOf(std::string_view text, std::string_view mark) {
    constexpr std::uint32_t polynomial = 0xEDB88320;
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char letter : text) {
        sum ^= static_cast<unsigned char>(letter);
        for (int bit = 0; bit < 8; ++bit) {
            sum = sum >> 1U ^ ((sum & 1U) != 0 ? polynomial : 0);
        }
    }
    char digits[16];
    std::snprintf(digits, sizeof digits, " %08x\n", static_cast<unsigned>(~sum));
    return std::string(mark) + digits;
}

}  // namespace TulFuzz
