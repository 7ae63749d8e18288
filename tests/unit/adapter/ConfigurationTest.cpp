#include "Configuration.h"
#include "Refused.h"

namespace TulTest {
namespace {

using Vorma::Configuration;

// The suites of the whole program tell which values are refused, and in what words. These are the edges.

Configuration parse(const std::string& lines) {
    return Configuration::parse("STATE_DIR=/s\nBASE_CONFIG=/b\n" + lines, "/x/vorma.conf");
}

void expectRefused(const std::string& lines, const std::string& words) {
    expectRefusal(Vorma::Exit::Settings, testing::HasSubstr("/x/vorma.conf line 3: " + words), [&] { parse(lines); });
}

TEST(SettingsFile, HasPathsOfUpTo255Letters) {
    const std::string longest = "/" + std::string(254, 'a');
    EXPECT_EQ(longest, parse("SSHD=" + longest).sshd);
    expectRefused("SSHD=" + longest + "a", "SSHD='/aaa");
}

TEST(SettingsFile, HasRevisionsWhoseNumbersFit) {
    EXPECT_EQ((Vorma::Revision{1, 999999999, 12}), parse("SPI_REVISION=1.999999999.12").parsedRevision());
    for (const char* value : {"1.4294967297.0", "1.8.0.1", "1..0", "1.8.", "1.8.-1"}) {
        expectRefused(std::string("SPI_REVISION=") + value, "SPI_REVISION=");
    }
}

// A C function that reads the value would see only its beginning, and all of it would get into sshd's file.
TEST(SettingsFile, IsRefusedWithANulInAnyValue) {
    for (const std::string line : {"SSHD=/x", "LISTEN_ADDRESS=127.0.0.1", "SPI_REVISION=1.8.0", "CLISSH_CONFIG=/x"}) {
        expectRefused(line + '\0' + "y", line.substr(0, line.find('=')));
    }
}

}  // namespace
}  // namespace TulTest
