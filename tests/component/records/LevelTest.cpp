#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "LoggingWrapper.h"
#include "Path.h"
#include "Stream.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;

// The level falls to that of errors between two records, wherever that may be

constexpr int errorsOnly = 3;
constexpr int everything = 8;

/** What is expected when it falls after so many calls. */
Lines expectedWhenTheLevelFalls(const Lines& stream, std::size_t calls) {
    const auto cut = stream.begin() + static_cast<std::ptrdiff_t>(calls);
    Lines expected(stream.begin(), cut);
    const Lines rest = atLevel(Lines(cut, stream.end()), errorsOnly);
    expected.insert(expected.end(), rest.begin(), rest.end());
    return expected;
}

Lines writtenWhenTheLevelFalls(const Path& path, std::size_t calls) {
    RecordedNode node;
    path.lead(node, everything);
    node.recorder.onCall = [&] {
        if (node.recorder.calls.size() == calls) {
            node.recorder.level = errorsOnly;
        }
    };
    path.when(node);
    return node.recorder.calls;
}

/** A record and its copy are one: the level is asked before both. */
Paths pathsOfSeveralRecords() {
    Paths paths = returningPaths();
    std::erase_if(paths, [](const Path& path) { return expectedStream(path.name).size() < 4; });
    return paths;
}

class LevelOfEveryRecord : public testing::TestWithParam<Path> {};

TEST_P(LevelOfEveryRecord, IsTheOneThatHoldsJustBeforeIt) {
    const Lines& stream = expectedStream(GetParam().name);
    for (std::size_t calls = 2; calls < stream.size(); calls += 2) {
        const Lines expected = expectedWhenTheLevelFalls(stream, calls);
        const std::string found = difference(expected, writtenWhenTheLevelFalls(GetParam(), calls));
        ASSERT_TRUE(found.empty()) << GetParam().place(errorsOnly) << "from call " << calls << " on: " << found;
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, LevelOfEveryRecord, testing::ValuesIn(pathsOfSeveralRecords()), testNameOf);

/** Asks once, at its beginning. */
void writeNaively(RecordedNode& /*node*/) {
    Tul::LoggingWrapper& wrapper = Tul::LoggingWrapper::instance();
    const int level = wrapper.get_level();
    for (const int kind : {9, 10}) {
        if (level > 7) {
            wrapper.trace_printf("file", "f", 1, kind, "text");
            wrapper.trace_v2_printf(Tul::Trace::Common, 14, "file", "f", 1, "text");
        }
    }
}

TEST(LevelOfEveryRecordOfANaiveWriter, IsNotTheOneThatHoldsJustBeforeIt) {
    const Lines stream{R"(trace_printf file f 9 "text")", R"(trace_v2_printf Common 14 file f "text")",
                       R"(trace_printf file f 10 "text")", R"(trace_v2_printf Common 14 file f "text")"};
    const Path naive{"naive/Path", nothing, writeNaively};
    EXPECT_EQ("", difference(stream, writtenWhenTheLevelFalls(naive, stream.size())));
    EXPECT_NE("", difference(expectedWhenTheLevelFalls(stream, 2), writtenWhenTheLevelFalls(naive, 2)));
}

// The level changes both ways while createMo runs

const std::string entry = R"(trace_printf src/tul_sshd_manager/src/SshComponent createMo 9 " >> ")";
const std::string exit = R"(trace_printf src/tul_sshd_manager/src/SshComponent createMo 10 " << ")";
const std::string error = R"(log_printf createMo 3 1 "%s Mo Creation Failed!!." "CliSsh")";

/** createMo, which the framework refuses, with other levels while it runs. */
class LevelWhileItRuns : public testing::Test {
public:
    LevelWhileItRuns() {
        initialized(false)(node);
        start(node);
        node.framework.results["createMo"] = -77;
        node.recorder.calls.clear();
    }

    /** The level from this call of the framework on. */
    void givenLevelFrom(const char* operation, int level) {
        node.framework.during[operation] = [this, level] { node.recorder.level = level; };
    }

    /** What createMo itself writes, without the copies. */
    Lines written() {
        node.component.createMo("CliSsh", "cliSshId");
        Lines own;
        std::copy_if(node.recorder.calls.begin(), node.recorder.calls.end(), std::back_inserter(own),
                     [](const auto& call) {
                         return call.find("createMo") != std::string::npos && !call.starts_with("trace_v2");
                     });
        return own;
    }

    RecordedNode node;
};

TEST_F(LevelWhileItRuns, IsAskedAgainWhenItHasFallen) {
    node.recorder.level = 8;
    givenLevelFrom("newTransaction", 3);
    EXPECT_THAT(written(), ElementsAre(entry, error));
}

TEST_F(LevelWhileItRuns, IsAskedAgainWhenItHasRisen) {
    node.recorder.level = 0;
    givenLevelFrom("createMo", 8);
    EXPECT_THAT(written(), ElementsAre(error, exit));
}

TEST_F(LevelWhileItRuns, IsAskedAgainWhenItHasFallenAndRisen) {
    node.recorder.level = 8;
    givenLevelFrom("newTransaction", 0);
    givenLevelFrom("createMo", 8);
    EXPECT_THAT(written(), ElementsAre(entry, error, exit));
}

}  // namespace
