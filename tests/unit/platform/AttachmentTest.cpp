#include <gtest/gtest.h>

#include "FakeFramework.h"
#include "Portal.h"
#include "ScriptWrapper.h"
#include "TemporaryDirectory.h"
#include "TulException.h"

namespace TulTest {
namespace {

constexpr BryMgmtSpiInterface_1 someId = {"SomeService", "SomeInterface", "7"};

struct SomeInterface {
    BryMgmtSpiInterface_1 header;
};

TEST(Attachment, RefusesSettingsWithoutAFramework) {
    EXPECT_EQ(BRY_INVALID_ARGUMENT, tulCommonAttach(nullptr));
    const TulCommonSettings_1 nobody{nullptr, "/tmp", nullptr};
    EXPECT_EQ(BRY_INVALID_ARGUMENT, tulCommonAttach(&nobody));
}

TEST(Attachment, RefusesASecondFramework) {
    FakeFramework framework;
    framework.attach();
    const TulCommonSettings_1 settings{FakeFramework::accessor(), nullptr, nullptr};
    EXPECT_EQ(BRY_ALREADY_EXISTS, tulCommonAttach(&settings));
}

TEST(Attachment, CanBeMadeAgainAfterItWasEnded) {
    FakeFramework framework;
    framework.attach();
    tulCommonDetach();
    tulCommonDetach();
    framework.attach();
}

TEST(Attachment, CopiesTheScriptFolder) {
    const TemporaryDirectory directory;
    directory.writeScript("script", "echo found");
    FakeFramework framework;
    std::string folder = directory.path();
    framework.attach(folder.c_str());
    folder.assign(folder.size(), 'x');
    EXPECT_EQ("found\n", Tul::ScriptWrapper("script").invoke({}, 60000));
}

TEST(Attachment, HasADefaultScriptFolder) {
    try {
        Tul::ScriptWrapper("no-such-script").invoke({}, 60000);
        FAIL() << "ran";
    } catch (const Tul::TulException& failure) {
        EXPECT_EQ(0U, std::string(failure.what()).find("Script /"));
    }
}

TEST(Portal, NamesThePlatformsPortalComponent) {
    EXPECT_STREQ("TulPortalComponent", Tul::Portal::COMP_ID.componentName);
    EXPECT_STREQ("BryMgmtSpiPortal", Tul::Portal::COMP_ID.interfaceName);
    EXPECT_STREQ("3", Tul::Portal::COMP_ID.interfaceVersion);
}

TEST(Portal, FindsNothingWithoutAFramework) {
    void* found = nullptr;
    EXPECT_EQ(BRY_NOT_FOUND, Tul::Portal::instance().getInterface(someId, &found));
}

TEST(Portal, AsksTheFrameworkAndPassesOnItsCode) {
    FakeFramework framework;
    framework.attach();
    void* found = nullptr;
    EXPECT_EQ(BRY_NOT_FOUND, Tul::Portal::instance().getInterface(someId, &found));
    SomeInterface offered{{"SomeService", "SomeInterface", "7"}};
    framework.offer(offered);
    EXPECT_EQ(BRY_OK, Tul::Portal::instance().getInterface(someId, &found));
    EXPECT_EQ(&offered, found);
    EXPECT_EQ("SomeService SomeInterface 7", framework.lastLookUp());
}

TEST(Portal, KeepsTheEventRouterWhileAttachedAndForgetsItThen) {
    TulOamSpiEventRouter_1 router{};
    router.header = Tul::eventRouterInterfaceId;
    {
        FakeFramework framework;
        framework.offer(router);
        framework.attach();
        EXPECT_EQ(&router, Tul::Portal::instance().getEventRouter());
        EXPECT_EQ(&router, Tul::Portal::instance().getEventRouter());
        EXPECT_EQ(1, framework.lookUps(TUL_OAM_SPI_EVENT_ROUTER_NAME));
    }
    FakeFramework another;
    another.attach();
    EXPECT_EQ(nullptr, Tul::Portal::instance().getEventRouter());
    EXPECT_EQ(1, another.lookUps(TUL_OAM_SPI_EVENT_ROUTER_NAME));
}

}  // namespace
}  // namespace TulTest
