#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExpectedRecords.h"
#include "Logging.h"

namespace {

using namespace TulTest;
using testing::IsEmpty;

const RecordSource component{"TulSshd", "tests/unit/common/LoggingTest"};
const RecordSource common{"Common", "tests/unit/common/LoggingTest"};

void writeError(const char* text, int number) {
    TUL_ERROR(Tul::Trace::TulSshd, "%s is %d", text, number);
}
void writeWarning(const char* text, int number) {
    TUL_WARNING(Tul::Trace::TulSshd, "%s is %d", text, number);
}
void writeInformation(const char* text, int number) {
    TUL_INFO(Tul::Trace::TulSshd, "%s is %d", text, number);
}
void writeEntry(const char* text, int number) {
    TUL_TRACE_ENTRY(Tul::Trace::TulSshd, "%s is %d", text, number);
}
void writeExit(const char* text, int number) {
    TUL_TRACE_EXIT(Tul::Trace::TulSshd, "%s is %d", text, number);
}
void writeTrace(const char* text, int number) {
    TUL_TRACE(Tul::Trace::TulSshd, "%s is %d", text, number);
}

struct Kind {
    const char* name;
    void (*write)(const char* text, int number);
    int lowestLevel;
    Records (RecordSource::*expected)(const std::string&, const std::string&, const RecordSource::Text&) const;
    const char* function;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

const Kind kinds[] = {
    {"Error", writeError, 3, &RecordSource::error, "writeError"},
    {"Warning", writeWarning, 4, &RecordSource::warning, "writeWarning"},
    {"Information", writeInformation, 6, &RecordSource::information, "writeInformation"},
    {"Entry", writeEntry, 8, &RecordSource::entry, "writeEntry"},
    {"Exit", writeExit, 8, &RecordSource::exit, "writeExit"},
    {"Trace", writeTrace, 8, &RecordSource::trace, "writeTrace"},
};

class LoggingOf : public testing::TestWithParam<Kind> {
protected:
    RecordingFramework framework;
};

TEST_P(LoggingOf, WritesTwoRecordsAtItsLevelAndAboveAndNothingBelow) {
    const Records both = (component.*GetParam().expected)(GetParam().function, "%s is %d", "the text is 5");
    for (int level = -1; level <= 15; ++level) {
        SCOPED_TRACE(level);
        framework.records.clear();
        framework.logLevel = level;
        GetParam().write("the text", 5);
        EXPECT_EQ(framework.records, level >= GetParam().lowestLevel ? both : Records{});
    }
}

TEST_P(LoggingOf, KeepsPercentSignsAndLineEndsOfItsArguments) {
    framework.logLevel = 8;
    GetParam().write("100%s\n%n", 5);
    EXPECT_EQ(framework.records, (component.*GetParam().expected)(GetParam().function, "%s is %d", "100%s\n%n is 5"));
}

INSTANTIATE_TEST_SUITE_P(EveryKind, LoggingOf, testing::ValuesIn(kinds),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Logging, DoesNotEvaluateArgumentsBelowTheLevel) {
    RecordingFramework framework;
    int evaluations = 0;
    framework.logLevel = 2;
    TUL_ERROR(Tul::Trace::Common, "%d", ++evaluations);
    TUL_WARNING(Tul::Trace::Common, "%d", ++evaluations);
    TUL_INFO(Tul::Trace::Common, "%d", ++evaluations);
    framework.logLevel = 7;
    TUL_TRACE_ENTRY(Tul::Trace::Common, "%d", ++evaluations);
    TUL_TRACE_EXIT(Tul::Trace::Common, "%d", ++evaluations);
    TUL_TRACE(Tul::Trace::Common, "%d", ++evaluations);

    EXPECT_EQ(0, evaluations);
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST(Logging, AsksForTheLevelBeforeEachRecord) {
    RecordingFramework framework;
    framework.logLevel = 3;
    TUL_INFO(Tul::Trace::Common, "first");
    framework.logLevel = 6;
    TUL_INFO(Tul::Trace::Common, "second");
    framework.logLevel = 3;
    TUL_INFO(Tul::Trace::Common, "third");
    EXPECT_EQ(framework.records, common.information("TestBody", "second"));
}

TEST(Logging, NamesTheSubsystemOfItsHandle) {
    RecordingFramework framework;
    framework.logLevel = 8;
    TUL_ERROR(Tul::Trace::Common, "failed");
    TUL_TRACE(Tul::Trace::TulSshd, "seen");
    EXPECT_EQ(framework.records, common.error("TestBody", "failed") + component.trace("TestBody", "seen"));
}

TEST(Logging, WritesTextsOfAnyLength) {
    RecordingFramework framework;
    const std::string text(100000, 'x');
    TUL_ERROR(Tul::Trace::Common, "%s", text.c_str());
    EXPECT_EQ(framework.records, common.error("TestBody", "%s", text));
}

struct Path {
    const char* name;
    const char* made;
    const char* wanted;
};

void PrintTo(const Path& path, std::ostream* stream) {
    *stream << path.name;
}

class SourceFileOf : public testing::TestWithParam<Path> {};

TEST_P(SourceFileOf, APathIsThePathWithoutItsExtension) {
    EXPECT_STREQ(GetParam().wanted, GetParam().made);
}

constexpr Tul::SourceFile header{"src/common/inc/Portal.h"};
constexpr Tul::SourceFile dotsInAFolder{"a.b/c.d/File.cpp"};
constexpr Tul::SourceFile severalDots{"src/File.inc.cpp"};
constexpr Tul::SourceFile noExtension{"a.b/File"};
constexpr Tul::SourceFile empty{""};

INSTANTIATE_TEST_SUITE_P(Paths, SourceFileOf,
                         testing::Values(Path{"Header", header.path, "src/common/inc/Portal"},
                                         Path{"DotsInAFolder", dotsInAFolder.path, "a.b/c.d/File"},
                                         Path{"SeveralDots", severalDots.path, "src/File.inc"},
                                         Path{"NoExtension", noExtension.path, "a.b/File"},
                                         Path{"Empty", empty.path, ""}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
