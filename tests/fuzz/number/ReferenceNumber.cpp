#include "ReferenceNumber.h"

#include <algorithm>

namespace TulFuzz {

namespace {

using Verdict = ExpectedNumber::Verdict;

constexpr std::string_view largest = "4294967295";

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

/** Digits without leading zeros. */
bool isTooLarge(std::string_view digits) {
    return digits.size() > largest.size() || (digits.size() == largest.size() && digits > largest);
}

unsigned int numberOf(std::string_view digits) {
    unsigned int number = 0;
    for (const char digit : digits) {
        number = number * 10 + static_cast<unsigned int>(digit - '0');
    }
    return number;
}

}  // namespace

ExpectedNumber expectedNumber(std::string_view text) {
    if (text.empty() || std::string_view(" \t\n\v\f\r").find(text.front()) != std::string_view::npos) {
        return {Verdict::invalid, {}};
    }
    if (text.front() == '-') {
        return {Verdict::negative, {}};
    }
    const char* const begin = text.data() + (text.front() == '+' ? 1 : 0);
    const char* const textEnd = text.data() + text.size();
    const char* const end = std::find_if_not(begin, textEnd, isDigit);
    const char* const first = std::find_if(begin, end, [](char digit) { return digit != '0'; });
    const std::string_view digits(first, static_cast<std::size_t>(end - first));
    if (isTooLarge(digits)) {
        return {Verdict::tooLarge, {}};
    }
    const bool whole = begin != end && end == textEnd;
    return {whole ? Verdict::accepted : Verdict::invalid, numberOf(digits)};
}

}  // namespace TulFuzz
