#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <fstream>
#include <set>

#include "Path.h"
#include "Sanitizers.h"
#include "Stream.h"

namespace {

using namespace TulTest;

const std::vector<int> levels{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

class EveryRecord : public testing::TestWithParam<Path> {};

TEST_P(EveryRecord, IsTheOneThatIsExpectedAtEachLevel) {
    const Lines& expected = expectedStream(GetParam().name);
    for (const int level : levels) {
        RecordedNode node;
        GetParam().lead(node, level);
        GetParam().when(node);
        const std::string found = difference(atLevel(expected, level), node.recorder.calls);
        EXPECT_TRUE(found.empty()) << GetParam().place(level) << found;
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, EveryRecord, testing::ValuesIn(returningPaths()), testNameOf);

// Paths that end the process

Lines linesIn(const std::filesystem::path& path) {
    std::ifstream file(path);
    Lines lines;
    std::string line;
    while (std::getline(file, line)) {
        lines.push_back(line);
    }
    return lines;
}

/** A sanitizer turns the signal of a null pointer into an exit with a code of its own. */
bool endedBy(int signal, int status) {
    if (hasSanitizer && signal == SIGSEGV) {
        return WIFEXITED(status) && WEXITSTATUS(status) != 0;
    }
    return testing::KilledBySignal(signal)(status);
}

class EveryLastRecordDeathTest : public testing::TestWithParam<Path> {};

TEST_P(EveryLastRecordDeathTest, IsTheOneThatIsExpectedAtEachLevel) {
    const Lines& expected = expectedStream(GetParam().name);
    const End& end = GetParam().end;
    const auto isExpectedEnd = [&](int status) { return endedBy(end.signal, status); };
    for (const int level : levels) {
        const TemporaryDirectory directory;
        RecordedNode node;
        GetParam().lead(node, level);
        node.recorder.copiedTo = directory.path() / "calls";
        EXPECT_EXIT(GetParam().when(node), isExpectedEnd, end.message);
        const std::string found = difference(atLevel(expected, level), linesIn(node.recorder.copiedTo));
        EXPECT_TRUE(found.empty()) << GetParam().place(level) << found;
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, EveryLastRecordDeathTest, testing::ValuesIn(endingPaths()), testNameOf);

// The streams as a whole

TEST(EveryStream, BelongsToExactlyOnePath) {
    std::multiset<std::string> paths;
    for (const Paths& more : {returningPaths(), endingPaths()}) {
        for (const Path& path : more) {
            paths.insert(path.name);
        }
    }
    std::multiset<std::string> streams;
    for (const auto& [name, calls] : expectedStreams()) {
        streams.insert(name);
    }
    EXPECT_EQ(streams, paths);
}

/** Every message of the component's sources, as tests/docs/list-messages prints them. */
std::set<std::string> listedTexts() {
    const Lines lines = linesIn(TUL_MESSAGES);
    return {lines.begin(), lines.end()};
}

std::set<std::string> shownTexts(const std::map<std::string, Lines>& streams) {
    std::set<std::string> texts;
    for (const auto& [name, calls] : streams) {
        for (const std::string& call : calls) {
            texts.insert(textOf(call));
        }
    }
    return texts;
}

TEST(EveryStream, ShowsTogetherWithTheOthersEachTextOfTheComponentAndNoOther) {
    ASSERT_FALSE(listedTexts().empty());
    EXPECT_EQ(listedTexts(), shownTexts(expectedStreams()));
}

TEST(EveryStream, IsMissedWhenItAloneShowsAText) {
    std::map<std::string, Lines> others = expectedStreams();
    ASSERT_EQ(1U, others.erase("setCiphers/Nothing"));
    std::set<std::string> texts = shownTexts(others);
    EXPECT_NE(listedTexts(), texts);
    texts.insert("info\tNo ciphers to update.");
    EXPECT_EQ(listedTexts(), texts);
}

TEST(EveryStream, ShowsItsTextEvenWithQuotesAndConversionsInIt) {
    EXPECT_EQ("error\ta \\\"b\\\" %s\\n", textOf(R"(log_printf f 3 1 "a \"b\" %s\n" "c")"));
    EXPECT_EQ("trace\t >> ", textOf(R"(trace_printf file f 9 " >> ")"));
}

}  // namespace
