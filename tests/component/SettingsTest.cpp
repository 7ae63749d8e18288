#include <locale>
#include <sstream>
#include <stdexcept>

#include "ComponentTest.h"
#include "InstalledLocales.h"

namespace {

using namespace TulTest;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Settings = ComponentTest;
using Attributes = std::map<std::string, AttributeValues>;

// The administrative state

struct StateRow {
    const char* name;
    Attributes attributes;
    const char* run;
    LineMatchers logs;

    friend std::ostream& operator<<(std::ostream& stream, const StateRow& row) { return stream << row.name; }
};

const std::string unreadable = "4 getAdministrativeState: Unable to get administrativeState for ";

/** A value that is read decides the port; otherwise the state before does, which is locked in a new component. */
const StateRow stateRows[] = {
    {"Unlocked", {{"administrativeState", enumeration(1)}}, "unlock", {}},
    {"Locked", {{"administrativeState", enumeration(0)}}, "lock", {}},
    {"ShuttingDown", {{"administrativeState", enumeration(2)}}, "lock", {}},
    {"Negative", {{"administrativeState", enumeration(-1)}}, "lock", {}},
    {"OneInTheLow16Bits", {{"administrativeState", enumeration(0x10001)}}, "unlock", {}},
    {"NoAttribute", {}, "lock", {StartsWith(unreadable)}},
    {"NoValue", {{"administrativeState", {TUL_MO_TYPE_ENUMERATION_3, {}, {}}}}, "lock", {StartsWith(unreadable)}},
    {"WrongType", {{"administrativeState", uint8(1)}}, "lock", {StartsWith(unreadable)}},
    {"TwoValues",
     {{"administrativeState", {TUL_MO_TYPE_ENUMERATION_3, {1, 1}, {}}}},
     "lock",
     {StartsWith("3 getAttr: Attribute is a sequence: "), StartsWith(unreadable)}},
};

class SettingsState : public ComponentTest, public testing::WithParamInterface<StateRow> {
public:
    void expectAdoption(const char* dn, const std::string& unlock, const std::string& lock) {
        framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
        framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(0)}});
        framework.givenMo(sshDn);
        framework.givenMo(dn, GetParam().attributes);
        ASSERT_EQ(BRY_OK, library.init(configuration(true)));
        ASSERT_EQ(BRY_OK, library.start());
        EXPECT_THAT(framework.takeRuns(), Contains(GetParam().run == std::string("unlock") ? unlock : lock));
        expectLogs(GetParam().logs);
        EXPECT_EQ(framework.containersFetched, framework.containersReleased);
    }
};

TEST_P(SettingsState, OfCliSshDecidesTheCliPort) {
    expectAdoption(cliSshDn, "clissh unlock port 2022", "clissh lock");
}

TEST_P(SettingsState, OfNetconfSshDecidesTheNetconfPort) {
    expectAdoption(netconfSshDn, "netconfssh unlock port 2830", "netconfssh lock");
}

INSTANTIATE_TEST_SUITE_P(Settings, SettingsState, testing::ValuesIn(stateRows), nameOf<StateRow>);

TEST_F(Settings, AnUnreadableStateIsReportedWithItsDn) {
    framework.givenMo(cliSshDn);
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(0)}});
    framework.givenMo(sshDn);
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, library.start());
    expectLogs({unreadable + cliSshDn});
}

TEST_F(Settings, AStateThatThrowsSomethingUnknownIsUnreadable) {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(sshDn);
    framework.during["getAttribute"] = [this] {
        if (framework.calls.back().ends_with("administrativeState")) {
            throw 7;
        }
    };
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.takeRuns(), testing::IsSupersetOf({"clissh lock", "netconfssh lock"}));
    expectLogs({unreadable + cliSshDn, unreadable + netconfSshDn});
}

// The DSCP

struct DscpRow {
    const char* name;
    bool hasCategory;
    Attributes attributes;
    const char* option;
    LineMatchers traces; /**< of getDscp, between entry and exit */
    const char* text;

    friend std::ostream& operator<<(std::ostream& stream, const DscpRow& row) { return stream << row.name; }
};

const DscpRow dscpRows[] = {
    {"46", true, {{"dscp", uint8(46)}}, "--ipQos 46", {}, "46"},
    {"0", true, {{"dscp", uint8(0)}}, "--ipQos 0", {}, "0"},
    {"255", true, {{"dscp", uint8(255)}}, "--ipQos 255", {}, "255"},
    {"NoCategory",
     false,
     {},
     "--removeIpQoS",
     {StartsWith("Unable to get dscp. Error code: -4, reason: Could not read attribute ")},
     ""},
    {"Unset",
     true,
     {},
     "--removeIpQoS",
     {HasSubstr("Unable to get dscp. Error code: -1, reason: Attribute has no value set: ")},
     ""},
    {"TwoValues",
     true,
     {{"dscp", {TUL_MO_TYPE_UINT8_3, {46, 10}, {}}}},
     "--removeIpQoS",
     {HasSubstr("Unable to get dscp. Error code: -1, reason: Attribute is a sequence: ")},
     ""},
    {"WrongType",
     true,
     {{"dscp", enumeration(46)}},
     "--removeIpQoS",
     {StartsWith("Unable to get dscp. Error code: -13, reason: ")},
     ""},
};

class SettingsDscp : public ComponentTest, public testing::WithParamInterface<DscpRow> {};

TEST_P(SettingsDscp, IsSentInDecimalOrItsRemovalIs) {
    framework.givenMo(sshDn);
    if (GetParam().hasCategory) {
        framework.givenMo(oamCmDn, GetParam().attributes);
    }
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    framework.logLevel = 8;
    ASSERT_EQ(BRY_OK, library.start());
    LineMatchers traces = GetParam().traces;
    traces.insert(traces.begin(), " >> ");
    traces.push_back(std::string(" << Returning DSCP value ") + GetParam().text);
    EXPECT_THAT(framework.traces("getDscp"), testing::ElementsAreArray(traces));
    EXPECT_EQ(std::string("ssh ") + GetParam().option + " --renegotiationTime 3600", framework.takeRuns().back());
    EXPECT_THAT(framework.logs(4), testing::Each(testing::Not(HasSubstr(" getDscp: "))));
    EXPECT_EQ(framework.containersFetched, framework.containersReleased);
}

INSTANTIATE_TEST_SUITE_P(Settings, SettingsDscp, testing::ValuesIn(dscpRows), nameOf<DscpRow>);

/** A comma between all digits: even a number of two is printed in another way. */
struct CommasBetweenDigits : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\1"; }
};

TEST_F(Settings, TheDscpIsPrintedTheSameWhereNumbersAreGrouped) {
    framework.givenMo(sshDn);
    framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    {
        const LocaleInForce locale(std::locale(std::locale::classic(), new CommasBetweenDigits));
        std::ostringstream naive;
        naive << 46;
        EXPECT_EQ("4,6", naive.str()) << "the grouping is in force";
        ASSERT_EQ(BRY_OK, library.start());
    }
    EXPECT_EQ("ssh --ipQos 46 --renegotiationTime 3600", framework.takeRuns().back());
}

TEST_F(Settings, TheDscpIsRemovedWithoutAWarningWhenThereIsNoTransport) {
    framework.givenMo(sshDn);
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
    framework.model.erase("ManagedElement=1,Transport=1");
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_EQ("ssh --removeIpQoS --renegotiationTime 3600", framework.takeRuns().back());
    expectSilence();
}

// The algorithm lists

struct CipherRow {
    const char* name;
    Attributes attributes;
    Lines words; /**< of the batch, after the DSCP and the renegotiation time */
    LineMatchers logs;

    friend std::ostream& operator<<(std::ostream& stream, const CipherRow& row) { return stream << row.name; }
};

const std::string macsUnreadable =
    std::string("4 fetchCipherConfiguration: Unable to get selected(selectedMacs) for DN(") + sshDn + ")";

const CipherRow cipherRows[] = {
    {"AllThree",
     {{"selectedMacs", strings({"m1", "m2"})},
      {"selectedKeyExchanges", strings({"k1"})},
      {"selectedCiphers", strings({"aes128-ctr", "aes256-ctr", "chacha20"})}},
     {"--ciphers", "aes128-ctr,aes256-ctr,chacha20", "--kexAlgorithms", "k1", "--macs", "m1,m2"},
     {}},
    {"OrderOfTheMo", {{"selectedCiphers", strings({"c", "a", "b"})}}, {"--ciphers", "c,a,b"}, {}},
    {"OneElement", {{"selectedMacs", strings({"m1"})}}, {"--macs", "m1"}, {}},
    {"MacsUnset",
     {{"selectedCiphers", strings({"a"})}, {"selectedKeyExchanges", strings({"k"})}},
     {"--ciphers", "a", "--kexAlgorithms", "k"},
     {}},
    {"AllEmpty",
     {{"selectedCiphers", strings({})}, {"selectedKeyExchanges", strings({})}, {"selectedMacs", strings({})}},
     {},
     {}},
    {"NothingSet", {}, {}, {}},
    {"EmptyTexts",
     {{"selectedCiphers", strings({"a", ""})}, {"selectedMacs", strings({""})}},
     {"--ciphers", "a,", "--macs", ""},
     {}},
    {"BlanksAndCommas", {{"selectedCiphers", strings({"a b", "c,d"})}}, {"--ciphers", "a b,c,d"}, {}},
    {"MacsOfAnotherType",
     {{"selectedCiphers", strings({"a"})}, {"selectedMacs", uint8(1)}},
     {"--ciphers", "a"},
     {macsUnreadable}},
};

class SettingsCiphers : public ComponentTest, public testing::WithParamInterface<CipherRow> {
public:
    void expectBatch() {
        framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
        framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(0)}});
        framework.givenMo(sshDn, GetParam().attributes);
        ASSERT_EQ(BRY_OK, library.init(configuration(true)));
        ASSERT_EQ(BRY_OK, library.start());
        Lines words{"ssh", "--removeIpQoS", "--renegotiationTime", "3600"};
        words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
        EXPECT_EQ(words, framework.runWords().back());
        expectLogs(GetParam().logs);
    }
};

TEST_P(SettingsCiphers, AreJoinedAndSentInAFixedOrderWithoutTheMissingOnes) {
    expectBatch();
    EXPECT_EQ(framework.containersFetched, framework.containersReleased);
}

TEST_P(SettingsCiphers, AreReadFromAFrameworkThatWantsNothingBack) {
    framework.releasesContainers = false;
    expectBatch();
    EXPECT_EQ(0, framework.containersReleased);
}

INSTANTIATE_TEST_SUITE_P(Settings, SettingsCiphers, testing::ValuesIn(cipherRows), nameOf<CipherRow>);

TEST_F(Settings, NoCiphersAreSentWithoutAnSshMo) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    framework.logLevel = 8;
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.traces("setCiphers"), IsEmpty());
    EXPECT_THAT(framework.traces("fetchCipherConfiguration"), IsEmpty());
}

TEST_F(Settings, TheAdapterIsNotAskedForEmptyCiphers) {
    framework.givenMo(sshDn);
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    framework.logLevel = 8;
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.traces("setCiphers"), IsEmpty());
    EXPECT_THAT(framework.traces("fetchCipherConfiguration"), testing::ElementsAre(" >> ", " << "));
}

TEST_F(Settings, AListThatTheFrameworkRefusesIsSilentlyAbsent) {
    framework.givenMo(sshDn, {{"selectedCiphers", strings({"a"})}, {"selectedMacs", strings({"m"})}});
    givenStarted();
    framework.during["getAttribute"] = [this] {
        framework.results["getAttribute"] = framework.calls.back().ends_with("selectedCiphers") ? -4 : 0;
    };
    notify(sshPattern, CmNotification().changed(sshDn));
    expectRuns({"ssh --macs m"});
    expectSilence();
}

TEST_F(Settings, AListThatThrowsIsAbsentWithAWarningAndTheOthersAreStillRead) {
    framework.givenMo(sshDn, {{"selectedCiphers", strings({"a"})}, {"selectedMacs", strings({"m"})}});
    givenStarted();
    framework.during["getAttribute"] = [this] {
        if (framework.calls.back().ends_with("selectedMacs")) {
            throw std::runtime_error("no");
        }
    };
    notify(sshPattern, CmNotification().changed(sshDn));
    expectRuns({"ssh --ciphers a"});
    expectLogs({macsUnreadable});
    expectSilence();
}

}  // namespace
