#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <ostream>
#include <string>

#include "ChildProgram.h"
#include "ComponentLibrary.h"
#include "Emulation.h"
#include "Sanitizers.h"
#include "TemporaryDirectory.h"

namespace {

using namespace TulTest;
using testing::HasSubstr;

constexpr int fewLives = 50;

/** Emulated, a life takes many times as long. */
int manyLives() {
    return isEmulated() ? 200 : 1000;
}

/** Why thousands of scripts are not started from the development node there, which has threads that come and go. */
constexpr const char* hangs = "the emulator's fork hangs now and then in a process that also ends threads";

/** Lives of a library in one of the two hosts, with an adapter that says yes to everything. */
Outcome livesIn(const std::string& host, const std::string& library, int lives) {
    const TemporaryDirectory scripts;
    scripts.writeScript("vorma", "[ \"$1\" != spi-revision ] || echo 1.8.0");
    return runProgram(host + " " + library + " " + scripts.path().string() + " " + std::to_string(lives));
}

/** The host that knows nothing but the SPI headers. */
Outcome livesInForeignHost(const std::string& library, int lives) {
    return livesIn(TUL_FOREIGN_HOST, library, lives);
}

/** The development node. */
Outcome livesInNode(const std::string& library, int lives) {
    return livesIn(TUL_NODE_LIVES, library, lives);
}

void expectInOrder(const Outcome& outcome) {
    EXPECT_EQ(0, outcome.code);
    EXPECT_THAT(outcome.output, HasSubstr(std::to_string(manyLives()) + " lives"));
    std::cout << outcome.output;
}

TEST(ForeignHost, FindsManyLivesOfTheComponentInOrder) {
    expectInOrder(livesInForeignHost(ComponentLibrary::path(), manyLives()));
}

TEST(DevelopmentNode, FindsManyLivesOfTheComponentInOrder) {
    if (isEmulated()) {
        GTEST_SKIP() << hangs;
    }
    expectInOrder(livesInNode(ComponentLibrary::path(), manyLives()));
}

// The real component with one thing spoiled each time

struct Spoiled {
    const char* name;
    const char* faultInForeignHost;
    const char* faultInNode;
    bool inTheHeap = false; /**< not seen where sanitizers do malloc's work */

    friend std::ostream& operator<<(std::ostream& stream, const Spoiled& row) { return stream << row.name; }
};

class SpoiledLives : public testing::TestWithParam<Spoiled> {
public:
    void SetUp() override {
        if (GetParam().inTheHeap && hasSanitizer) {
            GTEST_SKIP() << "the sanitizer's own heap is not seen by mallinfo2";
        }
    }

    static std::string library() { return std::string(TUL_ZOO_DIRECTORY "/") + GetParam().name + ".so"; }

    static void expectFault(const Outcome& outcome, const std::string& fault) {
        EXPECT_EQ(1, outcome.code);
        EXPECT_THAT(outcome.output, HasSubstr(fault));
    }
};

TEST_P(SpoiledLives, AreNamedByTheForeignHost) {
    expectFault(livesInForeignHost(library(), fewLives), GetParam().faultInForeignHost);
}

TEST_P(SpoiledLives, AreNamedByTheDevelopmentNode) {
    if (isEmulated()) {
        GTEST_SKIP() << hangs;
    }
    expectFault(livesInNode(library(), fewLives), GetParam().faultInNode);
}

const Spoiled spoiled[] = {
    {"pinned", "life 1: the library is still mapped",
     "component misbehaves: TulSshdManagementComponent is still mapped"},
    {"descriptor", "life 50: the number of descriptors has changed",
     "life 50: the number of descriptors has changed"},
    {"thread", "life 50: the number of threads has changed", "life 50: the number of threads has changed"},
    {"heap", "life 50: the heap has grown", "life 50: the heap has grown", true},
    {"log", "life 1: the log has \"spoil: something is odd; ", "log: warning spoil: something is odd"},
    {"consumer", "life 1: a consumer is still registered",
     "misbehaves: TulSshdManagementComponent leaves consumer 1 with 0 subscriptions registered"},
    {"subscription", "life 1: a subscription is left",
     "misbehaves: TulSshdManagementComponent leaves consumer 1 with 1 subscriptions registered"},
    {"container", "life 1: a value container was not given back", "does not give 1 value containers back"},
    {"transaction", "life 1: a transaction was left open", "log: info node: transaction 2 is left open"},
    {"record", "life 1: the component is still registered", "leaves its record registered"},
    {"runs", "life 1: adapter run 1 was \"vorma clissh unlock port 2023\" instead of",
     "run: vorma clissh unlock port 2023 -> ok"},
    {"statics", "life 2: adapter run 3 was \"vorma ssh --ipQos 46 --renegotiationTime 3600",
     "life 2: the node printed"},
};

INSTANTIATE_TEST_SUITE_P(Control, SpoiledLives, testing::ValuesIn(spoiled),
                         [](const auto& row) { return row.param.name; });

TEST(ForeignHost, FindsNoFaultInALibraryThatPassesEverythingOn) {
    EXPECT_EQ(0, livesInForeignHost(TUL_ZOO_DIRECTORY "/nothing.so", fewLives).code);
}

TEST(DevelopmentNode, FindsNoFaultInALibraryThatPassesEverythingOn) {
    if (isEmulated()) {
        GTEST_SKIP() << hangs;
    }
    EXPECT_EQ(0, livesInNode(TUL_ZOO_DIRECTORY "/nothing.so", fewLives).code);
}

}  // namespace
