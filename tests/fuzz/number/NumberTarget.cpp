/* Any bytes as the text of a number, against a reference that reads letter by letter. */

#include "NumberSubject.h"
#include "ReferenceNumber.h"
#include "StringConversion.h"
#include "Target.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;
using Verdict = ExpectedNumber::Verdict;

Verdict verdictOn(const std::string& text, unsigned int& value) {
    try {
        require(convert(text, value), "a conversion that does not throw returns true");
        return Verdict::accepted;
    } catch (const Tul::InvalidStringException&) {
        return Verdict::invalid;
    } catch (const Tul::UnsignedIntExpectedException&) {
        return Verdict::negative;
    } catch (const Tul::ValueRangeException&) {
        return Verdict::tooLarge;
    }
}

void check(const std::string& text, unsigned int before) {
    const ExpectedNumber expected = expectedNumber(text);
    unsigned int value = before;
    require(verdictOn(text, value) == expected.verdict, "accepted or refused by the same exception as the reference");
    require(value == expected.value.value_or(before), "the same number is left as by the reference");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    // Two different values before, so that one that stays is told from one that is written.
    check(text, 777);
    check(text, 778);
    return 0;
}
