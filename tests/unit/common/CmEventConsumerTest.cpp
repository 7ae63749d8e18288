#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "CmEventConsumer.h"
#include "ExpectedRecords.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const RecordSource source{"Common", "src/common/inc/CmEventConsumer"};
const RecordSource baseSource{"Common", "src/common/inc/EventConsumer"};

struct Listener {
    using Notification = BryOamSpiCmEvent_Notification_1T;

    void hear(const Notification& notification) { heard.push_back(&notification); }
    void hearOtherwise(const Notification& notification) { heardOtherwise.push_back(&notification); }
    void fail(const Notification& /*notification*/) { throw std::runtime_error("deaf"); }

    std::vector<const Notification*> heard;
    std::vector<const Notification*> heardOtherwise;
};

class CmEventConsumer : public testing::Test {
protected:
    BryReturnT notify(void* value) {
        framework.records.clear();
        const RegisteredConsumer& registered = framework.consumers.at(0);
        return registered.record->notify(registered.handle, registered.eventType.c_str(), registered.filter, value);
    }

    RecordingFramework framework;
    Listener listener;
    Tul::CmEventConsumer<Listener, 1> consumer;
};

TEST_F(CmEventConsumer, SubscribesToCmNotificationsWithOnePairForOnePattern) {
    consumer.start(cliSshPattern, &Listener::hear, listener);
    const RegisteredConsumer& registered = framework.consumers.at(0);
    EXPECT_EQ("BryOamSpiCmEvent_Notification_1", registered.eventType);
    EXPECT_STREQ("BryOamSpiCmEvent_FilterTypeRegExp_1", registered.filter[0]->name);
    EXPECT_STREQ(cliSshPattern, registered.filter[0]->value);
    EXPECT_EQ(nullptr, registered.filter[1]);
    consumer.stop();
}

TEST_F(CmEventConsumer, MakesOnePairOfEachPatternInTheOrderOfTheList) {
    consumer.start(std::list<std::string>{"b", "a"}, &Listener::hear, listener);
    EXPECT_THAT(framework.consumers.at(0).patterns,
                ElementsAre("BryOamSpiCmEvent_FilterTypeRegExp_1=b", "BryOamSpiCmEvent_FilterTypeRegExp_1=a"));
    consumer.stop();
}

TEST_F(CmEventConsumer, SubscribesWithJustTheNullForAnEmptyList) {
    consumer.start(std::list<std::string>{}, &Listener::hear, listener);
    EXPECT_THAT(framework.callsOf("addSubscription"), ElementsAre("addSubscription BryOamSpiCmEvent_Notification_1"));
    EXPECT_EQ(nullptr, framework.consumers.at(0).filter[0]);
    consumer.stop();
}

TEST_F(CmEventConsumer, PassesPatternsOnUnchanged) {
    const std::string pattern = "^([a-z]*\\.%s|\"<&>\" ){2,}\n$";
    consumer.start(pattern, &Listener::hear, listener);
    EXPECT_EQ(pattern, framework.consumers.at(0).filter[0]->value);
    consumer.stop();
}

TEST_F(CmEventConsumer, HandsTheRecordOfANotificationToTheHandler) {
    consumer.start(cliSshPattern, &Listener::hear, listener);
    CmNotification notification;
    notification.changed(cliSshDn).enumeration("administrativeState", 0);
    BryOamSpiCmEvent_Notification_1T* const record = notification.record();
    EXPECT_EQ(BRY_OK, notify(record));
    EXPECT_THAT(listener.heard, ElementsAre(record));
    consumer.stop();
}

TEST_F(CmEventConsumer, HandsOverNotificationsWithoutEventsToo) {
    consumer.start(cliSshPattern, &Listener::hear, listener);
    CmNotification empty;
    CmNotification withoutArray;
    EXPECT_EQ(BRY_OK, notify(empty.record()));
    EXPECT_EQ(BRY_OK, notify(withoutArray.withoutEventArray().record()));
    EXPECT_THAT(listener.heard, SizeIs(2));
    consumer.stop();
}

TEST_F(CmEventConsumer, DoesNotLookAtTheEventType) {
    consumer.start(cliSshPattern, &Listener::hear, listener);
    CmNotification notification;
    consumer.notifyCb("SomethingElse", notification.record());
    consumer.notifyCb(nullptr, notification.record());
    EXPECT_THAT(listener.heard, SizeIs(2));
    consumer.stop();
}

TEST_F(CmEventConsumer, LeavesExceptionsOfTheHandlerToItsBase) {
    consumer.start(cliSshPattern, &Listener::fail, listener);
    framework.logLevel = 8;
    CmNotification notification;
    EXPECT_EQ(BRY_OK, notify(notification.record()));
    EXPECT_EQ(framework.records, baseSource.entry("notifyCallback") + source.entry("notifyCb") +
                                     baseSource.warning("notifyCallback", "Exception thrown from event consumer :%s",
                                                        "Exception thrown from event consumer :deaf") +
                                     baseSource.exit("notifyCallback"));
    consumer.stop();
}

TEST_F(CmEventConsumer, TracesAroundItsBase) {
    framework.logLevel = 8;
    consumer.start(cliSshPattern, &Listener::hear, listener);
    EXPECT_EQ(framework.records,
              source.entry("start") + baseSource.entry("start") + baseSource.exit("start") + source.exit("start"));
    CmNotification notification;
    EXPECT_EQ(BRY_OK, notify(notification.record()));
    EXPECT_EQ(framework.records, baseSource.entry("notifyCallback") + source.entry("notifyCb") +
                                     source.exit("notifyCb") + baseSource.exit("notifyCallback"));
    framework.records.clear();
    consumer.stop();
    EXPECT_EQ(framework.records,
              source.entry("stop") + baseSource.entry("stop") + baseSource.exit("stop") + source.exit("stop"));
}

TEST_F(CmEventConsumer, MayBeStoppedTwiceAndWithoutAStart) {
    consumer.stop();
    consumer.start(cliSshPattern, &Listener::hear, listener);
    consumer.stop();
    consumer.stop();
    EXPECT_THAT(framework.callsOf("unregisterConsumer"), SizeIs(1));
    EXPECT_THAT(framework.consumers, IsEmpty());
}

TEST_F(CmEventConsumer, CallsTheHandlerOfItsLatestStart) {
    consumer.start(cliSshPattern, &Listener::hear, listener);
    consumer.stop();
    consumer.start(netconfSshPattern, &Listener::hearOtherwise, listener);
    CmNotification notification;
    EXPECT_EQ(BRY_OK, framework.notify(netconfSshPattern, notification));
    EXPECT_THAT(listener.heard, IsEmpty());
    EXPECT_THAT(listener.heardOtherwise, SizeIs(1));
    consumer.stop();
}

TEST_F(CmEventConsumer, LivesBesideConsumersOfOtherNumbers) {
    Listener other;
    Tul::CmEventConsumer<Listener, 2> second;
    consumer.start(cliSshPattern, &Listener::hear, listener);
    second.start(sshPattern, &Listener::hear, other);
    CmNotification notification;
    EXPECT_EQ(BRY_OK, framework.notify(sshPattern, notification));
    EXPECT_THAT(listener.heard, IsEmpty());
    EXPECT_THAT(other.heard, SizeIs(1));
    consumer.stop();
    second.stop();
}

}  // namespace
