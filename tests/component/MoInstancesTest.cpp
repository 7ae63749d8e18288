#include <regex>
#include <stdexcept>

#include "ComponentTest.h"
#include "TulException.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using MoInstances = ComponentTest;

std::string notFound(const std::string& classPath) {
    return "4 getDnValue: Could not find first instance of classpath : " + classPath;
}

const std::string cliSshPath = "ManagedElement,SystemFunctions,SysM,CliSsh";
const std::string netconfSshPath = "ManagedElement,SystemFunctions,SysM,NetconfSsh";
const std::string sysMPath = "ManagedElement,SystemFunctions,SysM";

TEST_F(MoInstances, CreationWithoutSysMReturnsMinusTwoAndOpensNoTransaction) {
    framework.model.clear();
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_EQ(-2, library.start());
    EXPECT_THAT(framework.callsOf("newTransaction"), IsEmpty());
    EXPECT_THAT(framework.callsOf("createMo"), IsEmpty());
    expectLogs({notFound(cliSshPath), notFound(sysMPath), "4 createMo: SysM Instance could not be found."});
    expectSilence();
}

struct FailedCreation {
    const char* name;
    const char* operation;
    bool netconf; /**< CliSsh exists, so that NetconfSsh is created */
    const char* log;
    Lines transaction; /**< the beginnings of the calls that are made */

    friend std::ostream& operator<<(std::ostream& stream, const FailedCreation& row) { return stream << row.name; }
};

class MoInstancesFailedCreation : public ComponentTest, public testing::WithParamInterface<FailedCreation> {
public:
    /** The first words of the calls that belong to a transaction. */
    Lines transactionCalls() const {
        Lines operations;
        for (const std::string& step : steps()) {
            const std::string operation = step.substr(0, step.find(' '));
            if (operation == "newTransaction" || operation == "createMo" || operation == "deleteMo" ||
                operation == "commit" || operation == "abort") {
                operations.push_back(operation);
            }
        }
        return operations;
    }
};

TEST_P(MoInstancesFailedCreation, ReturnsTheCodeOfTheOperationAndLeavesTheTransactionAlone) {
    if (GetParam().netconf) {
        framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
    }
    framework.results[GetParam().operation] = -77;
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_EQ(-77, library.start());
    EXPECT_EQ(GetParam().transaction, transactionCalls());
    expectLogs({notFound(GetParam().netconf ? netconfSshPath : cliSshPath), GetParam().log});
    expectRuns(GetParam().netconf ? Lines{"clissh lock"} : Lines{});
    expectSilence();
}

const char* const noTransaction = "3 createMo: New Transaction could not be created.";
const char* const noCommit = "3 createMo: Transaction commit failed!!.";

INSTANTIATE_TEST_SUITE_P(
    MoInstances, MoInstancesFailedCreation,
    testing::Values(
        FailedCreation{"CliSshTransaction", "newTransaction", false, noTransaction, {"newTransaction"}},
        FailedCreation{"CliSshCreation",
                       "createMo",
                       false,
                       "3 createMo: CliSsh Mo Creation Failed!!.",
                       {"newTransaction", "createMo"}},
        FailedCreation{"CliSshCommit", "commit", false, noCommit, {"newTransaction", "createMo", "commit"}},
        FailedCreation{"NetconfSshTransaction", "newTransaction", true, noTransaction, {"newTransaction"}},
        FailedCreation{"NetconfSshCreation",
                       "createMo",
                       true,
                       "3 createMo: NetconfSsh Mo Creation Failed!!.",
                       {"newTransaction", "createMo"}},
        FailedCreation{"NetconfSshCommit", "commit", true, noCommit, {"newTransaction", "createMo", "commit"}}),
    nameOf<FailedCreation>);

TEST_F(MoInstances, EachCreationIsATransactionOfItsOwn) {
    givenStarted();
    ASSERT_EQ(BRY_OK, library.stop());
    forget();
    ASSERT_EQ(BRY_OK, library.start());

    Lines handles;
    for (const std::string& call : framework.calls) {
        std::smatch found;
        if (std::regex_search(call, found, std::regex("^(createMo|commit) ([0-9]+)"))) {
            handles.push_back(found[2]);
        }
    }
    ASSERT_THAT(handles, SizeIs(4));
    EXPECT_EQ(handles[0], handles[1]);
    EXPECT_EQ(handles[2], handles[3]);
    EXPECT_NE(handles[0], handles[2]);
}

TEST_F(MoInstances, AnMoIsCreatedWithTheKey1AndJustTheUnlockedState) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, library.start());
    const std::regex creation(
        "createMo [0-9]+ ManagedElement=1,SystemFunctions=1,SysM=1 "
        "(CliSsh cliSshId|NetconfSsh netconfSshId) 1 administrativeState:12=1;");
    const Lines creations = framework.callsOf("createMo");
    ASSERT_THAT(creations, SizeIs(2));
    EXPECT_TRUE(std::regex_match(creations[0], creation)) << creations[0];
    EXPECT_TRUE(std::regex_match(creations[1], creation)) << creations[1];
}

struct FailedDeletion {
    const char* name;
    const char* operation;
    LineMatchers logs;
    Lines transaction;
    Lines traces;

    friend std::ostream& operator<<(std::ostream& stream, const FailedDeletion& row) { return stream << row.name; }
};

class MoInstancesDeletion : public ComponentTest, public testing::WithParamInterface<FailedDeletion> {};

TEST_P(MoInstancesDeletion, ReportsAFailureAndGoesNoFurther) {
    framework.givenMo(cliSshDn);
    ASSERT_EQ(BRY_OK, library.init(configuration(false)));
    forget();
    framework.results[GetParam().operation] = -77;
    framework.logLevel = 8;
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_EQ(GetParam().traces, framework.traces("deleteMoInstance"));
    Lines calls = steps();
    calls.erase(calls.begin());  // the look for CliSsh
    calls.resize(GetParam().transaction.size() + 1);
    Lines expected = GetParam().transaction;
    expected.push_back("findInstances " + netconfSshPath);
    EXPECT_EQ(expected, calls);
    EXPECT_THAT(framework.logs(3), testing::ElementsAreArray(GetParam().logs));
}

INSTANTIATE_TEST_SUITE_P(
    MoInstances, MoInstancesDeletion,
    testing::Values(FailedDeletion{"Transaction",
                                   "newTransaction",
                                   {"3 deleteMoInstance: New Transaction could not be created."},
                                   {"newTransaction 2 3600"},
                                   {" << "}},
                    FailedDeletion{"Deletion",
                                   "deleteMo",
                                   {},
                                   {"newTransaction 2 3600", std::string("deleteMo ") + cliSshDn},
                                   {std::string(" << ") + cliSshDn + " instance is not deleted"}},
                    FailedDeletion{"Commit",
                                   "commit",
                                   {"3 deleteMoInstance: Transaction commit failed!!."},
                                   {"newTransaction 2 3600", std::string("deleteMo ") + cliSshDn, "commit"},
                                   {std::string(" << ") + cliSshDn + " instance is deleted", " << "}},
                    FailedDeletion{"Nothing",
                                   "abort",
                                   {},
                                   {"newTransaction 2 3600", std::string("deleteMo ") + cliSshDn, "commit"},
                                   {std::string(" << ") + cliSshDn + " instance is deleted"}}),
    nameOf<FailedDeletion>);

TEST_F(MoInstances, ADeletionIsTracedBeforeItIsCommitted) {
    framework.givenMo(cliSshDn);
    ASSERT_EQ(BRY_OK, library.init(configuration(false)));
    framework.logLevel = 8;
    Lines tracesAtCommit;
    framework.during["commit"] = [&] { tracesAtCommit = framework.traces("deleteMoInstance"); };
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(tracesAtCommit, ElementsAre(std::string(" << ") + cliSshDn + " instance is deleted"));
}

struct FailedSearch {
    const char* name;
    std::function<void()> failure; /**< of every search for instances */
    BryReturnT result;

    friend std::ostream& operator<<(std::ostream& stream, const FailedSearch& row) { return stream << row.name; }
};

class MoInstancesFailedSearch : public ComponentTest, public testing::WithParamInterface<FailedSearch> {};

TEST_P(MoInstancesFailedSearch, CountsAsNoInstanceWithOneWarningThatNamesTheClassPath) {
    framework.givenMo(cliSshDn);
    framework.during["findInstances"] = GetParam().failure;
    framework.results["findInstances"] = GetParam().result;
    ASSERT_EQ(BRY_OK, library.init(configuration(false)));
    EXPECT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.callsOf("deleteMo"), IsEmpty());
    expectLogs({notFound(cliSshPath), notFound(netconfSshPath)});
    expectRuns({"clissh lock", "netconfssh lock"});
    expectSilence();
}

INSTANTIATE_TEST_SUITE_P(MoInstances, MoInstancesFailedSearch,
                         testing::Values(FailedSearch{"Code", nullptr, -10},
                                         FailedSearch{"TulException", [] { throw Tul::TulException("no"); }, 0},
                                         FailedSearch{"StandardException", [] { throw std::runtime_error("no"); }, 0},
                                         FailedSearch{"Integer", [] { throw 7; }, 0}),
                         nameOf<FailedSearch>);

TEST_F(MoInstances, TheSearchSucceedsNowhereWithoutTheInterface) {
    framework.givenMo(cliSshDn);
    ASSERT_EQ(BRY_OK, library.init(configuration(false)));
    // From the second look-up on, that is, once start has what it needs itself.
    framework.during["getInterface"] = [this] {
        if (framework.calls.back().find("TulOamSpiTransactionMaster") != std::string::npos) {
            framework.results["getInterface TulOamSpiManagedObject"] = -4;
        }
    };
    EXPECT_EQ(BRY_OK, library.start());
    expectLogs({notFound(cliSshPath), notFound(netconfSshPath)});
}

TEST_F(MoInstances, TheFirstOfSeveralInstancesIsAdopted) {
    framework.givenMo(std::string(sysMDn) + ",CliSsh=2", {{"administrativeState", enumeration(1)}});
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(0)}});
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, library.start());
    EXPECT_THAT(framework.takeRuns(), testing::Contains("clissh lock"));
    EXPECT_THAT(framework.callsOf("createMo"), ElementsAre(HasSubstr("NetconfSsh")));
}

}  // namespace
