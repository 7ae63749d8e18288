#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "BryMwSpiTrace.h"
#include "FakeFramework.h"
#include "Logging.h"
#include "LoggingWrapper.h"
#include "TulMwSpiLog_1.h"

namespace TulTest {
namespace {

using Lines = std::vector<std::string>;

std::mutex linesMutex;
Lines lines;
std::atomic<std::int32_t> level = 6;

void add(const std::string& line) {
    const std::lock_guard lock(linesMutex);
    lines.push_back(line);
}

TulMwSpiLog_1 logInterface{
    {"Test", TUL_MW_SPI_LOG_NAME, TUL_MW_SPI_LOG_VERSION_1},
    [] { return level.load(); },
    [](const char* function, std::int32_t severity, std::int32_t category, const char* format, const char* text) {
        add("log " + std::string(function) + " " + std::to_string(severity) + " " + std::to_string(category) + " " +
            format + " " + text);
    }};

BryMwSpiTrace traceInterface{{"Test", BRY_MW_SPI_TRACE_NAME, nullptr},
                             [](const char* sourceFile, const char* function, std::int32_t line, std::int32_t kind,
                                const char* format, const char* text) {
                                 add("trace " + std::string(sourceFile) + " " + function + " " +
                                     std::to_string(line) + " " + std::to_string(kind) + " " + format + " " + text);
                             },
                             [](const char* subsystem, std::int32_t recordLevel, const char* sourceFile,
                                const char* function, std::int32_t line, const char* format, const char* text) {
                                 add("traceV2 " + std::string(subsystem) + " " + std::to_string(recordLevel) + " " +
                                     sourceFile + " " + function + " " + std::to_string(line) + " " + format + " " +
                                     text);
                             }};

class Logging : public testing::Test {
protected:
    Logging() {
        lines.clear();
        level = 6;
    }

    static void attachWithSinks(FakeFramework& framework) {
        framework.offer(logInterface);
        framework.offer(traceInterface);
        framework.attach();
    }

    Tul::LoggingWrapper& _log = Tul::LoggingWrapper::instance();
};

/** What an action writes to stderr. */
std::string stderrOf(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

TEST_F(Logging, HandsRecordsToTheFrameworkWithFormatAndFinishedText) {
    FakeFramework framework;
    attachWithSinks(framework);
    EXPECT_EQ("", stderrOf([&] {
                  _log.log_printf("start", 3, 1, "port %d", 22);
                  _log.trace_printf("src/X", "start", 7, 9, " >> Reason: %d", 2);
                  _log.trace_v2_printf(Tul::Trace::TulSshd, 14, "src/X", "start", 8, "%s", "text");
                  _log.trace_v2_printf(Tul::Trace::Common, 3, "src/Y", "stop", 9, "plain");
              }));
    EXPECT_EQ((Lines{"log start 3 1 port %d port 22", "trace src/X start 7 9  >> Reason: %d  >> Reason: 2",
                     "traceV2 TulSshd 14 src/X start 8 %s text", "traceV2 Common 3 src/Y stop 9 plain plain"}),
              lines);
}

TEST_F(Logging, AsksForTheInterfacesByNameOnlyOnce) {
    FakeFramework framework;
    attachWithSinks(framework);
    for (int i = 0; i < 3; ++i) {
        _log.log_printf("f", 3, 1, "text");
    }
    EXPECT_EQ("null TulMwSpiLog 1", framework.lastLookUp());
    for (int i = 0; i < 3; ++i) {
        _log.trace_printf("src/X", "f", 1, 0, "text");
    }
    EXPECT_EQ("null BryMwSpiTrace null", framework.lastLookUp());
    EXPECT_EQ(1, framework.lookUps(TUL_MW_SPI_LOG_NAME));
    EXPECT_EQ(1, framework.lookUps(BRY_MW_SPI_TRACE_NAME));
}

TEST_F(Logging, AsksForAMissingInterfaceAgainOnlyAfterTheNextAttach) {
    FakeFramework framework;
    framework.attach();
    stderrOf([&] {
        for (int i = 0; i < 3; ++i) {
            _log.log_printf("f", 3, 1, "text");
        }
    });
    EXPECT_EQ(1, framework.lookUps(TUL_MW_SPI_LOG_NAME));
    tulCommonDetach();
    attachWithSinks(framework);
    _log.log_printf("f", 3, 1, "text");
    EXPECT_EQ(2, framework.lookUps(TUL_MW_SPI_LOG_NAME));
    EXPECT_EQ(Lines{"log f 3 1 text text"}, lines);
}

TEST_F(Logging, UsesNoInterfaceAfterDetach) {
    {
        FakeFramework framework;
        attachWithSinks(framework);
        level = 9;
        EXPECT_EQ(9, _log.get_level());
    }
    EXPECT_EQ(6, _log.get_level());
    EXPECT_EQ("<3>f: text\n", stderrOf([&] { _log.log_printf("f", 3, 1, "text"); }));
    EXPECT_TRUE(lines.empty());
}

TEST_F(Logging, AsksForTheLevelEachTime) {
    FakeFramework framework;
    attachWithSinks(framework);
    for (const std::int32_t wanted : {0, 3, 8, -1, INT32_MAX}) {
        level = wanted;
        EXPECT_EQ(wanted, _log.get_level());
    }
}

TEST_F(Logging, WritesToStderrWithoutAFramework) {
    EXPECT_EQ(6, _log.get_level());
    EXPECT_EQ("<4>stop: not running: 5\n<7>run:  << \n", stderrOf([&] {
                  _log.log_printf("stop", 4, 1, "%s: %d", "not running", 5);
                  _log.trace_printf("src/X", "run", 1, 10, " << ");
                  _log.trace_v2_printf(Tul::Trace::TulSshd, 4, "src/X", "stop", 1, "a copy");
              }));
}

TEST_F(Logging, AllowsTheFrameworkToWriteRecordsDuringTheLookUp) {
    FakeFramework framework;
    framework.offer(logInterface);
    framework.duringLookUp([&] { _log.log_printf("getInterface", 6, 1, "looking"); });
    framework.attach();
    EXPECT_EQ("<6>getInterface: looking\n", stderrOf([&] { _log.log_printf("f", 3, 1, "text"); }));
    EXPECT_EQ(Lines{"log f 3 1 text text"}, lines);
}

TEST_F(Logging, TakesTextsOfAnyLength) {
    FakeFramework framework;
    attachWithSinks(framework);
    for (const std::size_t length : {0U, 1022U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string text(length, 'x');
        lines.clear();
        _log.log_printf("f", 3, 1, "%s", text.c_str());
        _log.trace_printf("s", "f", 1, 0, "%s", text.c_str());
        _log.trace_v2_printf(Tul::Trace::Common, 14, "s", "f", 1, "%s", text.c_str());
        EXPECT_EQ((Lines{"log f 3 1 %s " + text, "trace s f 1 0 %s " + text, "traceV2 Common 14 s f 1 %s " + text}),
                  lines);
    }
}

TEST_F(Logging, KeepsErrno) {
    EXPECT_NE("", stderrOf([&] {
                  errno = ENOSPC;
                  _log.log_printf("f", 3, 1, "%ls", L"\x110000");  // cannot be converted
                  EXPECT_EQ(ENOSPC, errno);
              }));
}

TEST_F(Logging, WritesTheBareFormatOfARecordThatCannotBeFormatted) {
    EXPECT_EQ("<3>f: %ls\n", stderrOf([&] { _log.log_printf("f", 3, 1, "%ls", L"\x110000"); }));
}

struct Escaped {
    const char* name;
    const char* text;
    const char* shown;
};

class StderrText : public testing::TestWithParam<Escaped> {};

TEST_P(StderrText, IsEscaped) {
    const std::string written =
        stderrOf([] { Tul::LoggingWrapper::instance().log_printf("f", 3, 1, "%s", GetParam().text); });
    EXPECT_EQ("<3>f: " + std::string(GetParam().shown) + "\n", written);
}

const Escaped escapedTexts[] = {
    {"Plain", "plain ~ \\ %n", "plain ~ \\ %n"},
    {"Control", "a\nb\tc\r\x1b[2J\x7f\x01", "a\\x0Ab\\x09c\\x0D\\x1B[2J\\x7F\\x01"},
    {"Utf8", "\u00e4\u20ac\U0001f600\u00a0", "\u00e4\u20ac\U0001f600\u00a0"},
    {"ControlInUtf8", "\xc2\x9b\xc2\x80", "\\xC2\\x9B\\xC2\\x80"},
    {"Latin1", "\xe4 \xff", "\\xE4 \\xFF"},
    {"Overlong", "\xc0\xaf\xe0\x80\xaf", "\\xC0\\xAF\\xE0\\x80\\xAF"},
    {"Surrogate", "\xed\xa0\x80", "\\xED\\xA0\\x80"},
    {"BeyondUnicode", "\xf4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"},
    {"CutShort", "\xe2\x82", "\\xE2\\x82"},
};

std::string nameOf(const testing::TestParamInfo<Escaped>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, StderrText, testing::ValuesIn(escapedTexts), nameOf);

TEST_F(Logging, WritesEachRecordToStderrInOneCall) {
    int ends[2];
    // A pipe in packet mode gives back what one write has put into it, and no more.
    ASSERT_EQ(0, pipe2(ends, O_DIRECT | O_CLOEXEC));
    const int saved = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    _log.log_printf("f", 3, 1, "%s", std::string(3000, 'x').c_str());
    _log.log_printf("g", 3, 1, "short");
    dup2(saved, STDERR_FILENO);
    std::array<char, PIPE_BUF> data{};
    EXPECT_EQ("<3>f: " + std::string(3000, 'x') + "\n",
              std::string(data.data(), static_cast<std::size_t>(read(ends[0], data.data(), data.size()))));
    EXPECT_EQ("<3>g: short\n",
              std::string(data.data(), static_cast<std::size_t>(read(ends[0], data.data(), data.size()))));
    for (const int descriptor : {saved, ends[0], ends[1]}) {
        close(descriptor);
    }
}

TEST_F(Logging, MayBeUsedByManyThreadsWhileTheFirstLookUpIsUnderWay) {
    FakeFramework framework;
    attachWithSinks(framework);
    std::array<std::thread, 8> threads;
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 100; ++i) {
                TUL_ERROR(Tul::Trace::Common, "text %d", i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(8U * 100U * 2U, lines.size());
}

}  // namespace
}  // namespace TulTest
