#include "Words.h"

#include <algorithm>

#include "ReferenceNumber.h"

namespace TulFuzz {

namespace {

/** Decimal, without sign and without leading zeros. */
bool isPlainNumber(const std::string& word, unsigned int largest) {
    const ExpectedNumber number = expectedNumber(word);
    return number.verdict == ExpectedNumber::Verdict::accepted && number.value <= largest &&
           word == std::to_string(*number.value);
}

bool isValueOf(const std::string& option, const std::string& word) {
    if (option == "--ipQos") {
        return isPlainNumber(word, 255);
    }
    if (option == "--renegotiationTime") {
        return word == std::to_string(renegotiationTime);
    }
    return option == "--ciphers" || option == "--kexAlgorithms" || option == "--macs";
}

}  // namespace

Words portRun(const std::string& subsystem, unsigned int port, int state) {
    if (state == 0) {
        return {subsystem, "lock"};
    }
    return {subsystem, "unlock", "port", std::to_string(port)};
}

bool isBatch(const Words& words) {
    if (words.size() < 2 || words.front() != "ssh") {
        return false;
    }
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "--removeIpQoS") {
            continue;
        }
        if (i + 1 == words.size() || !isValueOf(words[i], words[i + 1])) {
            return false;
        }
        ++i;
    }
    return true;
}

bool asksForRevision(const Words& words) {
    return words == Words{"spi-revision"};
}

bool has(const Words& words, const std::string& option) {
    return std::find(words.begin(), words.end(), option) != words.end();
}

}  // namespace TulFuzz
