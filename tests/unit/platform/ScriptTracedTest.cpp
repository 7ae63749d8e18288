#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

// In the C library's 2.36 this header forgets to say so itself.
extern "C" {
#include <sys/pidfd.h>
}

#include "Emulation.h"
#include "ProcessTable.h"
#include "ScriptHost.h"

namespace TulTest {
namespace {

enum TracerEnd { Traced, CannotTrace };

/**
 * Traces the script, as strace does for an engineer, and is slow: the script has long ended when its end is taken
 * note of. Until then the kernel keeps the end from the parent.
 */
[[noreturn]] void traceSlowly(const std::filesystem::path& pidFile, const std::filesystem::path& go) {
    constexpr int late = 100;  // milliseconds
    const pid_t script = awaitPid(pidFile);
    if (ptrace(PTRACE_SEIZE, script, nullptr, nullptr) != 0) {
        std::ofstream(go) << "go\n";
        _exit(CannotTrace);
    }
    pollfd end{pidfd_open(script, 0), POLLIN, 0};
    std::ofstream(go) << "go\n";
    poll(&end, 1, -1);
    poll(nullptr, 0, late);
    waitpid(script, nullptr, __WALL);
    _exit(Traced);
}

TEST(TracedScript, IsAwaitedUntilItsTracerLetsGo) {
    if (isEmulated()) {
        GTEST_SKIP() << "the emulator has no ptrace";
    }
    const ScriptHost host;
    const std::string go = host.pathOf("go");
    ASSERT_EQ(0, mkfifo(go.c_str(), S_IRUSR | S_IWUSR));
    host.write("script", "echo $$ >\"$1\"; read word <\"$2\"; echo $word");
    const pid_t tracer = fork();
    if (tracer == 0) {
        traceSlowly(host.pathOf("pid"), go);
    }
    const Outcome outcome = host.invoke("script", {host.pathOf("pid"), go});
    int status = -1;
    ASSERT_EQ(tracer, waitpid(tracer, &status, 0));
    if (WEXITSTATUS(status) == CannotTrace) {
        GTEST_SKIP() << "this machine allows no tracing";
    }
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ("go\n", outcome.text);
}

}  // namespace
}  // namespace TulTest
