#include "SshdVormaWrapperTest.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const Records entry = vormaSource.entry("getVormaSpiRevision");

class SshdVormaWrapperRevision : public SshdVormaWrapperTest {
protected:
    void givenFailingQuery() { framework.givenAdapter("[ \"$1\" != spi-revision ] || { echo no >&2; exit 2; }"); }

    std::string revision() {
        const Tul::VormaSpiVersion version = wrapper.getVormaSpiRevision();
        return std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
               std::to_string(version.patch);
    }

    /** Tries all settings; the options that were let through. */
    Words tryAllSettings() {
        wrapper.setCiphers({{"selectedCiphers", "c"}});
        wrapper.setDscp("46");
        wrapper.setRenegotiationtime(0);
        return takePending();
    }
};

struct Answer {
    const char* name;
    std::string output;
    const char* revision;
    bool ciphersAndIpQos;
    bool renegotiation;
};

void PrintTo(const Answer& answer, std::ostream* stream) {
    *stream << answer.name;
}

class SshdVormaWrapperAnswer : public SshdVormaWrapperRevision, public testing::WithParamInterface<Answer> {};

TEST_P(SshdVormaWrapperAnswer, DecidesWhichOptionsAreSent) {
    givenRevisionOutput(GetParam().output);
    EXPECT_EQ(GetParam().revision, revision());
    Words expected;
    if (GetParam().ciphersAndIpQos) {
        expected = {"--ciphers", "c", "--ipQos", "46"};
    }
    if (GetParam().renegotiation) {
        expected.insert(expected.end(), {"--renegotiationTime", "none"});
    }
    EXPECT_EQ(expected, tryAllSettings());
}

TEST_P(SshdVormaWrapperAnswer, IsAskedForOnceInTheLifeOfAWrapper) {
    givenRevisionOutput(GetParam().output);
    tryAllSettings();
    framework.takeRuns();
    givenRevisionOutput("9.9.9");
    tryAllSettings();
    EXPECT_EQ(GetParam().revision, revision());
    EXPECT_THAT(framework.takeRuns(), Not(testing::Contains("spi-revision")));
}

INSTANTIATE_TEST_SUITE_P(
    Revisions, SshdVormaWrapperAnswer,
    testing::Values(
        Answer{"OneSeven", "1.7.0\n", "1.7.0", true, false}, Answer{"OneSevenLast", "1.7.99", "1.7.99", true, false},
        Answer{"OneEight", "1.8.0", "1.8.0", true, true}, Answer{"OneTen", "1.10.0", "1.10.0", true, true},
        Answer{"Two", "2.0.0-rc1", "2.0.0", true, true}, Answer{"Ten", "10.0.0", "10.0.0", true, true},
        Answer{"Blanks", " 1 . 7 . 0", "1.7.0", true, false}, Answer{"OneSixNine", "1.6.9", "1.6.9", false, false},
        Answer{"ZeroNinetyNine", "0.99.99", "0.99.99", false, false}, Answer{"Zero", "0.0.0", "0.0.0", false, false},
        Answer{"TwoNumbers", "1.8", "0.0.0", false, false}, Answer{"Commas", "1,7,0", "0.0.0", false, false},
        Answer{"TooLarge", "1.7.4294967296", "0.0.0", false, false},
        Answer{"JustALineEnd", "\n", "0.0.0", false, false}, Answer{"Empty", "", "0.0.0", false, false}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(SshdVormaWrapperRevision, IsAskedWithOneWord) {
    EXPECT_EQ("1.8.0", revision());
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("spi-revision")));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(SshdVormaWrapperRevision, IsNotAskedBeforeItIsNeeded) {
    wrapper.enablePorts("clissh", 22, ample);
    wrapper.invokeVorma(ample);
    wrapper.setCiphers({});
    EXPECT_THAT(framework.takeRuns(), ElementsAre("clissh unlock port 22"));
}

TEST_F(SshdVormaWrapperRevision, IsAskedByEachWrapperForItself) {
    TulSshdManagement::SshdVormaWrapper other;
    wrapper.getVormaSpiRevision();
    other.getVormaSpiRevision();
    EXPECT_THAT(framework.takeRuns(), ElementsAre("spi-revision", "spi-revision"));
}

TEST_F(SshdVormaWrapperRevision, IsTraced) {
    givenRevisionOutput("1.7.0\n");
    framework.logLevel = 8;
    revision();
    EXPECT_EQ(takeRecords(), entry + vormaSource.trace("getVormaSpiRevision", "vorma spi-revision returned: '%s'",
                                                       "vorma spi-revision returned: '1.7.0\n'"));
    revision();
    EXPECT_EQ(takeRecords(), entry);
}

TEST_F(SshdVormaWrapperRevision, IsTracedAsNotFoundWhenTheAnswerIsEmpty) {
    givenRevisionOutput("");
    framework.logLevel = 8;
    EXPECT_EQ("0.0.0", revision());
    EXPECT_EQ(takeRecords(), entry +
                                 vormaSource.trace("getVormaSpiRevision", "vorma spi-revision returned: '%s'",
                                                   "vorma spi-revision returned: ''") +
                                 vormaSource.trace("getVormaSpiRevision", "vorma spi version not found"));
}

TEST_F(SshdVormaWrapperRevision, IsWarnedOfOnceWhenTheAnswerCannotBeRead) {
    const RecordSource version{"Common", "src/common/inc/VormaSpiVersion"};
    givenRevisionOutput("1.8\n");
    EXPECT_EQ("0.0.0", revision());
    EXPECT_EQ("0.0.0", revision());
    EXPECT_EQ(takeRecords(), version.warning("fromString", "Failed to parse vorma spi-revision: '%s'",
                                             "Failed to parse vorma spi-revision: '1.8\n'"));
}

TEST_F(SshdVormaWrapperRevision, IsZeroAndKeptWhenTheQueryFails) {
    givenFailingQuery();
    EXPECT_EQ("0.0.0", revision());
    framework.givenAdapterRevision("1.8.0");
    EXPECT_EQ("0.0.0", revision());
    EXPECT_THAT(tryAllSettings(), IsEmpty());
    EXPECT_THAT(framework.takeRuns(), IsEmpty());
}

TEST_F(SshdVormaWrapperRevision, IsLoggedAndTracedWithTheTextOfAFailedQuery) {
    givenFailingQuery();
    framework.logLevel = 8;
    revision();
    const std::string text = framework.records.at(2).text;
    EXPECT_THAT(text, HasSubstr("failed with exit code 2: no"));
    EXPECT_EQ(takeRecords(), entry + vormaSource.warning("getVormaSpiRevision", "%s", text) +
                                 vormaSource.exit("getVormaSpiRevision", " << %s", " << " + text));
}

TEST_F(SshdVormaWrapperRevision, IsWaitedForFiveSeconds) {
    framework.givenAdapter("sleep 30");
    EXPECT_EQ("0.0.0", revision());
    EXPECT_THAT(framework.logs(), ElementsAre(HasSubstr("still running after 5000 ms")));
}

TEST_F(SshdVormaWrapperRevision, LeavesOneWarningToEachRefusedCall) {
    givenRevisionOutput("");
    tryAllSettings();
    tryAllSettings();
    const auto ciphers = testing::StartsWith("4 setCiphers: Cipher suite");
    const auto dscp = testing::StartsWith("4 setDscp: IPQoS");
    const auto renegotiation = testing::StartsWith("4 setRenegotiationtime: Renegotiation");
    EXPECT_THAT(framework.logs(), ElementsAre(ciphers, dscp, renegotiation, ciphers, dscp, renegotiation));
}

TEST_F(SshdVormaWrapperRevision, IsStillUnknownAfterAnotherExceptionHasPassed) {
    framework.logLevel = 4;
    givenRunnerThat(std::runtime_error("other"));
    EXPECT_THROW(wrapper.setDscp("46"), std::runtime_error);
    EXPECT_THROW(wrapper.setCiphers(allLists), std::runtime_error);
    EXPECT_THROW(wrapper.setRenegotiationtime(1), std::runtime_error);
    EXPECT_THAT(takeRecords(), IsEmpty());
    framework.takeRuns();
    framework.onScriptRan = nullptr;
    EXPECT_EQ("1.8.0", revision());
    EXPECT_THAT(framework.takeRuns(), ElementsAre("spi-revision"));
    EXPECT_FALSE(wrapper.invokeVorma(ample)) << "a refused setting was queued";
}

}  // namespace
