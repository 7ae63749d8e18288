#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <stdexcept>

#include "RecordingFramework.h"
#include "SshComponent.h"
#include "TulException.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TulSshdManagement::BasicAdmState;
using TulSshdManagement::SshdVormaWrapper;
using TulSshdManagement::TulSshdManagementComponent;

using Lines = std::vector<std::string>;

/** The component as an object of its own: at most one may live at a time. */
class Component : public TulSshdManagementComponent {
public:
    std::size_t sizeOfArrays() const {
        return _interfaceArray.size() + _dependencyArray.size() + _extraInterfaceArray.size();
    }
};

class ComponentObject : public testing::Test {
public:
    ComponentObject() { framework.givenEmptyNode(); }

    void givenInitialized(bool managed = true) {
        ASSERT_EQ(BRY_OK, component.lcmInit(framework.accessor(), configuration(managed).c_str()));
        framework.records.clear();
    }

    RecordingFramework framework;
    Component component;
};

TEST_F(ComponentObject, InitTwiceLeavesExactlyOneNullInEachArray) {
    givenInitialized();
    const std::size_t oneNullEachAndSixDependencies = 3 + 6;
    EXPECT_EQ(oneNullEachAndSixDependencies, component.sizeOfArrays());
    EXPECT_EQ(-1, component.lcmInit(framework.accessor(), configuration(true).c_str()));
    EXPECT_EQ(oneNullEachAndSixDependencies, component.sizeOfArrays());
}

TEST_F(ComponentObject, IsStartedFromStartToStop) {
    givenInitialized();
    EXPECT_FALSE(component.isStarted());
    ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
    EXPECT_TRUE(component.isStarted());
    component.terminate();
    EXPECT_TRUE(component.isStarted());
    ASSERT_EQ(BRY_OK, component.stop(BRY_REASON_NORMAL));
    EXPECT_FALSE(component.isStarted());
}

TEST_F(ComponentObject, IsNeverStartedWithManagementOff) {
    givenInitialized(false);
    ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
    EXPECT_FALSE(component.isStarted());
}

TEST_F(ComponentObject, IsNotStartedAfterAStartThatFailed) {
    givenInitialized();
    framework.results["createMo"] = -77;
    ASSERT_EQ(-77, component.start(BRY_REASON_NORMAL));
    EXPECT_FALSE(component.isStarted());
}

// Another adapter

/** Takes the calls that can be taken, and hands them on. */
class OtherAdapter : public SshdVormaWrapper {
public:
    bool setDscp(const std::string& dscp) override {
        calls.push_back("setDscp " + dscp);
        return SshdVormaWrapper::setDscp(dscp);
    }
    void setCiphers(const std::map<std::string, std::string>& selected) override {
        calls.push_back("setCiphers");
        SshdVormaWrapper::setCiphers(selected);
    }

    Lines calls;
};

TEST_F(ComponentObject, SendsStartAndHandlersThroughTheAdapterThatWasSet) {
    framework.givenMo(sshDn, {{"selectedMacs", strings({"m"})}});
    OtherAdapter other;
    component.setVorma(&other);
    givenInitialized();
    ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
    EXPECT_THAT(other.calls, ElementsAre("setDscp ", "setCiphers"));
    // What the other adapter has queued can only be sent by itself.
    EXPECT_EQ("ssh --removeIpQoS --renegotiationTime 3600 --macs m", framework.takeRuns().back());

    other.calls.clear();
    framework.notify(serviceCategoryPattern, CmNotification().deleted(oamCmDn));
    framework.notify(sshPattern, CmNotification().changed(sshDn));
    EXPECT_THAT(other.calls, ElementsAre("setDscp ", "setCiphers"));
    EXPECT_THAT(framework.takeRuns(), ElementsAre("ssh --removeIpQoS", "ssh --macs m"));
    component.stop(BRY_REASON_NORMAL);
}

TEST_F(ComponentObject, KeepsTheRevisionThatEachAdapterAnsweredApart) {
    OtherAdapter other;
    framework.givenAdapterRevision("1.6.9");
    ASSERT_FALSE(other.setDscp("46"));
    framework.givenAdapterRevision("1.8.0");
    component.setVorma(&other);
    givenInitialized();
    framework.takeRuns();
    ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
    EXPECT_THAT(framework.takeRuns(), ElementsAre("clissh unlock port 2022", "netconfssh unlock port 2830"));
    component.stop(BRY_REASON_NORMAL);
}

// The readers

struct StateRow {
    const char* name;
    std::map<std::string, AttributeValues> attributes;
    int result;
    BasicAdmState state; /**< the caller's is UNLOCKED before */

    friend std::ostream& operator<<(std::ostream& stream, const StateRow& row) { return stream << row.name; }
};

class ComponentObjectState : public ComponentObject, public testing::WithParamInterface<StateRow> {};

TEST_P(ComponentObjectState, IsReadOrLeftAsItWas) {
    framework.givenMo(cliSshDn, GetParam().attributes);
    std::string dn = cliSshDn;
    BasicAdmState state = BasicAdmState::UNLOCKED;
    EXPECT_EQ(GetParam().result, component.getAdministrativeState(dn, state));
    EXPECT_EQ(GetParam().state, state);
}

INSTANTIATE_TEST_SUITE_P(
    ComponentObject, ComponentObjectState,
    testing::Values(StateRow{"One", {{"administrativeState", enumeration(1)}}, 0, BasicAdmState::UNLOCKED},
                    StateRow{"Zero", {{"administrativeState", enumeration(0)}}, 0, BasicAdmState::LOCKED},
                    StateRow{"Two", {{"administrativeState", enumeration(2)}}, 0, BasicAdmState::LOCKED},
                    StateRow{"NoAttribute", {}, -1, BasicAdmState::UNLOCKED}),
    [](const auto& row) { return row.param.name; });

TEST_F(ComponentObject, FindsTheFirstInstanceOrAnEmptyDnWithOneWarning) {
    framework.givenMo(cliSshDn);
    EXPECT_EQ(cliSshDn, component.getDnValue("ManagedElement,SystemFunctions,SysM,CliSsh"));
    EXPECT_THAT(framework.logs(), IsEmpty());
    EXPECT_EQ("", component.getDnValue("ManagedElement,Nothing"));
    EXPECT_THAT(framework.logs(),
                ElementsAre("4 getDnValue: Could not find first instance of classpath : ManagedElement,Nothing"));
}

TEST_F(ComponentObject, CreatesNothingAndTouchesNoInterfaceWithoutSysM) {
    framework.model.clear();
    EXPECT_EQ(-2, component.createMo("CliSsh", "cliSshId"));  // start has not fetched any interface yet
    EXPECT_THAT(framework.callsOf("newTransaction"), IsEmpty());
}

TEST_F(ComponentObject, MapsAttributeNamesToJoinedLists) {
    framework.givenMo(sshDn, {{"selectedCiphers", strings({"a", "b", "c"})}, {"selectedMacs", strings({"m"})}});
    EXPECT_THAT(component.fetchCipherConfiguration(sshDn),
                ElementsAre(Pair("selectedCiphers", "a,b,c"), Pair("selectedMacs", "m")));
    EXPECT_THAT(component.fetchCipherConfiguration("ManagedElement=1"), IsEmpty());
    EXPECT_THAT(framework.logs(), IsEmpty());
}

TEST_F(ComponentObject, LetsAMissingInterfacePassOutOfTheCiphersAndNotOutOfTheDscp) {
    framework.results["getInterface TulOamSpiManagedObject"] = -4;
    EXPECT_THROW(component.fetchCipherConfiguration(sshDn), Tul::TulException);
    EXPECT_EQ("", component.getDscp());
    EXPECT_THAT(framework.logs(), IsEmpty());
}

TEST_F(ComponentObject, LetsOnlyUnexpectedFailuresPassOutOfTheDscp) {
    framework.during["findInstances"] = [] { throw Tul::TulException("no"); };
    EXPECT_EQ("", component.getDscp());
    framework.during["findInstances"] = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(component.getDscp(), std::runtime_error);
    framework.during["findInstances"] = [] { throw 7; };
    EXPECT_THROW(component.getDscp(), int);
    EXPECT_THAT(framework.logs(), IsEmpty());
}

using ComponentObjectDeathTest = ComponentObject;

TEST_F(ComponentObjectDeathTest, ASecondComponentEndsTheProcess) {
    EXPECT_EXIT({ const Component second; }, testing::KilledBySignal(SIGABRT), "_instance == NULL");
}

TEST(ComponentObjects, MayFollowOneAnother) {
    RecordingFramework framework;
    { const Component first; }
    const Component second;
    EXPECT_FALSE(second.isStarted());
}

}  // namespace
