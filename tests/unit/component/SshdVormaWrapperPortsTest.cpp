#include "SshdVormaWrapperTest.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using SshdVormaWrapperPorts = SshdVormaWrapperTest;

struct Port {
    unsigned int number;
    const char* text;
};

void PrintTo(const Port& port, std::ostream* stream) {
    *stream << port.text;
}

class SshdVormaWrapperPort : public SshdVormaWrapperTest, public testing::WithParamInterface<Port> {};

TEST_P(SshdVormaWrapperPort, IsOpenedByOneRunOfFourWords) {
    EXPECT_TRUE(wrapper.enablePorts("clissh", GetParam().number, ample));
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("clissh", "unlock", "port", GetParam().text)));
    EXPECT_THAT(framework.records, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Numbers, SshdVormaWrapperPort,
                         testing::Values(Port{0, "0"}, Port{22, "22"}, Port{65536, "65536"},
                                         Port{2147483648U, "2147483648"}, Port{4294967295U, "4294967295"}),
                         [](const auto& test) { return std::string(test.param.text); });

TEST_F(SshdVormaWrapperPorts, AreOpenedForTheNamedSubsystem) {
    EXPECT_TRUE(wrapper.enablePorts("netconfssh", 830, ample));
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("netconfssh", "unlock", "port", "830")));
}

TEST_F(SshdVormaWrapperPorts, AreClosedByOneRunOfTwoWords) {
    EXPECT_TRUE(wrapper.disablePorts("clissh", ample));
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("clissh", "lock")));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(SshdVormaWrapperPorts, OfUnknownSubsystemsArePassedOnUnchanged) {
    EXPECT_TRUE(wrapper.disablePorts("some other; one", ample));
    EXPECT_TRUE(wrapper.disablePorts("", ample));
    EXPECT_TRUE(wrapper.enablePorts("$(x)", 1, ample));
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("some other; one", "lock"), ElementsAre("", "lock"),
                                         ElementsAre("$(x)", "unlock", "port", "1")));
}

TEST_F(SshdVormaWrapperPorts, AreTracedWhenTheyAreOpened) {
    framework.logLevel = 8;
    wrapper.enablePorts("clissh", 2022, ample);
    EXPECT_EQ(framework.records,
              vormaSource.entry("enablePorts", " >> enablePorts for %s subsystem: %d",
                                " >> enablePorts for clissh subsystem: 2022") +
                  vormaSource.exit("enablePorts", " << Succeeded to enable ports in sshd configuration file"));
}

TEST_F(SshdVormaWrapperPorts, AreTracedWhenTheyAreClosed) {
    framework.logLevel = 8;
    wrapper.disablePorts("netconfssh", ample);
    EXPECT_EQ(framework.records,
              vormaSource.entry("disablePorts", " >> removePorts for %s subsystem",
                                " >> removePorts for netconfssh subsystem") +
                  vormaSource.exit("disablePorts", " << Succeeded to disable ports in sshd configuration file"));
}

TEST_F(SshdVormaWrapperPorts, DoNotDependOnWhatTheAdapterPrints) {
    framework.givenAdapter("echo failed; echo failed >&2");
    EXPECT_TRUE(wrapper.enablePorts("clissh", 22, ample));
    EXPECT_TRUE(wrapper.disablePorts("clissh", ample));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(SshdVormaWrapperPorts, NeitherReadNorChangeWhatIsPending) {
    wrapper.setDscp("46");
    takeWords();
    EXPECT_TRUE(wrapper.enablePorts("clissh", 22, ample));
    EXPECT_TRUE(wrapper.disablePorts("clissh", ample));
    EXPECT_THAT(takeWords(),
                ElementsAre(ElementsAre("clissh", "unlock", "port", "22"), ElementsAre("clissh", "lock")));
    EXPECT_THAT(takePending(), ElementsAre("--ipQos", "46"));
}

TEST_F(SshdVormaWrapperPorts, DoNotAskForTheRevision) {
    wrapper.enablePorts("clissh", 22, ample);
    wrapper.disablePorts("clissh", ample);
    EXPECT_EQ(2u, takeWords().size());
}

TEST_F(SshdVormaWrapperPorts, AreNotOpenedByAFailedRun) {
    framework.givenAdapter("echo 'no such port' >&2; exit 3");
    EXPECT_FALSE(wrapper.enablePorts("clissh", 22, ample));
    EXPECT_THAT(framework.logs(), ElementsAre(HasSubstr("failed with exit code 3: no such port")));
}

TEST_F(SshdVormaWrapperPorts, AreNotClosedByAFailedRun) {
    framework.givenAdapter("exit 1");
    EXPECT_FALSE(wrapper.disablePorts("clissh", ample));
    EXPECT_THAT(framework.logs(), ElementsAre(HasSubstr("3 disablePorts: Script ")));
}

TEST_F(SshdVormaWrapperPorts, AreGivenTheTimeLimitOfTheCall) {
    framework.givenAdapter("sleep 30");
    EXPECT_FALSE(wrapper.enablePorts("clissh", 22, 150));
    EXPECT_FALSE(wrapper.disablePorts("clissh", 151));
    EXPECT_THAT(framework.logs(),
                ElementsAre(HasSubstr("still running after 150 ms"), HasSubstr("still running after 151 ms")));
}

TEST_F(SshdVormaWrapperPorts, LogAndTraceTheTextOfAnyStandardExceptionWhileOpening) {
    givenRunnerThat(std::runtime_error("100%s%n"));
    framework.logLevel = 8;
    EXPECT_FALSE(wrapper.enablePorts("clissh", 0, ample));
    EXPECT_EQ(framework.records, vormaSource.entry("enablePorts", " >> enablePorts for %s subsystem: %d",
                                                   " >> enablePorts for clissh subsystem: 0") +
                                     vormaSource.error("enablePorts", "%s", "100%s%n") +
                                     vormaSource.exit("enablePorts", " << %s", " << 100%s%n"));
}

TEST_F(SshdVormaWrapperPorts, LogAndTraceTheTextOfAnyStandardExceptionWhileClosing) {
    givenRunnerThat(std::runtime_error("broken"));
    framework.logLevel = 8;
    EXPECT_FALSE(wrapper.disablePorts("clissh", ample));
    EXPECT_EQ(framework.records, vormaSource.entry("disablePorts", " >> removePorts for %s subsystem",
                                                   " >> removePorts for clissh subsystem") +
                                     vormaSource.error("disablePorts", "%s", "broken") +
                                     vormaSource.exit("disablePorts", " << %s", " << broken"));
}

TEST_F(SshdVormaWrapperPorts, LetOtherExceptionsPassAndLogNothing) {
    givenRunnerThat(5);
    EXPECT_THROW(wrapper.enablePorts("clissh", 22, ample), int);
    EXPECT_THROW(wrapper.disablePorts("clissh", ample), int);
    EXPECT_THAT(framework.records, IsEmpty());
}

}  // namespace
