#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExpectedRecords.h"
#include "InstalledLocales.h"
#include "SshdConfigHandler.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using TulSshdManagement::SshdConfigHandler;

const RecordSource source{"TulSshd", "src/tul_sshd_manager/src/SshdConfigHandler"};

std::string element(const std::string& tag, const std::string& value) {
    return "<" + tag + ">" + value + "</" + tag + ">";
}

std::string section(const std::string& content) {
    return "<Root><TulSshdManager>" + content + "</TulSshdManager></Root>";
}

struct Switch {
    const char* name;
    std::string value;
    int result;
    bool managed;
    const char* format;
    const char* text;
};

void PrintTo(const Switch& value, std::ostream* stream) {
    *stream << value.name;
}

const char* const enabled = "%s enabled.";
const char* const disabled = "%s disabled.";
const char* const empty = "'%s' value is empty, setting it to default (false).";
const char* const invalid = "%s value is invalid.";

Switch on(const char* name, const std::string& value) {
    return {name, value, 0, true, enabled, "sshdManagement enabled."};
}
Switch off(const char* name, const std::string& value) {
    return {name, value, 0, false, disabled, "sshdManagement disabled."};
}
Switch none(const char* name, const std::string& value) {
    return {name, value, 0, false, empty, "'sshdManagement' value is empty, setting it to default (false)."};
}
Switch refused(const char* name, const std::string& value) {
    return {name, value, -1, false, invalid, "sshdManagement value is invalid."};
}

class SshdManagementValue : public testing::TestWithParam<Switch> {
protected:
    std::string document() const {
        return section(element("sshdManagement", GetParam().value) +
                       "<cliPort>1</cliPort><netconfPort>2</netconfPort>"
                       "<renegotiationTime>3</renegotiationTime>");
    }

    RecordingFramework framework;
    SshdConfigHandler handler;
};

TEST_P(SshdManagementValue, IsReadByTheRulesAndLogsNothing) {
    EXPECT_EQ(GetParam().result, handler.readComponentConfiguration(document().c_str()));
    EXPECT_EQ(GetParam().managed, handler.getSshdManagement());
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_P(SshdManagementValue, IsReadTheSameUnderEveryInstalledLocale) {
    for (const std::string& name : installedLocales()) {
        SCOPED_TRACE(name);
        const LocaleInForce locale(name);
        SshdConfigHandler fresh;
        EXPECT_EQ(GetParam().result, fresh.readComponentConfiguration(document().c_str()));
        EXPECT_EQ(GetParam().managed, fresh.getSshdManagement());
    }
}

TEST_P(SshdManagementValue, IsTraced) {
    framework.logLevel = 8;
    handler.readComponentConfiguration(document().c_str());
    EXPECT_EQ(framework.records, source.entry("readComponentConfiguration", " >> \n%s", " >> \n" + document()) +
                                     source.trace("getBooleanValueFromCfg", GetParam().format, GetParam().text) +
                                     source.exit("readComponentConfiguration"));
}

INSTANTIATE_TEST_SUITE_P(
    Values, SshdManagementValue,
    testing::Values(on("True", "true"), on("Capitals", " TRUE "), on("LineEnd", " True\n"),
                    on("Tabs", "\t\r\ntRuE\t"), on("CharacterData", "<![CDATA[ true ]]>"),
                    on("CommentInside", "tr<!-- or false? -->ue"), on("CharacterReference", "&#116;rue&#32;"),
                    off("False", "false"), off("FalseCapitals", " FALSE\n"), none("Empty", ""),
                    none("JustAComment", "<!-- true -->"), none("EmptyCharacterData", "<![CDATA[]]>"),
                    refused("Blanks", "   "), refused("LineEnds", "\n\n"), refused("Yes", "yes"), refused("One", "1"),
                    refused("Zero", "0"), refused("On", "on"), refused("TwoWords", "true false"),
                    refused("InnerBlank", "t rue"), refused("NoBreakSpace", "\xC2\xA0true"),
                    refused("TrueAndMore", "truetrue"), refused("LetterThatLooksTheSame", "tru\xD0\xB5")),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SshdManagementMissing, IsOffAndTraced) {
    RecordingFramework framework;
    SshdConfigHandler handler;
    framework.logLevel = 8;
    const std::string document = section("<cliPort>1</cliPort>");
    EXPECT_EQ(0, handler.readComponentConfiguration(document.c_str()));
    EXPECT_FALSE(handler.getSshdManagement());
    EXPECT_EQ(
        framework.records,
        source.entry("readComponentConfiguration", " >> \n%s", " >> \n" + document) +
            source.trace("getBooleanValueFromCfg", "'%s' does not exist in cfg file, setting it to default (false)",
                         "'sshdManagement' does not exist in cfg file, setting it to default (false)") +
            source.exit("readComponentConfiguration"));
}

const char* const badText = "Invalid string exception";
const char* const negative = "UnsignedInt Expected Exception";
const char* const tooLarge = "Value range exception";

struct Number {
    const char* name;
    std::string value;
    const char* reason; /**< null: it is accepted */
    unsigned int number = 0;
};

void PrintTo(const Number& value, std::ostream* stream) {
    *stream << value.name;
}

class NumberValue : public testing::TestWithParam<Number> {
protected:
    /** A complete section with the value in one of its numbers. */
    int read(const std::string& tag) {
        std::string content = element("sshdManagement", "true");
        for (const char* other : {"cliPort", "netconfPort", "renegotiationTime"}) {
            content += element(other, tag == other ? GetParam().value : "1");
        }
        framework.records.clear();
        return handler.readComponentConfiguration(section(content).c_str());
    }

    bool accepted() const { return GetParam().reason == nullptr; }

    void expectReason(const std::string& tag) const {
        std::vector<std::string> expected;
        if (!accepted()) {
            expected.push_back("3 getUintValueFromCfg: Problem in conversion '" + tag + "' tag . Reason: '" +
                               GetParam().reason + "'");
        }
        EXPECT_EQ(expected, framework.logs());
    }

    void expectReading() {
        EXPECT_EQ(accepted() ? 0 : -1, read("cliPort"));
        expectReason("cliPort");
        EXPECT_TRUE(!accepted() || handler.getCliport() == GetParam().number);
    }

    RecordingFramework framework;
    SshdConfigHandler handler;
};

TEST_P(NumberValue, IsReadByTheRulesAsCliPort) {
    expectReading();
}

TEST_P(NumberValue, IsReadByTheRulesAsNetconfPort) {
    EXPECT_EQ(accepted() ? 0 : -1, read("netconfPort"));
    expectReason("netconfPort");
    EXPECT_TRUE(!accepted() || handler.getNetconfport() == GetParam().number);
}

TEST_P(NumberValue, IsReadByTheRulesAsRenegotiationTimeAndNeverFailsTheRead) {
    EXPECT_EQ(0, read("renegotiationTime"));
    expectReason("renegotiationTime");
    EXPECT_EQ(accepted() ? GetParam().number : 0, handler.getRenegotiationtime());
}

TEST_P(NumberValue, IsReadTheSameUnderEveryInstalledLocale) {
    for (const std::string& name : installedLocales()) {
        SCOPED_TRACE(name);
        const LocaleInForce locale(name);
        expectReading();
    }
}

const Number numbers[] = {{"Port", "22", nullptr, 22},
                          {"Zero", "0", nullptr, 0},
                          {"Plus", "+22", nullptr, 22},
                          {"LeadingZeros", "0022", nullptr, 22},
                          {"BeyondPorts", "65536", nullptr, 65536},
                          {"Largest", "4294967295", nullptr, 4294967295U},
                          {"CharacterData", "<![CDATA[22]]>", nullptr, 22},
                          {"CharacterDataBesideText", "2<![CDATA[2]]>0", nullptr, 220},
                          {"CommentInside", "2<!-- 9 -->2", nullptr, 22},
                          {"InstructionInside", "2<?x 9?>2", nullptr, 22},
                          {"CharacterReferences", "&#50;&#x32;", nullptr, 22},

                          {"LeadingBlank", " 22", badText},
                          {"TrailingBlank", "22 ", badText},
                          {"LineEnds", "\n22\n", badText},
                          {"BlankInCharacterData", "<![CDATA[ 22]]>", badText},
                          {"BlankAsReference", "22&#32;", badText},
                          {"Empty", "", badText},
                          {"JustAComment", "<!-- 22 -->", badText},
                          {"Hexadecimal", "0x16", badText},
                          {"Letters", "abc", badText},
                          {"NumberAndLetters", "22abc", badText},
                          {"Fraction", "22.0", badText},
                          {"TwoNumbers", "22 830", badText},
                          {"Markup", "&lt;22&gt;", badText},
                          {"WideDigits", "\xEF\xBC\x92", badText},
                          {"Minus", "-22", negative},
                          {"MinusZero", "-0", negative},
                          {"OneTooMany", "4294967296", tooLarge},
                          {"Beyond64Bits", "18446744073709551638", tooLarge},
                          {"Endless", std::string(100000, '9'), tooLarge}};

INSTANTIATE_TEST_SUITE_P(Values, NumberValue, testing::ValuesIn(numbers),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(PortOfLettersAfterANumber, FailsAndLeavesTheNumber) {
    const RecordingFramework framework;
    SshdConfigHandler handler;
    EXPECT_EQ(-1, handler.readComponentConfiguration(
                      section("<sshdManagement>true</sshdManagement><cliPort>22abc</cliPort>").c_str()));
    EXPECT_EQ(22u, handler.getCliport());
}

}  // namespace
