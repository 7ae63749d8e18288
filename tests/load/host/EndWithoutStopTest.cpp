#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>

#include "ChildProgram.h"
#include "ComponentLibrary.h"
#include "Defaults.h"
#include "Gate.h"
#include "Node.h"
#include "TemporaryDirectory.h"

namespace {

using namespace TulTest;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

/** The node's program with the real component and a state that outlives it. */
/** Ends as well when the program did, which then did not get so far. */
const std::string untilReady = "until grep -q '^ready' out || ! kill -0 $node; do sleep 0.01; done; ";

class EndWithoutStop : public testing::Test {
public:
    EndWithoutStop() { directory.writeScript("vorma", "[ \"$1\" != spi-revision ] || echo 1.8.0"); }

    std::string program(const std::string& scripts) const {
        return TUL_NODE_PROGRAM " --component " + ComponentLibrary::path() + " --state " + state() +
               " --script-dir " + scripts;
    }

    std::string state() const { return (directory.path() / "state").string(); }

    /** Runs the program with commands, and behind the last of them lets the shell act on it as $node. */
    Outcome endedBy(const std::string& commands, const std::string& action) const {
        const std::string folder = directory.path();
        // The input stays open, so that the program does not end by itself; "echo ready" tells that it got so far.
        return runProgram("cd " + folder + "; mkfifo in; { " + program(folder) +
                          " <in >out 2>&1 & node=$!; exec 3>in; printf '" + commands + "wait\\necho ready\\n' >&3; " +
                          untilReady + action + "; wait $node; echo \"code $?\"; exec 3>&-; cat out; rm in; }");
    }

    /** The next start on the same state, and how it ended. */
    Outcome nextStart() const {
        std::ofstream(directory.path() / "none");
        return runProgram(program(directory.path()) + " <" + (directory.path() / "none").string());
    }

    /** The MOs are there, so none is created, and the state that was set is the state that is found. */
    void expectAdopted(const Outcome& next) {
        EXPECT_EQ(0, next.code) << next.output;
        EXPECT_THAT(next.output, Not(HasSubstr("Could not find first instance")));
        EXPECT_THAT(next.output, ContainsRegex("run: vorma clissh lock -> ok .*\n"
                                               "run: vorma netconfssh unlock port 2830 -> ok .*\n"
                                               "run: vorma spi-revision -> ok .*\n"
                                               "run: vorma ssh --removeIpQoS --renegotiationTime 3600 -> ok .*\n"
                                               "component: started\n"));
    }

    TemporaryDirectory directory;
};

struct Ending {
    const char* name;
    const char* action;
    const char* code; /**< as the shell says it */
    bool stops;

    friend std::ostream& operator<<(std::ostream& stream, const Ending& row) { return stream << row.name; }
};

class EndsOfTheProgram : public EndWithoutStop, public testing::WithParamInterface<Ending> {};

TEST_P(EndsOfTheProgram, AreNoCrashAndTheNextStartAdoptsWhatIsThere) {
    const Outcome ended = endedBy("lock CliSsh\\n", GetParam().action);
    EXPECT_THAT(ended.output, HasSubstr(std::string("code ") + GetParam().code + "\n"));
    EXPECT_THAT(ended.output, HasSubstr("run: vorma clissh lock -> ok"));
    EXPECT_EQ(GetParam().stops, ended.output.find("component: unloaded") != std::string::npos) << ended.output;
    expectAdopted(nextStart());
}

INSTANTIATE_TEST_SUITE_P(By, EndsOfTheProgram,
                         testing::Values(Ending{"Quit", "echo quit >&3", "0", true},
                                         Ending{"SIGTERM", "kill -TERM $node", "0", true},
                                         Ending{"SIGKILL", "kill -KILL $node", "137", false}),
                         [](const auto& row) { return row.param.name; });

TEST_F(EndWithoutStop, ASecondSignalEndsTheProgramWhileStopWaitsForTheAdapter) {
    const Gate gate("'netconfssh lock'");
    const std::string folder = directory.path();
    const Outcome ended =
        runProgram("cd " + folder + "; mkfifo in; { " + program(gate.folder()) +
                   " <in >out 2>&1 & node=$!; exec 3>in; printf 'lock CliSsh\\nwait\\necho ready\\n' >&3; " +
                   untilReady + "kill -TERM $node; read -r line <" + gate.folder() +
                   "/arrived; kill -TERM $node; wait $node; echo \"code $?\"; exec 3>&-; echo >" + gate.folder() +
                   "/mayGo; cat out; }");
    EXPECT_THAT(ended.output, HasSubstr("code 1\n"));
    EXPECT_THAT(ended.output, Not(HasSubstr("component: unloaded")));
    expectAdopted(nextStart());
}

TEST_F(EndWithoutStop, ASignalDuringStartIsHeardWhenStartHasReturned) {
    const Gate gate("'clissh unlock port 2022'");
    const std::string folder = directory.path();
    const Outcome ended = runProgram("cd " + folder + "; { " + program(gate.folder()) +
                                     " </dev/null >out 2>&1 & node=$!; read -r line <" + gate.folder() +
                                     "/arrived; kill -TERM $node; echo >" + gate.folder() +
                                     "/mayGo; wait $node; echo \"code $?\"; cat out; }");
    EXPECT_THAT(ended.output, HasSubstr("code 0\n"));
    EXPECT_THAT(ended.output, ContainsRegex("component: started\n(.*\n)*component: stopped\ncomponent: unloaded\n"));
}

/** In a process that leaves through exit(), the statics of the loaded library are destroyed while it runs. */
TEST_F(EndWithoutStop, ExitWhileTheComponentRunsIsNoCrashInDestructors) {
    const auto exitWhileItRuns = [this] {
        TulNode::Node* const node = new TulNode::Node({state(), ComponentLibrary::path(), directory.path()});
        node->applyInitialModel(TulNode::defaultModel, "default");
        node->load();
        node->loader.start(BRY_REASON_NORMAL);
        const auto handle = node->services.transactions.open(TUL_LOCK_POLICY_SHARED, 60, "test");
        node->services.transactions.set(handle, "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1",
                                        {{"administrativeState", {TUL_MO_TYPE_ENUMERATION_3, {std::int64_t{0}}}}});
        node->services.transactions.commit(handle);
        node->services.router.waitUntilIdle(std::chrono::seconds(20));
        std::exit(7);
    };
    EXPECT_EXIT(exitWhileItRuns(), testing::ExitedWithCode(7), "^$");
    expectAdopted(nextStart());
}

}  // namespace
