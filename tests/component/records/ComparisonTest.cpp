#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "LoggingWrapper.h"
#include "Stream.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;

// What a wrong component would write must not pass

using Spoil = void (*)(Lines& calls, std::size_t place);

void remove(Lines& calls, std::size_t place) {
    calls.erase(calls.begin() + static_cast<std::ptrdiff_t>(place));
}
void repeat(Lines& calls, std::size_t place) {
    const std::string call = calls[place];
    calls.insert(calls.begin() + static_cast<std::ptrdiff_t>(place), call);
}
void swapWithTheNext(Lines& calls, std::size_t place) {
    std::swap(calls[place], calls[(place + 1) % calls.size()]);
}
/** The last letter of a text, a digit of a number. */
void changeTheLastArgument(Lines& calls, std::size_t place) {
    std::string& call = calls[place];
    char& last = call[call.size() - (call.back() == '"' ? 2 : 1)];
    last = last == '1' ? '2' : '1';
}
void changeTheFunction(Lines& calls, std::size_t place) {
    calls[place].insert(calls[place].find(" \""), "X");
}

struct SpoilRow {
    const char* name;
    Spoil spoil;

    friend std::ostream& operator<<(std::ostream& stream, const SpoilRow& row) { return stream << row.name; }
};

class SpoiledStream : public testing::TestWithParam<SpoilRow> {};

TEST_P(SpoiledStream, IsNeverEqualToTheExpectedOne) {
    for (const auto& [name, calls] : expectedStreams()) {
        for (std::size_t place = 0; place < calls.size(); ++place) {
            Lines spoiled = calls;
            GetParam().spoil(spoiled, place);
            ASSERT_NE("", difference(calls, spoiled)) << name << ", call " << place + 1;
        }
        ASSERT_EQ("", difference(calls, calls)) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Spoils, SpoiledStream,
                         testing::Values(SpoilRow{"OneCallLess", remove}, SpoilRow{"OneCallTwice", repeat},
                                         SpoilRow{"TwoCallsSwapped", swapWithTheNext},
                                         SpoilRow{"AnotherArgument", changeTheLastArgument},
                                         SpoilRow{"AnotherFunction", changeTheFunction}),
                         [](const auto& row) { return row.param.name; });

TEST(Difference, ShowsTheFirstCallsThatDifferAndThenAllThatWasWritten) {
    EXPECT_EQ(
        "call 2 differs (- expected, + written):\n"
        "  a\n"
        "- b\n- (end)\n"
        "+ c\n+ d\n+ (end)\n"
        "all that was written:\n"
        "a\nc\nd\n(end)\n",
        difference({"a", "b"}, {"a", "c", "d"}));
}

TEST(LevelRule, WritesRecordsUpToTheirSeverityAndTracesAboveSeven) {
    const Lines all{R"(log_printf f 3 1 "e")", R"(trace_v2_printf TulSshd 3 file f "e")", R"(log_printf f 6 1 "i")",
                    R"(trace_printf file f 9 " >> ")", R"(trace_v2_printf TulSshd 14 file f " >> ")"};
    EXPECT_EQ(0U, atLevel(all, 2).size());
    EXPECT_THAT(atLevel(all, 3), ElementsAre(all[0], all[1]));
    EXPECT_THAT(atLevel(all, 7), ElementsAre(all[0], all[1], all[2]));
    EXPECT_EQ(all, atLevel(all, 8));
}

// The recorder shows everything

TEST(RecorderOfCalls, ShowsEachArgumentByItsConversion) {
    Recorder recorder;
    const char* volatile none = nullptr;  // the compiler must not see through it
    Tul::LoggingWrapper::instance().log_printf("f", 3, 1, "%s 100%% %d %u %lu %s", "\" \\\x01\xff\n\t", -1,
                                               4294967295U, 2UL, none);
    EXPECT_THAT(
        recorder.calls,
        ElementsAre(R"(log_printf f 3 1 "%s 100%% %d %u %lu %s" "\" \\\x01\xff\n\t" -1 4294967295 2 (null))"));
}

TEST(RecorderOfCalls, ShowsWhatItDoesNotKnow) {
    Recorder recorder;
    Tul::LoggingWrapper& wrapper = Tul::LoggingWrapper::instance();
    const Tul::Trace::Handle other{"TulSshd"};
    wrapper.trace_v2_printf(other, 14, "file", "f", 0, " %x ", 1U);
    wrapper.trace_printf("file", "f", 0, 9, "x");
    EXPECT_THAT(recorder.calls, ElementsAre(R"(trace_v2_printf handle? 14 file f line? " %x " conversion?)",
                                            R"(trace_printf file f 9 line? "x")"));
}

}  // namespace
