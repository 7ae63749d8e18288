#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <thread>

#include "NaiveRunner.h"
#include "ProcessTable.h"
#include "ScriptHost.h"
#include "SystemCallFaults.h"

namespace TulTest {
namespace {

using testing::HasSubstr;

/** Longer than any test waits: a run that ends before did not wait for a script that sleeps a minute. */
constexpr std::chrono::seconds noMinute(30);

class Stopwatch {
public:
    bool showsLessThan(std::chrono::seconds bound) const { return std::chrono::steady_clock::now() - _start < bound; }

private:
    const std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

std::string killedAfter(int limit) {
    return "was still running after " + std::to_string(limit) + " ms and was killed";
}

const char* const shells[] = {"/bin/dash", "/bin/bash", "/bin/busybox sh"};

struct HangForm {
    const char* name;
    const char* body;
};

const HangForm hangForms[] = {
    {"Last", "sleep 60"},
    {"NotLast", "sleep 60; true"},
    {"InBackground", "sleep 60 & wait"},
    {"InASubshell", "(sleep 60)"},
    {"InAPipe", "sleep 60 | cat"},
    {"IgnoringSignals", "trap '' TERM HUP INT; sleep 60; sleep 60"},
    {"Stopped", "kill -STOP $$; sleep 60"},
    {"WithClosedStreams", "exec >&- 2>&-; sleep 60"},
};

class HangingScript : public testing::TestWithParam<std::tuple<const char*, HangForm>> {
protected:
    /** Runs it past a limit that it reaches its hang in, even on a slow machine; the last one is returned. */
    template <class RunT>
    int runPastTheLimit(RunT run) {
        _host.write("script", std::string("echo $$ >\"$1\"; ") + std::get<HangForm>(GetParam()).body,
                    std::get<const char*>(GetParam()));
        int limit = 150;
        for (run(limit); !readPid(_pidFile) && limit < ample; run(limit)) {
            limit *= 2;
        }
        return limit;
    }

    ScriptHost _host;
    const std::filesystem::path _pidFile = _host.directory() / "pid";
};

TEST_P(HangingScript, IsKilledWithItsWholeGroup) {
    const Stopwatch stopwatch;
    Outcome outcome;
    const int limit =
        runPastTheLimit([&](int tried) { outcome = _host.invoke("script", {_pidFile.string()}, tried); });
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.text, HasSubstr(killedAfter(limit)));
    EXPECT_TRUE(stopwatch.showsLessThan(noMinute));
    EXPECT_TRUE(groupDies(awaitPid(_pidFile)));
}

std::string nameOf(const testing::TestParamInfo<HangingScript::ParamType>& info) {
    const std::string shell = std::get<const char*>(info.param);
    return std::string(std::get<HangForm>(info.param).name) + (shell == "/bin/dash"   ? "UnderDash"
                                                               : shell == "/bin/bash" ? "UnderBash"
                                                                                      : "UnderBusybox");
}

INSTANTIATE_TEST_SUITE_P(All, HangingScript,
                         testing::Combine(testing::ValuesIn(shells), testing::ValuesIn(hangForms)), nameOf);

using HangingScriptControl = HangingScript;

TEST_P(HangingScriptControl, KillingOnlyTheChildLetsOthersRunOn) {
    runPastTheLimit([&](int tried) { runNaively(_host.pathOf("script"), {_pidFile.string()}, tried); });
    const pid_t group = awaitPid(_pidFile);
    EXPECT_LT(0, livingMembers(group));
    kill(-group, SIGKILL);
    EXPECT_TRUE(groupDies(group));
}

// Only in these forms is it certain that no shell has replaced itself with the sleeper.
INSTANTIATE_TEST_SUITE_P(All, HangingScriptControl,
                         testing::Combine(testing::ValuesIn(shells), testing::Values(hangForms[1], hangForms[2])),
                         nameOf);

TEST(ScriptTimeLimit, IsHonouredWhenAProcessThatLeftTheGroupHoldsThePipes) {
    const ScriptHost host;
    const std::filesystem::path pidFile = host.directory() / "pid";
    host.write("script", "setsid sh -c 'echo $$ >\"$0\"; exec sleep 60' \"$1\" & wait");
    const Stopwatch stopwatch;
    EXPECT_FALSE(host.invoke("script", {pidFile.string()}, 1000).succeeded);
    EXPECT_TRUE(stopwatch.showsLessThan(noMinute));
    kill(awaitPid(pidFile), SIGKILL);
}

/** The leak check after the test finds it otherwise. */
TEST(ScriptTimeLimit, EndsAScriptThatHasLeftItsGroup) {
    const ScriptHost host;
    const std::filesystem::path pidFile = host.directory() / "pid";
    host.write("script",
               "exec perl -e 'setpgrp(0, getpgrp(getppid())); system(\"echo $$ >$ARGV[0]\"); sleep 60' \"$1\"");
    for (int limit = 250; !readPid(pidFile) && limit < ample; limit *= 2) {
        EXPECT_THAT(host.invoke("script", {pidFile.string()}, limit).text, HasSubstr(killedAfter(limit)));
    }
    EXPECT_TRUE(readPid(pidFile)) << "it never came to leave its group";
}

TEST(ScriptTimeLimit, EndsTheMessageWithStderr) {
    const Outcome outcome = ScriptHost().run("echo waiting for sshd >&2; sleep 60", 1000);
    EXPECT_THAT(outcome.text, testing::EndsWith(killedAfter(1000) + ": waiting for sshd"));
}

TEST(ScriptTimeLimit, OfOneMillisecondIsPossible) {
    const Outcome outcome = ScriptHost().run("sleep 60", 1);
    EXPECT_THAT(outcome.text, HasSubstr(killedAfter(1)));
}

/** Steps the time of day once the script has said that it runs. */
template <class RunT>
auto withStep(const ScriptHost& host, int seconds, RunT run) {
    std::thread stepper([&] {
        awaitPid(host.directory() / "pid");
        stepTimeOfDay(seconds);
    });
    auto result = run();
    stepper.join();
    stepTimeOfDay(0);
    return result;
}

constexpr const char* waitsAndPrints =
    "echo $$ >\"$1\"; i=0; while [ $i -lt 20 ]; do sleep 0.02; echo; i=$((i+1)); done";
const std::string printed(20, '\n');

class TimeOfDay : public testing::TestWithParam<int> {
protected:
    TimeOfDay() { _host.write("script", waitsAndPrints); }

    const ScriptHost _host;
    const std::string _pidFile = _host.pathOf("pid");
};

TEST_P(TimeOfDay, DoesNotMoveTheLimit) {
    EXPECT_EQ(printed, withStep(_host, GetParam(), [&] { return _host.invoke("script", {_pidFile}).text; }));
}

constexpr int day = 24 * 60 * 60;
constexpr int past2038 = 30 * 365 * day;

INSTANTIATE_TEST_SUITE_P(Stepped, TimeOfDay, testing::Values(day, -day, past2038));

TEST(TimeOfDayControl, MovesTheLimitOfANaiveRunner) {
    const ScriptHost host;
    host.write("script", waitsAndPrints);
    EXPECT_NE(printed,
              withStep(host, day, [&] { return runNaively(host.pathOf("script"), {host.pathOf("pid")}, ample); }));
}

}  // namespace
}  // namespace TulTest
