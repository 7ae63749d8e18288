#include <gtest/gtest.h>

#include "Emulation.h"
#include "ScriptHost.h"

namespace TulTest {
namespace {

struct Words {
    const char* name;
    std::vector<std::string> words;
};

class ScriptArguments : public testing::TestWithParam<Words> {
protected:
    ScriptHost _host;
};

TEST_P(ScriptArguments, ArriveVerbatimOneWordEach) {
    std::vector<std::string> args{"arguments"};
    std::string expected;
    for (const std::string& word : GetParam().words) {
        args.push_back(word);
        expected += word + '\0';
    }
    const Outcome outcome = _host.invoke("probe", args);
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_TRUE(outcome.text == expected) << "got " << outcome.text.substr(0, 200);
    EXPECT_EQ(args, _host.runs().at(0).arguments);
}

// The system takes words of less than 128 KiB.
const Words wordLists[] = {
    {"None", {}},
    {"Empty", {"", "", ""}},
    {"Blanks", {"a b", " a", "a ", "\t", "  "}},
    {"ShellSyntax", {";", "&& id", "$(id)", "`id`", "$HOME", "|cat", ">x", "*", "?", "~", "'", "\"", "\\", "!", "#"}},
    {"Newlines", {"a\nb", "\n", "\r\n"}},
    {"LeadingDashes", {"-", "--", "-c", "--help", "-rf /"}},
    {"RawBytes", {"\x01\x1b[2J\x7f", "\xff\xfe", "%s%n", "\xc3\xa4"}},
    {"Long", {std::string(128 * 1024 - 1, 'x'), "after"}},
    {"Many", std::vector<std::string>(1000, "word")},
};

std::string nameOf(const testing::TestParamInfo<Words>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, ScriptArguments, testing::ValuesIn(wordLists), nameOf);

TEST(ScriptInvocation, RefusesAnArgumentThatContainsANul) {
    const ScriptHost host;
    const Outcome outcome = host.invoke("probe", {"arguments", std::string("a\0b", 3)});
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ("Script " + host.pathOf("probe") + " cannot be run, an argument contains a NUL byte", outcome.text);
    EXPECT_TRUE(host.runs().empty());
}

TEST(ScriptInvocation, RefusesAnArgumentThatIsTooLongForTheSystem) {
    const ScriptHost host;
    const Outcome outcome = host.invoke("probe", {"arguments", std::string(128 * 1024, 'x')});
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_TRUE(outcome.text.starts_with("Script " + host.pathOf("probe") + " cannot be run")) << outcome.text;
    if (isEmulated()) {
        GTEST_SKIP() << noSpawnErrors;
    }
    EXPECT_EQ("Script " + host.pathOf("probe") + " cannot be run: Argument list too long", outcome.text);
}

TEST(ScriptInvocation, RefusesATimeLimitBelowOne) {
    const ScriptHost host;
    for (const int limit : {0, -1, std::numeric_limits<int>::min()}) {
        const Outcome outcome = host.invoke("probe", {"group"}, limit);
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_NE(std::string::npos, outcome.text.find("time limit is " + std::to_string(limit) + " ms"))
            << outcome.text;
    }
    EXPECT_TRUE(host.runs().empty());
}

TEST(ScriptInvocation, TakesTheLargestTimeLimit) {
    EXPECT_TRUE(ScriptHost().invoke("probe", {"group"}, std::numeric_limits<int>::max()).succeeded);
}

TEST(ScriptInvocation, TellsTheFrameworkOfEachRun) {
    const ScriptHost host;
    host.run("exit 0");
    host.run("exit 3");
    host.invoke("missing", {"a", "b"});
    const std::vector<RecordedRun> runs = host.runs();
    ASSERT_EQ(3U, runs.size());
    EXPECT_EQ("script", runs[0].scriptName);
    EXPECT_EQ("", runs[0].failure);
    EXPECT_EQ("Script " + host.pathOf("script") + " failed with exit code 3", runs[1].failure);
    EXPECT_EQ("missing", runs[2].scriptName);
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), runs[2].arguments);
    if (isEmulated()) {
        GTEST_SKIP() << noSpawnErrors;
    }
    EXPECT_EQ("Script " + host.pathOf("missing") + " cannot be run: No such file or directory", runs[2].failure);
}

}  // namespace
}  // namespace TulTest
