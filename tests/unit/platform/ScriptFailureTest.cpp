#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <fstream>

#include "Emulation.h"
#include "ScriptHost.h"

namespace TulTest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

struct Unrunnable {
    const char* name;
    void (*prepare)(const fs::path& script);
    const char* cause;
};

void writeExecutable(const fs::path& script, const std::string& content) {
    std::ofstream(script) << content;
    fs::permissions(script, fs::perms::owner_all);
}

const Unrunnable unrunnables[] = {
    {"Missing", [](const fs::path&) {}, "cannot be run: No such file or directory"},
    {"Folder", [](const fs::path& script) { fs::create_directory(script); }, "cannot be run: Permission denied"},
    {"NotExecutable", [](const fs::path& script) { std::ofstream(script) << "#!/bin/sh\n"; },
     "cannot be run: Permission denied"},
    {"InterpreterWithCarriageReturn", [](const fs::path& script) { writeExecutable(script, "#!/bin/sh\r\n"); },
     "cannot be run, its interpreter is missing: No such file or directory"},
    {"MissingInterpreter", [](const fs::path& script) { writeExecutable(script, "#!/no/such/shell\n"); },
     "cannot be run, its interpreter is missing: No such file or directory"},
    {"NoInterpreterLine", [](const fs::path& script) { writeExecutable(script, "echo hello\n"); },
     "cannot be run: Exec format error"},
    {"Empty", [](const fs::path& script) { writeExecutable(script, ""); }, "cannot be run: Exec format error"},
    {"DanglingLink", [](const fs::path& script) { fs::create_symlink("/no/such/script", script); },
     "cannot be run: No such file or directory"},
    {"LinkLoop", [](const fs::path& script) { fs::create_symlink(script, script); },
     "cannot be run: Too many levels of symbolic links"},
    {"ExitCode126", [](const fs::path& script) { writeExecutable(script, "#!/bin/sh\nexit 126\n"); },
     "cannot be run, exit code 126"},
    {"ExitCode127", [](const fs::path& script) { writeExecutable(script, "#!/bin/sh\nexit 127\n"); },
     "cannot be run, exit code 127"},
};

class UnrunnableScript : public testing::TestWithParam<Unrunnable> {};

TEST_P(UnrunnableScript, IsReportedWithItsNameAndTheCause) {
    const ScriptHost host;
    GetParam().prepare(host.pathOf("vorma"));
    const Outcome outcome = host.invoke("vorma");
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.text, StartsWith("Script " + host.pathOf("vorma") + " cannot be run"));
    if (isEmulated() && !std::string_view(GetParam().cause).starts_with("cannot be run, exit code")) {
        GTEST_SKIP() << noSpawnErrors;
    }
    EXPECT_EQ("Script " + host.pathOf("vorma") + " " + GetParam().cause, outcome.text);
}

std::string nameOf(const testing::TestParamInfo<Unrunnable>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, UnrunnableScript, testing::ValuesIn(unrunnables), nameOf);

TEST(ScriptFailure, NamesAScriptThatSomebodyIsWriting) {
    const ScriptHost host;
    host.write("script", "exit 0");
    std::ofstream writer(host.pathOf("script"), std::ios::app);
    const Outcome outcome = host.invoke("script");
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.text, StartsWith("Script " + host.pathOf("script") + " cannot be run"));
    if (isEmulated()) {
        GTEST_SKIP() << noSpawnErrors;
    }
    EXPECT_EQ("Script " + host.pathOf("script") + " cannot be run: Text file busy", outcome.text);
}

TEST(ScriptFailure, TellsEachExitCode) {
    const ScriptHost host;
    host.write("script", "exit $1");
    for (int code = 1; code <= 255; ++code) {
        const std::string verdict =
            code == 126 || code == 127 ? "cannot be run, exit code " : "failed with exit code ";
        const Outcome outcome = host.invoke("script", {std::to_string(code)});
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_EQ("Script " + host.pathOf("script") + " " + verdict + std::to_string(code), outcome.text);
    }
}

/** Those that end a process by themselves. */
bool endsAProcess(int signal) {
    for (const int other : {SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG, SIGWINCH}) {
        if (signal == other) {
            return false;
        }
    }
    return true;
}

TEST(ScriptFailure, TellsEachSignalByNumberAndName) {
    const ScriptHost host;
    host.write("script", "ulimit -c 0; kill -$1 $$; sleep 60");
    for (int signal = 1; signal < 32; ++signal) {
        if (endsAProcess(signal)) {
            const Outcome outcome = host.invoke("script", {std::to_string(signal)});
            EXPECT_FALSE(outcome.succeeded);
            EXPECT_EQ("Script " + host.pathOf("script") + " was ended by signal " + std::to_string(signal) + " (SIG" +
                          sigabbrev_np(signal) + ")",
                      outcome.text);
        }
    }
    if (isEmulated()) {
        GTEST_SKIP()
            << "the emulator numbers real-time signals otherwise than the scripts do that it does not emulate";
    }
    EXPECT_THAT(host.invoke("script", {"40"}).text, testing::EndsWith(" was ended by signal 40"));
}

TEST(ScriptFailure, EndsWithWhatTheScriptWroteToStderr) {
    const Outcome outcome = ScriptHost().run("echo 'not there: /etc/ssh' >&2; echo ignored; exit 4");
    EXPECT_THAT(outcome.text, testing::EndsWith(" failed with exit code 4: not there: /etc/ssh"));
}

TEST(ScriptFailure, KeepsTheLastFourKibibytesOfStderr) {
    const Outcome outcome =
        ScriptHost().run("i=0; while [ $i -lt 3000 ]; do echo line $i >&2; i=$((i+1)); done; exit 1");
    EXPECT_THAT(outcome.text, testing::EndsWith("line 2999"));
    EXPECT_THAT(outcome.text, testing::Not(HasSubstr("line 1000\n")));
    EXPECT_GT(outcome.text.size(), 4000U);
    EXPECT_LT(outcome.text.size(), 4500U);
}

TEST(ScriptFailure, ShowsStderrUnexpandedAndBeyondNul) {
    const Outcome outcome = ScriptHost().run(R"(printf 'a\000b %%s %%n \033[2J\377\n\n' >&2; exit 1)");
    EXPECT_THAT(outcome.text, testing::EndsWith(": a?b %s %n \033[2J\377"));
}

TEST(ScriptFailure, DropsWhatWasPrinted) {
    const Outcome outcome = ScriptHost().run("echo 7; exit 1");
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.text, testing::EndsWith("failed with exit code 1"));
}

}  // namespace
}  // namespace TulTest
