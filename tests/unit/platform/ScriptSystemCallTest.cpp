#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "ProcessTable.h"
#include "ScriptHost.h"
#include "SystemCallFaults.h"

namespace TulTest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const char* const systemCalls[] = {"pipe2", "open", "posix_spawn", "pidfd_open", "poll", "read", "waitid"};
const int errors[] = {EINTR, EAGAIN, EMFILE, ENOMEM, EIO, ECHILD};

/** Takes the status of children whose runner was told that there are none. */
void reapTheRest() {
    for (siginfo_t info{}; waitid(P_ALL, 0, &info, WEXITED) == 0;) {
    }
}

class FailingSystemCall : public testing::TestWithParam<std::tuple<const char*, int>> {
protected:
    ~FailingSystemCall() override { reapTheRest(); }

    const char* call() const { return std::get<const char*>(GetParam()); }
    int error() const { return std::get<int>(GetParam()); }

    ScriptHost _host;
};

TEST_P(FailingSystemCall, OnceIsInvisibleWhenInterruptedAndElseADefinedError) {
    _host.write("script", "echo hello");
    Outcome outcome;
    {
        const SystemCallFault fault(call(), error(), 1);
        outcome = _host.invoke("script");
        EXPECT_LE(1, fault.calls());
    }
    if (error() == EINTR && std::string("posix_spawn") != call()) {
        EXPECT_TRUE(outcome.succeeded);
        EXPECT_EQ("hello\n", outcome.text);
    } else {
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_THAT(outcome.text, StartsWith("Script " + _host.pathOf("script") + " "));
    }
}

TEST_P(FailingSystemCall, ForEverIsADefinedErrorWithinTheLimit) {
    _host.write("script", "echo hello");
    Outcome outcome;
    {
        const SystemCallFault fault(call(), error(), SystemCallFault::forEver);
        outcome = _host.invoke("script", {}, 500);
        EXPECT_LE(1, fault.calls());
    }
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.text, StartsWith("Script " + _host.pathOf("script") + " "));
    // The next run works.
    EXPECT_EQ("hello\n", _host.invoke("script").text);
}

std::string nameOf(const testing::TestParamInfo<FailingSystemCall::ParamType>& info) {
    return std::string(std::get<const char*>(info.param)) + "_" + strerrorname_np(std::get<int>(info.param));
}

INSTANTIATE_TEST_SUITE_P(All, FailingSystemCall,
                         testing::Combine(testing::ValuesIn(systemCalls), testing::ValuesIn(errors)), nameOf);

TEST(ScriptStatus, IsUnknownWhenTheHostIgnoresItsChildren) {
    const ScriptHost host;
    const sighandler_t before = signal(SIGCHLD, SIG_IGN);
    const Outcome succeeded = host.run("echo hello; exit 0");
    const Outcome failed = host.run("echo why >&2; exit 1");
    const Outcome hanging = host.run("sleep 60", 300);
    signal(SIGCHLD, before);
    EXPECT_FALSE(succeeded.succeeded);
    EXPECT_THAT(succeeded.text, HasSubstr("ended, status unknown"));
    EXPECT_THAT(failed.text,
                testing::AnyOf(HasSubstr("ended, status unknown: why"), testing::EndsWith("ended, status unknown")));
    EXPECT_THAT(hanging.text, HasSubstr("was still running after 300 ms and was killed"));
}

TEST(ScriptStatus, IsTrueOrUnknownWhenAnotherThreadReapsEveryChild) {
    const ScriptHost host;
    host.write("succeeding", "exit 0");
    host.write("failing", "exit 7");
    std::atomic<bool> done = false;
    std::thread reaper([&] {
        while (!done) {
            waitpid(-1, nullptr, WNOHANG);
        }
    });
    for (int i = 0; i < 100; ++i) {
        const Outcome success = host.invoke("succeeding");
        EXPECT_TRUE(success.succeeded || success.text.ends_with("ended, status unknown")) << success.text;
        const Outcome failure = host.invoke("failing");
        EXPECT_FALSE(failure.succeeded);
        EXPECT_THAT(failure.text, testing::AnyOf(testing::EndsWith("ended, status unknown"),
                                                 testing::EndsWith("failed with exit code 7")));
    }
    done = true;
    reaper.join();
}

TEST(ScriptStatus, OfAChildThatIsNotOursAnyMoreBringsItNoSignal) {
    const ScriptHost host;
    host.write("script", "echo $$ >\"$1\"; exec sleep 60");
    const std::filesystem::path pidFile = host.directory() / "pid";
    const int sentBefore = signalsSent();
    Outcome outcome;
    {
        const SystemCallFault fault("waitid", ECHILD, SystemCallFault::forEver);
        outcome = host.invoke("script", {pidFile.string()}, 300);
    }
    EXPECT_THAT(outcome.text, testing::EndsWith("was still running after 300 ms, status unknown"));
    EXPECT_EQ(sentBefore, signalsSent());
    kill(awaitPid(pidFile), SIGKILL);
    reapTheRest();
}

/** Interrupts the system calls of the thread that made it a thousand times a second. */
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { ++count; };
        sigaction(SIGUSR1, &action, &_before);
        sigevent event{};
        event.sigev_notify = SIGEV_THREAD_ID;
        event.sigev_signo = SIGUSR1;
        event._sigev_un._tid = gettid();
        timer_create(CLOCK_MONOTONIC, &event, &_timer);
        const itimerspec everyMillisecond{{0, 1000000}, {0, 1000000}};
        timer_settime(_timer, 0, &everyMillisecond, nullptr);
    }

    ~Interruptions() {
        timer_delete(_timer);
        sigaction(SIGUSR1, &_before, nullptr);
    }

    static inline std::atomic<int> count = 0;

    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

private:
    timer_t _timer{};
    struct sigaction _before {};
};

TEST(ScriptUnderSignals, GivesTheSameResults) {
    const ScriptHost host;
    const Interruptions interruptions;
    EXPECT_EQ(std::string(300000, 'x'), host.run("sleep 0.1; head -c 300000 /dev/zero | tr '\\0' x; sleep 0.1").text);
    EXPECT_THAT(host.run("sleep 0.1; exit 3").text, testing::EndsWith("failed with exit code 3"));
    EXPECT_THAT(host.run("sleep 60", 300).text, HasSubstr("was still running after 300 ms and was killed"));
    EXPECT_LT(50, Interruptions::count);
}

TEST(ScriptWithoutResources, IsADefinedErrorWhenNoDescriptorIsLeft) {
    const ScriptHost host;
    host.write("script", "echo hello");
    // The undefined sanitizer looks at the first exception of each type through a pipe, for which none is left later.
    host.invoke("missing");
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    int failed = 0;
    for (rlim_t limit = 3; limit < 64; ++limit) {
        const rlimit few{limit, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        const Outcome outcome = host.invoke("script");
        setrlimit(RLIMIT_NOFILE, &before);
        failed += outcome.succeeded ? 0 : 1;
        EXPECT_THAT(outcome.text, outcome.succeeded ? HasSubstr("hello") : HasSubstr(host.pathOf("script")));
    }
    EXPECT_LT(0, failed);
    EXPECT_LT(failed, 61);
}

}  // namespace
}  // namespace TulTest
