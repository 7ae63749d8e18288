/* Any bytes as an adapter's answer to the question for its revision, against a reference that reads by letters. */

#include "FuzzFramework.h"
#include "ReferenceRevision.h"
#include "RevisionSubject.h"
#include "Target.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;
using Tul::VormaSpiVersion;

std::array<std::int32_t, 3> numbersOf(const VormaSpiVersion& version) {
    return {version.major, version.minor, version.patch};
}

std::string printed(const VormaSpiVersion& version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." + std::to_string(version.patch);
}

void check(const std::string& text) {
    const auto expected = expectedRevision(text);
    VormaSpiVersion version{5, 6, 7};
    require(readRevision(text, version) == expected.has_value(),
            "a revision exactly when it is one for the reference");
    require(numbersOf(version) == expected.value_or(std::array<std::int32_t, 3>{}), "its numbers, or all zero");
    VormaSpiVersion again{5, 6, 7};
    require(readRevision(printed(version), again), "a revision that is printed can be read");
    require(numbersOf(again) == numbersOf(version), "a revision that is printed reads the same");
    require(!(again < version) && !(version < again), "neither of two equal revisions is the smaller one");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFramework framework;
    check(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
