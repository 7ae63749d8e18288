#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include "ProcessTable.h"
#include "ScriptHost.h"
#include "SystemCallFaults.h"

namespace TulTest {
namespace {

constexpr std::size_t mebibyte = 1024 * 1024;

/** Memory of this process that is in use, in bytes. */
std::size_t residentMemory() {
    std::ifstream file("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(ScriptOutput, IsReturnedByteForByte) {
    const Outcome outcome = ScriptHost().run(R"(printf 'a\000b\377\376\033[2J%%n\r\n\nend')");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(std::string("a\0b\xff\xfe\x1b[2J%n\r\n\nend", 17), outcome.text);
}

TEST(ScriptOutput, MayBeEmpty) {
    const Outcome outcome = ScriptHost().run("exit 0");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ("", outcome.text);
}

TEST(ScriptOutput, IsKeptUpToAMebibyteOfOneLine) {
    const Outcome outcome = ScriptHost().run("printf start; head -c 10000000 /dev/zero | tr '\\0' x");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(mebibyte, outcome.text.size());
    EXPECT_EQ("startxxx", outcome.text.substr(0, 8));
}

TEST(ScriptOutput, IsReturnedAlsoWhenTheScriptClosesItsStreamsAndRunsOn) {
    const Outcome outcome = ScriptHost().run("echo hello; exec >&- 2>&-; sleep 0.1; exit 0");
    EXPECT_TRUE(outcome.succeeded) << outcome.text;
    EXPECT_EQ("hello\n", outcome.text);
}

struct Flood {
    const char* name;
    const char* script;
    std::size_t kept;
};

class ScriptFlood : public testing::TestWithParam<Flood> {};

TEST_P(ScriptFlood, NeitherBlocksTheScriptNorFillsTheMemory) {
    const ScriptHost host;
    const std::size_t before = residentMemory();
    const Outcome outcome = host.run(GetParam().script);
    EXPECT_TRUE(outcome.succeeded) << outcome.text.substr(0, 200);
    EXPECT_EQ(GetParam().kept, outcome.text.size());
    EXPECT_LT(residentMemory(), before + 32 * mebibyte);
}

const Flood floods[] = {
    {"GibibyteOnStdout", "exec head -c 1073741824 /dev/zero", mebibyte},
    {"GibibyteOnStderr", "exec head -c 1073741824 /dev/zero >&2", 0},
    {"HalfAGibibyteOnBoth", "head -c 536870912 /dev/zero & head -c 536870912 /dev/zero >&2; wait", mebibyte},
};

std::string nameOf(const testing::TestParamInfo<Flood>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, ScriptFlood, testing::ValuesIn(floods), nameOf);

TEST(ScriptOutput, OfAnEndlessWriterStopsAtTheTimeLimit) {
    const ScriptHost host;
    EXPECT_FALSE(host.run("exec yes", 300).succeeded);
    EXPECT_FALSE(host.run("exec yes >&2", 300).succeeded);
    EXPECT_FALSE(host.run("yes & yes >&2", 300).succeeded);
}

/** What a script has left behind, by the number in the file "pid"; killed at the end. */
class LeftBehind {
public:
    explicit LeftBehind(const ScriptHost& host) : _pidFile(host.directory() / "pid") {}
    ~LeftBehind() { kill(awaitPid(_pidFile), SIGKILL); }

    bool isStillThere() const { return isAlive(awaitPid(_pidFile)); }

    LeftBehind(const LeftBehind&) = delete;
    LeftBehind& operator=(const LeftBehind&) = delete;

private:
    std::filesystem::path _pidFile;
};

TEST(ScriptOutput, IsReturnedWhileAProcessThatWasLeftBehindHoldsThePipe) {
    const ScriptHost host;
    const LeftBehind sleeper(host);
    host.write("script", "echo before; sleep 60 & echo $! >\"$1\"; echo after");
    const Outcome outcome = host.invoke("script", {host.pathOf("pid")});
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ("before\nafter\n", outcome.text);
    EXPECT_TRUE(sleeper.isStillThere());
}

TEST(ScriptOutput, IsReturnedWhileAProcessThatWasLeftBehindWritesForEver) {
    const ScriptHost host;
    const LeftBehind writer(host);
    host.write("script", "echo before; (trap '' PIPE; while :; do echo more 2>/dev/null; done) & echo $! >\"$1\"");
    const Outcome outcome = host.invoke("script", {host.pathOf("pid")});
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_TRUE(outcome.text.starts_with("before\n")) << outcome.text.substr(0, 100);
    EXPECT_LE(outcome.text.size(), mebibyte);
    EXPECT_TRUE(writer.isStillThere());
}

TEST(ScriptOutput, ThatIsStillInThePipeWhenTheScriptHasEndedIsReturned) {
    const ScriptHost host;
    host.write("script", "exec head -c 60000 /dev/zero");
    // So many interruptions that the script has ended before its output is looked at.
    const SystemCallFault interrupted("poll", EINTR, 1000000);
    const Outcome outcome = host.invoke("script");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(60000U, outcome.text.size());
}

}  // namespace
}  // namespace TulTest
