/* Any bytes as the component's configuration, against the rules worked out a second way. */

#include "FuzzFramework.h"
#include "Reading.h"
#include "Target.h"
#include "TulConfiguration.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;

void check(const std::string& text) {
    const Reading expected = expectedReading(text);
    const std::vector<Reading> actual = readings(text, 2);
    require(actual[0] == actual[1], "the same reader reads the same text twice in the same way");
    require(readings(text, 1)[0] == actual[0], "another reader reads the same text in the same way");
    require(actual[0].result == expected.result, "0 or -1, as by the rules");
    require(actual[0] == expected, "management, ports and time as by the rules");
}

/** What a framework that counts its bytes could hand over: the reader itself only gets texts up to their NUL. */
void checkNul(const std::string& bytes) {
    Tul::TulConfiguration configuration;
    bool loaded = true;
    try {
        configuration.load(bytes);
    } catch (const std::exception&) {
        loaded = false;
    }
    require(!loaded || bytes.find('\0') == std::string::npos, "bytes with a NUL among them are refused");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFramework framework;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    checkNul(bytes);
    check(bytes.c_str());
    return 0;
}
