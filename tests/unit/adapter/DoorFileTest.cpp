#include <gtest/gtest.h>

#include "CheckSum.h"
#include "DoorFile.h"
#include "Request.h"

namespace TulTest {
namespace {

using Vorma::DoorFile;
using Vorma::Endpoint;
using Vorma::Request;

Vorma::Configuration aConfiguration() {
    Vorma::Configuration configuration;
    configuration.stateDirectory = "/s";
    configuration.baseConfig = "/base";
    configuration.doorConfigs = {"/cli", "/netconf"};
    configuration.listenAddress = "::1";
    return configuration;
}

// sshd takes the first value that it meets, of IPQoS the last. Ports and addresses it would add up.
TEST(DoorFile, HasWhatWasSetBeforeTheOperatorsFilesAndTheMarkingBehindThem) {
    const Vorma::State state = Request::parse({"ssh", "--ipQos", "5", "--renegotiationTime", "none", "--macs", "m",
                                               "--kexAlgorithms", "k", "--ciphers", "c,d"})
                                   .applyTo({});
    EXPECT_EQ(Vorma::withCheckSum("# Rendered by vorma; changes made here are lost.\n"
                                  "Port 830\nListenAddress ::1\nPidFile /s/netconfssh.pid\n"
                                  "Ciphers c,d\nKexAlgorithms k\nMACs m\nRekeyLimit default none\n"
                                  "Include /netconf\nInclude /base\nIPQoS 0x14\n",
                                  "# sum"),
              DoorFile::render(1, 830, state, aConfiguration()));
}

TEST(DoorFile, HasOnlyWhatIsSet) {
    Vorma::Configuration configuration;
    configuration.stateDirectory = "/s";
    configuration.baseConfig = "/base";
    EXPECT_EQ(Vorma::withCheckSum("# Rendered by vorma; changes made here are lost.\n"
                                  "Port 22\nPidFile /s/clissh.pid\nInclude /base\n",
                                  "# sum"),
              DoorFile::render(0, 22, {}, configuration));
}

TEST(DoorFile, TellsPortAndAddresses) {
    const std::string one = DoorFile::render(0, 65535, {}, aConfiguration());
    const std::string all = DoorFile::render(0, 22, {}, {});
    EXPECT_EQ(65535, DoorFile::portIn(one));
    EXPECT_EQ(std::vector{*Endpoint::parse("::1", 65535)}, DoorFile::endpointsIn(one));
    EXPECT_EQ((std::vector{*Endpoint::parse("0.0.0.0", 22), *Endpoint::parse("::", 22)}), DoorFile::endpointsIn(all));
}

// A damaged file must not lead to a port that nobody asked for.
TEST(DoorFile, TellsNoPortWhenItIsNotAsItWasRendered) {
    const std::string text = DoorFile::render(0, 22, {}, aConfiguration());
    for (const std::string& other : {std::string(), text + "Port 23\n", text.substr(1), "#" + text,
                                     std::string("# Rendered\nPort 22\nInclude /base\n# end\n")}) {
        EXPECT_EQ(std::nullopt, DoorFile::portIn(other)) << other;
        EXPECT_TRUE(DoorFile::endpointsIn(other).empty()) << other;
    }
    EXPECT_EQ(std::nullopt, DoorFile::portIn(Vorma::withCheckSum("# Rendered\nInclude /base\n", "# sum")));
}

}  // namespace
}  // namespace TulTest
