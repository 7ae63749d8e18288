#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Journal.h"
#include "Text.h"

namespace TulNode {
namespace {

TEST(TextEscaping, LeavesPrintableUtf8AndShowsEverythingElse) {
    EXPECT_EQ(escape("a \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 \\"), "a \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 \\");
    EXPECT_EQ(escape(std::string_view("\0\x1B[2J\x7F", 6)), "\\x00\\x1B[2J\\x7F");
    EXPECT_EQ(escape("\xC2\x9B"), "\\xC2\\x9B") << "a control character of eight bits";
    EXPECT_EQ(escape("\xC0\x80"), "\\xC0\\x80") << "overlong";
    EXPECT_EQ(escape("\xE0\x9F\xBF \xF0\x8F\xBF\xBF"), "\\xE0\\x9F\\xBF \\xF0\\x8F\\xBF\\xBF") << "overlong";
    EXPECT_EQ(escape("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "a surrogate";
    EXPECT_EQ(escape("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80") << "past the last character";
    EXPECT_EQ(escape("\xE2\x82"), "\\xE2\\x82") << "cut short";
    EXPECT_FALSE(isPrintable("a\n"));
    EXPECT_TRUE(isPrintable("\xC3\xA4"));
}

TEST(JournalOfTheNode, KeepsTheLastRecordsUpToItsLevel) {
    Journal journal;
    for (std::size_t i = 0; i <= Journal::mostRecords; ++i) {
        journal.log(Information, "count", std::to_string(i));
    }
    journal.log(7, "count", "too much");
    EXPECT_EQ(journal.last(Journal::mostRecords + 1).size(), Journal::mostRecords);
    EXPECT_EQ(journal.last(1)[0].line(), "info count: 1000");
    journal.setLevel(3);
    journal.log(Warning, "count", "not wanted any more");
    EXPECT_EQ(journal.last(1)[0].line(), "info count: 1000");
}

TEST(JournalOfTheNode, AccusesByNameWhateverTheLevel) {
    Journal journal;
    journal.setLevel(0);
    journal.setComponent("Zoo");
    journal.accuse("bites");
    EXPECT_EQ(journal.last(1)[0].line(), "error node: component misbehaves: Zoo bites");
    EXPECT_EQ(journal.accusations(), 1U);
}

TEST(JournalOfTheNode, WritesTimesInUtcWithMilliseconds) {
    const Record record{std::chrono::system_clock::time_point(std::chrono::milliseconds(1007)), Warning, "f", "t"};
    EXPECT_EQ(record.lineWithTime(), "1970-01-01T00:00:01.007Z warning f: t");
}

}  // namespace
}  // namespace TulNode
