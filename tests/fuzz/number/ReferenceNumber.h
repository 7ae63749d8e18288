#ifndef TUL_FUZZ_REFERENCE_NUMBER_H
#define TUL_FUZZ_REFERENCE_NUMBER_H

#include <optional>
#include <string_view>

namespace TulFuzz {

/** What must become of a text that is read as an unsigned 32-bit number. */
struct ExpectedNumber {
    enum class Verdict { accepted, invalid, negative, tooLarge };

    Verdict verdict;
    std::optional<unsigned int> value; /**< what is written; none: the caller's variable stays as it is */
};

/** Reads letter by letter and compares numbers as texts: slow, and without the C library's conversions. */
ExpectedNumber expectedNumber(std::string_view text);

}  // namespace TulFuzz

#endif
