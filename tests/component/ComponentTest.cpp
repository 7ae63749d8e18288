#include "ComponentTest.h"

#include <csignal>
#include <iostream>
#include <regex>

namespace TulTest {

namespace {

const RecordingFramework* dying = nullptr;

testing::ScopedTrace calledFrom(int line) {
    return {__FILE__, __LINE__, "called from line " + std::to_string(line) + " of the test"};
}

}  // namespace

void TestNode::givenStarted(const std::string& text) {
    ASSERT_EQ(BRY_OK, library.init(text));
    ASSERT_EQ(BRY_OK, library.start());
    forget();
}

void TestNode::forget() {
    framework.takeRuns();
    framework.records.clear();
    framework.calls.clear();
}

void TestNode::expectRuns(const Lines& expected, int line) {
    const auto place = calledFrom(line);
    EXPECT_EQ(expected, framework.takeRuns());
}

void TestNode::expectLogs(const LineMatchers& expected, int line) {
    const auto place = calledFrom(line);
    EXPECT_THAT(framework.logs(), testing::ElementsAreArray(expected));
    framework.records.clear();
}

void TestNode::expectSilence(int line) {
    expectRuns({}, line);
    expectLogs({}, line);
}

void TestNode::notify(const char* pattern, CmNotification& notification, int line) {
    const auto place = calledFrom(line);
    EXPECT_EQ(BRY_OK, framework.notify(pattern, notification));
}

Lines TestNode::steps() const {
    static const std::regex transaction("^(findInstances|getAttribute|createMo|deleteMo|commit) [0-9]+");
    Lines lines;
    for (const std::string& call : framework.calls) {
        if (!call.starts_with("getInterface") && !call.starts_with("getPortal")) {
            lines.push_back(std::regex_replace(call, transaction, "$1"));
        }
    }
    return lines;
}

void sayLastWords(const RecordingFramework& framework) {
    dying = &framework;
    std::signal(SIGABRT, [](int) {  // abort() raises it in the thread that calls it, so this may do anything
        for (const std::string& record : dying->logs()) {
            std::cerr << record << std::endl;
        }
    });
}

}  // namespace TulTest
