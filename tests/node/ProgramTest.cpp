#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>

#include <fstream>
#include <string>

#include "TemporaryDirectory.h"

namespace TulNode {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** The program itself, with an animal of the zoo as its component. */
class Program : public testing::Test {
protected:
    struct Result {
        std::string output; /**< both streams */
        int code;
    };

    Program() { directory.writeScript("vorma", "exit 0"); }

    Result shell(const std::string& command) const {
        Result result{"", -1};
        FILE* pipe = popen(("cd " + directory.path().string() + " && " + command).c_str(), "r");
        char block[4096];
        for (std::size_t count = 0; (count = fread(block, 1, sizeof block, pipe)) > 0;) {
            result.output.append(block, count);
        }
        const int status = pclose(pipe);
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }

    std::string program(const std::string& options, const std::string& animal = "good") const {
        return std::string(TUL_NODE_PROGRAM) + " --script-dir . --component " TUL_ZOO_DIRECTORY "/" + animal +
               ".so " + options;
    }

    Result run(const std::string& commands, const std::string& options, const std::string& animal = "good") const {
        std::ofstream(directory.path() / "input") << commands;
        return shell(program(options, animal) + " <input 2>&1");
    }

    TulTest::TemporaryDirectory directory;
};

TEST_F(Program, TakesCommandsFromAPipeAndEndsWellAtItsEnd) {
    const Result result = run("echo hello\nstatus\n", "");
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.output, HasSubstr("component: loaded Zoo\n"));
    EXPECT_THAT(result.output, HasSubstr("component: started\nhello\ncomponent: started Zoo\n"));
    EXPECT_THAT(result.output, HasSubstr("component: stopped\ncomponent: unloaded\n"));
}

TEST_F(Program, NamesTheLineOfACommandThatFailsAndGoesOn) {
    const Result result = run("echo one\nlock Telnet\necho two", "--no-load");
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.output, HasSubstr("one\nerror: line 2: there is no class \"Telnet\""));
    EXPECT_THAT(result.output, HasSubstr("two\n"));
    EXPECT_THAT(run("lock Telnet\necho two\n", "--no-load --stop-on-error").output, Not(HasSubstr("two")));
}

TEST_F(Program, TakesCommandsFromAFile) {
    std::ofstream(directory.path() / "commands") << "echo from the file\nquit\necho never\n";
    const Result result = run("echo from the pipe\n", "--no-load --commands commands");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "from the file\n");
}

TEST_F(Program, SaysThatTheComponentDidNotComeUp) {
    const Result bad = run("echo still here\n", "", "no_terminate");
    EXPECT_EQ(bad.code, 3);
    EXPECT_THAT(bad.output, HasSubstr("no_terminate.so: symbols: "));
    EXPECT_THAT(bad.output, HasSubstr("still here"));
    EXPECT_THAT(run("echo never\n", "--stop-on-error", "start_fails").output, Not(HasSubstr("never")));
}

TEST_F(Program, EndsWithOneWhenTheComponentMisbehavedOrDidNotStopCleanly) {
    EXPECT_EQ(run("", "", "leaks_consumer").code, 1);
    const Result result = run("", "", "stop_fails");
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.output, HasSubstr("component: unloaded\nerror: stop returned -1"));
}

TEST_F(Program, KeepsItsStateInAFile) {
    EXPECT_EQ(run("set Ssh selectedMacs=a,b\n", "--no-load --state state.db").code, 0);
    EXPECT_THAT(run("show Ssh\n", "--no-load --state state.db").output, HasSubstr("  selectedMacs=a,b\n"));
}

TEST_F(Program, BeginsWithAModelOfItsOwnOnce) {
    std::ofstream(directory.path() / "model") << "create ManagedElement=7\n";
    EXPECT_EQ(run("show\n", "--no-load --model model --state state.db").output, "ManagedElement=7\n");
    std::ofstream(directory.path() / "model") << "create ManagedElement=8\n";
    EXPECT_EQ(run("show\n", "--no-load --model model --state state.db").output, "ManagedElement=7\n");
    std::ofstream(directory.path() / "model") << "create Nonsense=8\n";
    const Result result = run("", "--no-load --model model");
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.output, StartsWith("tul-node: model:1: there is no class \"Nonsense\""));
}

TEST_F(Program, GivesTheComponentItsConfiguration) {
    EXPECT_THAT(run("", "--cli-port 4022 --netconf-port 4023 --renegotiation-time 0").output,
                HasSubstr("<cliPort>4022</cliPort>\\x0A    <netconfPort>4023</netconfPort>\\x0A    "
                          "<renegotiationTime>0</renegotiationTime>"));
    std::ofstream(directory.path() / "own.xml") << "<own/>";
    EXPECT_THAT(run("", "--config own.xml").output, HasSubstr("log: info init: <own/>\n"));
}

TEST_F(Program, RefusesOptionsThatMakeNoSense) {
    std::ofstream(directory.path() / "own.xml") << "<own/>";
    const auto expectRefused = [this](const std::string& options, const std::string& why) {
        const Result result = run("", options);
        EXPECT_EQ(result.code, 2) << options;
        EXPECT_THAT(result.output, HasSubstr(why));
    };
    expectRefused("--cli-port 0", "--cli-port: cliPort is \"0\"; allowed: a number from 1 to 65535");
    expectRefused("--cli-port 4022 --config own.xml", "excludes");
    expectRefused("--config missing.xml", "missing.xml");
    expectRefused("--log-level 99", "99");
    expectRefused("--state own.xml", "cannot use own.xml as the state of the node");
    expectRefused("--colour", "--colour");
    EXPECT_EQ(run("", "--help").code, 0);
    EXPECT_THAT(run("", "--version").output, StartsWith("tul-node "));
}

/** Starts the program with an input that stays open, waits for `mark` in its output, signals, and waits. */
std::string signalled(const std::string& program, const std::string& mark, const std::string& input) {
    return "mkfifo in && { " + program + " <in >out 2>&1 & node=$!; exec 3>in; printf '" + input +
           "' >&3; i=0; until grep -q '" + mark +
           "' out || [ $i -gt 2000 ]; do sleep 0.01; i=$((i+1)); done; kill -TERM $node; wait $node; echo \"code "
           "$?\"; "
           "exec 3>&-; cat out; }";
}

TEST_F(Program, EndsInOrderOnASignal) {
    const Result result = shell(signalled(program(""), "component: started", "echo half a line"));
    EXPECT_THAT(result.output, StartsWith("code 0\n"));
    EXPECT_THAT(result.output, HasSubstr("component: stopped\ncomponent: unloaded\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("half a line")));
}

TEST_F(Program, GivesUpWhenStoppingTakesTooLong) {
    const std::string blocked = "ZOO_GATE=never " + program("--stop-limit 1", "slow_leaker");
    const Result result = shell(signalled(blocked, "notify: ", "create ManagedElement=1,Transport=2\\n"));
    EXPECT_THAT(result.output, StartsWith("code 1\n"));
    EXPECT_THAT(result.output, HasSubstr("error: stopping takes longer than --stop-limit allows"));
}

TEST_F(Program, CarriesOutTheRestWhenTheReaderOfItsOutputGoesAway) {
    std::ofstream input(directory.path() / "input");
    for (int i = 0; i < 5000; ++i) {
        input << "echo many lines that nobody reads\n";
    }
    input << "set Ssh selectedMacs=last\n" << std::flush;
    const std::string options = "--no-load --state state.db";
    EXPECT_THAT(shell("{ " + program(options) + " <input; echo code $? >code; } | head -n 1; cat code").output,
                HasSubstr("code 0\n"));
    EXPECT_THAT(run("show Ssh\n", options).output, HasSubstr("selectedMacs=last"));
}

}  // namespace
}  // namespace TulNode
