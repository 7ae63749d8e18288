#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExpectedRecords.h"
#include "SshdConfigHandler.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using TulSshdManagement::SshdConfigHandler;

const RecordSource source{"TulSshd", "src/tul_sshd_manager/src/SshdConfigHandler"};

std::string section(const std::string& content) {
    return "<Root><TulSshdManager>" + content + "</TulSshdManager></Root>";
}

const std::string managed = "<sshdManagement>true</sshdManagement>";
const std::string cliPort = "<cliPort>22</cliPort>";
const std::string netconfPort = "<netconfPort>830</netconfPort>";
const std::string renegotiationTime = "<renegotiationTime>60</renegotiationTime>";
const std::string complete = managed + cliPort + netconfPort + renegotiationTime;

using Lines = std::vector<std::string>;

const std::string function = "3 readComponentConfiguration: ";
const std::string noSection = function + "No TulSshdManagementComponent configuration found";
const std::string severalSections = function + "Multiple TulSshdManagementComponent configurations found";

std::string missing(const std::string& tag) {
    return "3 getUintValueFromCfg: '" + tag + "' tag does not exist";
}
std::string doubled(const std::string& tag, int count = 2) {
    return "3 getElementValue: Configuration File does not have the correct format (" + std::to_string(count) +
           ") , " + tag;
}
std::string unreadable(const std::string& tag, const std::string& reason = "Invalid string exception") {
    return "3 getUintValueFromCfg: Problem in conversion '" + tag + "' tag . Reason: '" + reason + "'";
}

class SshdConfigHandlerTest : public testing::Test {
protected:
    int read(const std::string& document) { return handler.readComponentConfiguration(document.c_str()); }

    RecordingFramework framework;
    SshdConfigHandler handler;
};

struct Document {
    const char* name;
    std::string text;
    int result;
    bool managed;
    Lines logs = {};
};

void PrintTo(const Document& document, std::ostream* stream) {
    *stream << document.name;
}

class SshdConfigHandlerDocument : public SshdConfigHandlerTest, public testing::WithParamInterface<Document> {};

TEST_P(SshdConfigHandlerDocument, IsReadByTheRules) {
    EXPECT_EQ(GetParam().result, read(GetParam().text));
    EXPECT_EQ(GetParam().managed, handler.getSshdManagement());
    EXPECT_EQ(GetParam().logs, framework.logs());
}

INSTANTIATE_TEST_SUITE_P(
    Sections, SshdConfigHandlerDocument,
    testing::Values(
        Document{"Complete", section(complete), 0, true},
        Document{"AsTheRoot", "<TulSshdManager>" + complete + "</TulSshdManager>", 0, true},
        Document{"DeepInTheDocument", "<a><b><c/><d>" + section(complete) + "</d></b></a>", 0, true},
        Document{"AmongOtherSections", "<a><Other><cliPort>1</cliPort></Other>" + section(complete) + "</a>", 0,
                 true},
        Document{"WithADeclaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + section(complete), 0, true},
        Document{"WithAttributes", "<TulSshdManager x='1'>" + complete + "</TulSshdManager>", 0, true},
        Document{"Empty", "<Root><TulSshdManager/></Root>", 0, false},
        Document{"None", "<Root/>", -1, false, {noSection}},
        Document{"OfAnotherName", "<Root><tulsshdmanager/></Root>", -1, false, {noSection}},
        Document{"JustInAComment", "<Root><!-- <TulSshdManager/> --></Root>", -1, false, {noSection}},
        Document{"JustAsText", "<Root>&lt;TulSshdManager/&gt;</Root>", -1, false, {noSection}},
        Document{"Two", "<Root>" + section(complete) + section(complete) + "</Root>", -1, false, {severalSections}},
        Document{
            "TwoOneEmpty", "<Root>" + section(complete) + "<TulSshdManager/></Root>", -1, false, {severalSections}},
        Document{
            "TwoFarApart", "<a><b><TulSshdManager/></b>" + section(complete) + "</a>", -1, false, {severalSections}},
        Document{"TwoNested", section(complete + "<TulSshdManager/>"), -1, false, {severalSections}},
        Document{"ThreeEmpty",
                 "<a><TulSshdManager/><TulSshdManager/><TulSshdManager/></a>",
                 -1,
                 false,
                 {severalSections}}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Elements, SshdConfigHandlerDocument,
    testing::Values(
        Document{"InAnyOrder", section(renegotiationTime + netconfPort + managed + cliPort), 0, true},
        Document{"WithUnknownOnes", section("<other>x</other>" + complete + "text"), 0, true},
        Document{
            "Deeper",
            section("<a><b>" + cliPort + "</b>" + managed + "</a><c>" + netconfPort + "</c>" + renegotiationTime), 0,
            true},
        Document{"JustManagementOff", section("<sshdManagement>false</sshdManagement>"), 0, false},
        Document{"BadPortsButManagementOff",
                 section("<sshdManagement>false</sshdManagement><cliPort>x</cliPort><cliPort/>"), 0, false},
        Document{"PortsWithoutManagement", section(cliPort + netconfPort), 0, false},
        Document{"ManagementTwice", section(managed + complete), -1, false, {doubled("sshdManagement")}},
        Document{"ManagementThreeTimesAndEmpty",
                 section("<sshdManagement/><a><sshdManagement/></a><sshdManagement/>"),
                 -1,
                 false,
                 {doubled("sshdManagement", 3)}},
        Document{"CliPortMissing", section(managed + netconfPort), -1, true, {missing("cliPort")}},
        Document{"CliPortOfAnotherCase",
                 section(managed + netconfPort + "<CliPort>22</CliPort>"),
                 -1,
                 true,
                 {missing("cliPort")}},
        Document{"CliPortOutsideTheSection",
                 "<a>" + cliPort + section(managed + netconfPort) + "</a>",
                 -1,
                 true,
                 {missing("cliPort")}},
        Document{"CliPortTwice", section(complete + cliPort), -1, true, {doubled("cliPort"), missing("cliPort")}},
        Document{"CliPortTwiceOneDeeper",
                 section(complete + "<a>" + cliPort + "</a>"),
                 -1,
                 true,
                 {doubled("cliPort"), missing("cliPort")}},
        Document{"CliPortTwiceOneEmpty",
                 section(complete + "<cliPort/>"),
                 -1,
                 true,
                 {doubled("cliPort"), missing("cliPort")}},
        Document{"NetconfPortMissing", section(managed + cliPort), -1, true, {missing("netconfPort")}},
        Document{"NetconfPortTwice",
                 section(complete + netconfPort),
                 -1,
                 true,
                 {doubled("netconfPort"), missing("netconfPort")}},
        Document{"RenegotiationMissing",
                 section(managed + cliPort + netconfPort),
                 0,
                 true,
                 {missing("renegotiationTime")}},
        Document{"RenegotiationTwice",
                 section(complete + renegotiationTime),
                 0,
                 true,
                 {doubled("renegotiationTime"), missing("renegotiationTime")}},
        Document{"RenegotiationMalformed",
                 section(managed + cliPort + netconfPort + "<renegotiationTime>abc</renegotiationTime>"),
                 0,
                 true,
                 {unreadable("renegotiationTime")}},
        Document{"BothPortsBadStopsAtTheFirst", section(managed), -1, true, {missing("cliPort")}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(SshdConfigHandlerTest, HasManagementOffAtFirst) {
    EXPECT_FALSE(handler.getSshdManagement());
}

TEST_F(SshdConfigHandlerTest, KeepsAllFourValues) {
    EXPECT_EQ(0, read(section(complete)));
    EXPECT_TRUE(handler.getSshdManagement());
    EXPECT_EQ(22u, handler.getCliport());
    EXPECT_EQ(830u, handler.getNetconfport());
    EXPECT_EQ(60u, handler.getRenegotiationtime());
}

TEST_F(SshdConfigHandlerTest, ForgetsAnOlderRenegotiationTimeThatIsMissingOrMalformedNow) {
    for (const char* now : {"", "<renegotiationTime>9x</renegotiationTime>", "<renegotiationTime/>"}) {
        SCOPED_TRACE(now);
        EXPECT_EQ(0, read(section(complete)));
        EXPECT_EQ(60u, handler.getRenegotiationtime());
        EXPECT_EQ(0, read(section(managed + cliPort + netconfPort + now)));
        EXPECT_EQ(0u, handler.getRenegotiationtime());
    }
}

TEST_F(SshdConfigHandlerTest, KeepsThePortsAndTheTimeWhenManagementIsSwitchedOff) {
    read(section(complete));
    EXPECT_EQ(0, read(section("<cliPort>1</cliPort><netconfPort>2</netconfPort>")));
    EXPECT_FALSE(handler.getSshdManagement());
    EXPECT_EQ(22u, handler.getCliport());
    EXPECT_EQ(830u, handler.getNetconfport());
    EXPECT_EQ(60u, handler.getRenegotiationtime());
}

TEST_F(SshdConfigHandlerTest, LeavesWhatWasReadBeforeAFailure) {
    EXPECT_EQ(-1, read(section(managed + "<cliPort>23</cliPort><netconfPort>24x</netconfPort>" + renegotiationTime)));
    EXPECT_TRUE(handler.getSshdManagement());
    EXPECT_EQ(23u, handler.getCliport());
    EXPECT_EQ(24u, handler.getNetconfport());
    EXPECT_EQ(0u, handler.getRenegotiationtime());
}

TEST_F(SshdConfigHandlerTest, LeavesManagementAsItWasWhenItIsInvalidOrDoubled) {
    read(section(complete));
    EXPECT_EQ(-1, read(section("<sshdManagement>yes</sshdManagement>")));
    EXPECT_TRUE(handler.getSshdManagement());
    EXPECT_EQ(-1, read(section("<sshdManagement/><sshdManagement/>")));
    EXPECT_TRUE(handler.getSshdManagement());
}

TEST_F(SshdConfigHandlerTest, RefusesANullPointerWithAWarningAndACodeOfItsOwn) {
    EXPECT_EQ(-8, handler.readComponentConfiguration(nullptr));
    EXPECT_EQ(framework.records, source.warning("readComponentConfiguration", "No configuration provided for %s",
                                                "No configuration provided for TulSshdManagementComponent"));
}

TEST_F(SshdConfigHandlerTest, TracesARead) {
    framework.logLevel = 8;
    EXPECT_EQ(0, read(section(complete)));
    EXPECT_EQ(framework.records,
              source.entry("readComponentConfiguration", " >> \n%s", " >> \n" + section(complete)) +
                  source.trace("getBooleanValueFromCfg", "%s enabled.", "sshdManagement enabled.") +
                  source.exit("readComponentConfiguration"));
}

TEST_F(SshdConfigHandlerTest, LogsAndTracesADocumentThatCannotBeParsed) {
    framework.logLevel = 8;
    EXPECT_EQ(-1, read("<Root>"));
    const std::string text = framework.records.at(2).text;
    EXPECT_THAT(text, testing::MatchesRegex("Failed to load configuration: .+"));
    EXPECT_EQ(framework.records,
              source.entry("readComponentConfiguration", " >> \n%s", " >> \n<Root>") +
                  source.error("readComponentConfiguration", "Failed to load configuration: %s", text) +
                  source.exit("readComponentConfiguration"));
}

TEST_F(SshdConfigHandlerTest, LogsAndTracesAMissingSection) {
    framework.logLevel = 8;
    EXPECT_EQ(-1, read("<Root/>"));
    EXPECT_EQ(framework.records, source.entry("readComponentConfiguration", " >> \n%s", " >> \n<Root/>") +
                                     source.error("readComponentConfiguration", "No %s configuration found",
                                                  "No TulSshdManagementComponent configuration found") +
                                     source.exit("readComponentConfiguration"));
}

TEST_F(SshdConfigHandlerTest, LogsAndTracesADoubledElementInTheFormatsThatAreLaidDown) {
    framework.logLevel = 8;
    EXPECT_EQ(-1, read(section(complete + cliPort)));
    framework.records.erase(framework.records.begin(), framework.records.begin() + 4);
    EXPECT_EQ(framework.records,
              source.error("getElementValue", "Configuration File does not have the correct format (%lu) , %s",
                           "Configuration File does not have the correct format (2) , cliPort") +
                  source.error("getUintValueFromCfg", "'%s' tag does not exist", "'cliPort' tag does not exist") +
                  source.exit("readComponentConfiguration"));
}

TEST_F(SshdConfigHandlerTest, LogsTheReasonOfAFailedConversion) {
    EXPECT_EQ(-1, read(section(managed + "<cliPort>-22</cliPort>")));
    EXPECT_EQ(framework.records,
              source.error("getUintValueFromCfg", "Problem in conversion '%s' tag . Reason: '%s'",
                           "Problem in conversion 'cliPort' tag . Reason: 'UnsignedInt Expected Exception'"));
}

}  // namespace
