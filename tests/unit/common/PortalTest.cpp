#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExpectedRecords.h"
#include "Portal.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const RecordSource portalSource{"Common", "src/common/inc/Portal"};
const char* const lookUp = "getInterface TulOamSpiEventService TulOamSpiEventRouter 1";

class PortalEventRouter : public testing::Test {
protected:
    void givenNoRouter() { framework.results["getInterface TulOamSpiEventRouter"] = BRY_NOT_FOUND; }
    std::vector<std::string> lookUps() const { return framework.callsOf(lookUp); }

    RecordingFramework framework;
    Tul::Portal& portal = Tul::Portal::instance();
};

TEST_F(PortalEventRouter, IsLookedUpByComponentNameAndVersion) {
    TulOamSpiEventRouter_1* const router = portal.getEventRouter();
    ASSERT_NE(nullptr, router);
    EXPECT_STREQ("TulOamSpiEventRouter", router->header.interfaceName);
    EXPECT_THAT(framework.callsOf("getInterface TulOam"), ElementsAre(lookUp));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(PortalEventRouter, IsLookedUpOnceWhileItMayBeReused) {
    EXPECT_EQ(portal.getEventRouter(), portal.getEventRouter());
    EXPECT_THAT(lookUps(), SizeIs(1));
}

TEST_F(PortalEventRouter, IsLookedUpEachTimeWhenItMayNotBeReused) {
    portal.reset(false);
    EXPECT_EQ(portal.getEventRouter(), portal.getEventRouter());
    EXPECT_THAT(lookUps(), SizeIs(2));
}

TEST_F(PortalEventRouter, IsNullWithAWarningWhenTheFrameworkHasNone) {
    givenNoRouter();
    EXPECT_EQ(nullptr, portal.getEventRouter());
    EXPECT_EQ(framework.records, portalSource.warning("getInterface", "Interface %s not found",
                                                      "Interface TulOamSpiEventRouter not found"));
}

TEST_F(PortalEventRouter, IsNullWithoutAWarningBelowItsLevel) {
    framework.logLevel = 3;
    givenNoRouter();
    EXPECT_EQ(nullptr, portal.getEventRouter());
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(PortalEventRouter, IsNullWhenItWasFoundBeforeMayNotBeReusedAndIsGone) {
    portal.reset(false);
    ASSERT_NE(nullptr, portal.getEventRouter());
    givenNoRouter();
    EXPECT_EQ(nullptr, portal.getEventRouter());
}

TEST_F(PortalEventRouter, IsFoundLaterAfterAFailedLookUp) {
    givenNoRouter();
    EXPECT_EQ(nullptr, portal.getEventRouter());
    framework.results.clear();
    EXPECT_NE(nullptr, portal.getEventRouter());
}

TEST_F(PortalEventRouter, IsNullWithoutAWarningWhenTheFrameworkOffersNull) {
    framework.nullInterfaces.insert("TulOamSpiEventRouter");
    EXPECT_EQ(nullptr, portal.getEventRouter());
    EXPECT_THAT(framework.records, IsEmpty());
}

}  // namespace
