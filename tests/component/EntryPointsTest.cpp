#include "ComponentTest.h"
#include "Portal.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using EntryPoints = ComponentTest;

std::vector<BryMgmtSpiInterface_1*> entriesOf(BryMgmtSpiInterface_1** array) {
    std::vector<BryMgmtSpiInterface_1*> entries;
    for (; *array != nullptr; ++array) {
        entries.push_back(*array);
    }
    return entries;
}

std::string textOf(const char* text) {
    return text == nullptr ? "(null)" : text;
}

Lines identitiesIn(BryMgmtSpiInterface_1** array) {
    Lines lines;
    for (const BryMgmtSpiInterface_1* entry : entriesOf(array)) {
        lines.push_back(textOf(entry->componentName) + " " + textOf(entry->interfaceName) + " " +
                        textOf(entry->interfaceVersion));
    }
    return lines;
}

const Lines ownDependencies{"(null) TulMwSpiLog 1", "(null) BryMwSpiTrace (null)",
                            "TulOamSpiEventService TulOamSpiEventRouter 1",
                            "TulOamSpiExtCmRouterService TulOamSpiManagedObject 3",
                            "TulOamSpiTransactionService TulOamSpiTransactionMaster 1"};

/** Gives the platform's portal another component name for as long as it lives. */
class RenamedPortal {
public:
    explicit RenamedPortal(const char* name) { Tul::Portal::COMP_ID.componentName = name; }
    ~RenamedPortal() { Tul::Portal::COMP_ID.componentName = _before; }
    RenamedPortal(const RenamedPortal&) = delete;
    RenamedPortal& operator=(const RenamedPortal&) = delete;

private:
    const char* const _before = Tul::Portal::COMP_ID.componentName;
};

TEST_F(EntryPoints, InitRegistersARecordWithTheComponentsIdentity) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));

    const BryMgmtSpiComponent_2& record = *framework.component;
    EXPECT_STREQ("TulSshdManagementComponent", record.componentName);
    EXPECT_STREQ("BryMgmtSpiComponent", record.interfaceName);
    EXPECT_STREQ("2", record.interfaceVersion);
    EXPECT_NE(nullptr, record.start);
    EXPECT_NE(nullptr, record.stop);
    EXPECT_FALSE(record.flag);
    EXPECT_THAT(framework.callsOf("registerComponent"), SizeIs(1));
    expectSilence();
}

TEST_F(EntryPoints, InitFetchesThePortalOfVersion3AndThenThatOfVersion1) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_THAT(framework.callsOf("getPortal"), ElementsAre("getPortal 3", "getPortal 1"));
}

TEST_F(EntryPoints, TheInterfaceArrayAndTheExtraArrayAreASingleNull) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_THAT(entriesOf(framework.component->interfaceArray), IsEmpty());
    EXPECT_THAT(entriesOf(framework.component->extraInterfaceArray), IsEmpty());
}

TEST_F(EntryPoints, TheComponentDependsOnThePortalAndFiveInterfacesWhenItsNameDiffersFromThePortals) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));

    const auto entries = entriesOf(framework.component->dependencyArray);
    ASSERT_THAT(entries, SizeIs(6));
    EXPECT_EQ(&Tul::Portal::COMP_ID, entries.front());
    const Lines identities = identitiesIn(framework.component->dependencyArray);
    EXPECT_EQ(ownDependencies, Lines(identities.begin() + 1, identities.end()));
}

TEST_F(EntryPoints, TheComponentDependsOnFiveInterfacesWhenThePortalHasItsName) {
    const RenamedPortal portal("TulSshdManagementComponent");
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_EQ(ownDependencies, identitiesIn(framework.component->dependencyArray));
}

TEST_F(EntryPoints, ThePortalsNameIsComparedByteByByte) {
    const RenamedPortal portal("tulSshdManagementComponent");
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_THAT(entriesOf(framework.component->dependencyArray), SizeIs(6));
}

TEST_F(EntryPoints, InitWithoutThePortalOfVersion3ReturnsMinusOneAndNeverInitializes) {
    framework.hasPortal3 = false;
    EXPECT_EQ(-1, library.init(configuration(true)));
    EXPECT_THAT(framework.callsOf("registerComponent"), IsEmpty());

    framework.hasPortal3 = true;
    EXPECT_EQ(BRY_OK, library.init(configuration(true)));  // it would be -1 had the first one initialised
    expectSilence();
}

TEST_F(EntryPoints, InitWithoutThePortalOfVersion1RegistersAndInitializes) {
    framework.hasPortal1 = false;
    EXPECT_EQ(BRY_OK, library.init(configuration(true)));
    EXPECT_NE(nullptr, framework.component);
    EXPECT_EQ(-1, library.init(configuration(true)));
    expectLogs({"3 initialize: Component already initialized!"});
}

TEST_F(EntryPoints, ASecondInitRegistersTheSameRecordWithTheSameArrays) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    const BryMgmtSpiComponent_2* const first = framework.component;
    ASSERT_EQ(-1, library.init(configuration(true)));

    EXPECT_EQ(first, framework.component);
    EXPECT_THAT(entriesOf(framework.component->interfaceArray), IsEmpty());
    EXPECT_THAT(entriesOf(framework.component->dependencyArray), SizeIs(6));
    EXPECT_THAT(entriesOf(framework.component->extraInterfaceArray), IsEmpty());
}

TEST_F(EntryPoints, ARefusedRegistrationIsReturnedAndNothingIsInitialized) {
    framework.results["registerComponent"] = -77;
    EXPECT_EQ(-77, library.init(configuration(true)));
    EXPECT_EQ(nullptr, framework.component);

    framework.results.clear();
    EXPECT_EQ(BRY_OK, library.init(configuration(true)));
    expectSilence();
}

TEST_F(EntryPoints, AFailedInitializationLeavesTheComponentRegistered) {
    EXPECT_EQ(-8, library.init(nullptr));
    EXPECT_NE(nullptr, framework.component);
    EXPECT_EQ(-1, library.init("not XML"));
    EXPECT_NE(nullptr, framework.component);
    EXPECT_THAT(framework.callsOf("unregisterComponent"), IsEmpty());
}

TEST_F(EntryPoints, TerminateUnregistersTheRecordOnce) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    library.terminate();
    EXPECT_EQ(nullptr, framework.component);
    library.terminate();
    EXPECT_THAT(framework.callsOf("unregisterComponent"), SizeIs(1));
    expectSilence();
}

TEST_F(EntryPoints, TerminateAfterAFailedInitOnlyTerminates) {
    framework.hasPortal3 = false;
    ASSERT_EQ(-1, library.init(configuration(true)));
    framework.logLevel = 8;
    library.terminate();
    EXPECT_THAT(framework.traces("terminate"), ElementsAre(" >> ", " << "));
    EXPECT_THAT(framework.callsOf("unregisterComponent"), IsEmpty());
}

TEST_F(EntryPoints, NeitherEntryPointStartsOrStopsTheComponent) {
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    library.terminate();
    EXPECT_EQ(
        Lines({"registerComponent TulSshdManagementComponent", "unregisterComponent TulSshdManagementComponent"}),
        steps());
    expectSilence();
}

TEST_F(EntryPoints, UnloadingUnregistersAndStopsNothing) {
    givenStarted();
    library.unload();
    EXPECT_THAT(framework.consumers, SizeIs(4));
    EXPECT_EQ(Lines(), steps());
    expectSilence();
}

}  // namespace
