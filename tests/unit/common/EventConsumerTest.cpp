#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "AllocationWatch.h"
#include "EventConsumer.h"
#include "ExpectedRecords.h"
#include "RecordingSubscriber.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Subscriber = RecordingSubscriber<1>;

const RecordSource source{"Common", "src/common/inc/EventConsumer"};
const Subscriber::Filter threePairs{{"n", "c"}, {"n", "a"}, {"m", "b"}};

class EventConsumer : public testing::Test {
protected:
    void givenNoRouterFromNowOn() {
        Tul::Portal::instance().reset(false);
        framework.results["getInterface TulOamSpiEventRouter"] = BRY_NOT_FOUND;
    }

    /** Calls of the router, and no other. */
    std::vector<std::string> takeCalls() {
        std::vector<std::string> calls = std::exchange(framework.calls, {});
        std::erase_if(calls, [](const std::string& call) { return call.starts_with("get"); });
        return calls;
    }

    RecordingFramework framework;
    Subscriber subscriber;
};

using EventConsumerStart = EventConsumer;
using EventConsumerStop = EventConsumer;

TEST_F(EventConsumer, DoesNotTalkToTheRouterWhileItIsBuiltAndDestroyed) {
    { const RecordingSubscriber<2> other; }
    EXPECT_THAT(framework.calls, IsEmpty());
}

TEST_F(EventConsumerStart, RegistersAndThenSubscribes) {
    subscriber.subscribe({{"name", "value"}});
    EXPECT_THAT(takeCalls(), ElementsAre("registerConsumer", "addSubscription EventType name=value"));
    subscriber.stop();
}

TEST_F(EventConsumerStart, RegistersTheStaticCallback) {
    subscriber.subscribe();
    EXPECT_EQ(&Subscriber::notifyCallback, framework.consumers.at(0).record->notify);
    subscriber.stop();
}

TEST_F(EventConsumerStart, HandsOverTheFilterInOrderWithATerminatingNull) {
    subscriber.subscribe(threePairs);
    const RegisteredConsumer& consumer = framework.consumers.at(0);
    EXPECT_THAT(consumer.patterns, ElementsAre("n=c", "n=a", "m=b"));
    EXPECT_EQ(nullptr, consumer.filter[3]);
    subscriber.stop();
}

TEST_F(EventConsumerStart, HandsOverJustTheNullForAnEmptyFilter) {
    AllocationWatch watch;
    subscriber.subscribe();
    ASSERT_THAT(watch.taken(), SizeIs(1));
    EXPECT_EQ(1u, watch.taken()[0].count);
    EXPECT_EQ(watch.taken()[0].address, framework.consumers.at(0).filter);
    EXPECT_EQ(nullptr, framework.consumers.at(0).filter[0]);
    EXPECT_THAT(takeCalls(), ElementsAre("registerConsumer", "addSubscription EventType"));
    subscriber.stop();
}

TEST_F(EventConsumerStart, CopiesTheFilter) {
    auto filter = std::make_unique<Subscriber::Filter>(threePairs);
    subscriber.subscribe(*filter);
    filter.reset();
    const RegisteredConsumer& consumer = framework.consumers.at(0);
    EXPECT_STREQ("m", consumer.filter[2]->name);
    EXPECT_STREQ("b", consumer.filter[2]->value);
    subscriber.stop();
}

TEST_F(EventConsumerStart, CopiesTheEventType) {
    auto eventType = std::make_unique<std::string>("a type that is too long for a short string");
    subscriber.start({}, &Subscriber::take, subscriber, eventType->c_str());
    eventType.reset();
    subscriber.stop();
    EXPECT_THAT(framework.callsOf("removeSubscription"),
                ElementsAre("removeSubscription a type that is too long for a short string"));
}

TEST_F(EventConsumerStart, TracesItsEntryAndExit) {
    framework.logLevel = 8;
    subscriber.subscribe();
    EXPECT_EQ(framework.records, source.entry("start") + source.exit("start"));
    subscriber.stop();
}

TEST_F(EventConsumerStart, GivesEachInstantiationARegistrationOfItsOwn) {
    RecordingSubscriber<2> other;
    subscriber.subscribe({{"n", "first"}});
    other.subscribe({{"n", "second"}});
    ASSERT_THAT(framework.consumers, SizeIs(2));
    EXPECT_NE(framework.consumers[0].record, framework.consumers[1].record);
    EXPECT_NE(framework.consumers[0].record->notify, framework.consumers[1].record->notify);
    subscriber.stop();
    EXPECT_THAT(framework.consumers.at(0).patterns, ElementsAre("n=second"));
    other.stop();
}

TEST_F(EventConsumerStop, UnsubscribesAndThenUnregistersWithWhatStartHandedOver) {
    subscriber.subscribe(threePairs);
    takeCalls();
    subscriber.stop();
    EXPECT_THAT(takeCalls(), ElementsAre("removeSubscription EventType n=c n=a m=b", "unregisterConsumer known"));
    EXPECT_THAT(framework.consumers, IsEmpty());
}

TEST_F(EventConsumerStop, ReleasesTheFilterOnce) {
    AllocationWatch watch;
    subscriber.subscribe(threePairs);
    ASSERT_THAT(watch.taken(), SizeIs(1));
    EXPECT_EQ(4u, watch.taken()[0].count);
    EXPECT_THAT(watch.released(), IsEmpty());
    subscriber.stop();
    subscriber.stop();
    EXPECT_THAT(watch.released(), ElementsAre(watch.taken()[0].address));
}

TEST_F(EventConsumerStop, JustTracesWhenItWasNeverStarted) {
    framework.logLevel = 8;
    subscriber.stop();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(framework.records, source.entry("stop") + source.exit("stop"));
}

TEST_F(EventConsumerStop, JustTracesTheSecondTime) {
    subscriber.subscribe();
    subscriber.stop();
    takeCalls();
    framework.logLevel = 8;
    subscriber.stop();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(framework.records, source.entry("stop") + source.exit("stop"));
}

TEST_F(EventConsumerStop, MayBeFollowedByAnotherStart) {
    AllocationWatch watch;
    subscriber.subscribe({{"n", "first"}});
    subscriber.stop();
    takeCalls();
    subscriber.subscribe({{"n", "second"}, {"n", "third"}});
    EXPECT_THAT(takeCalls(), ElementsAre("registerConsumer", "addSubscription EventType n=second n=third"));
    subscriber.stop();
    ASSERT_THAT(watch.taken(), SizeIs(2));
    EXPECT_THAT(watch.released(), ElementsAre(watch.taken()[0].address, watch.taken()[1].address));
}

const Records subscriptionFailure = source.trace("stop", "Could not unregister event subscription, eventType %s",
                                                 "Could not unregister event subscription, eventType EventType");
const Records consumerFailure = source.trace("stop", "Could not unregister event consumer, eventType %s",
                                             "Could not unregister event consumer, eventType EventType");

TEST_F(EventConsumerStop, TracesAFailedRemovalAndGoesOnToUnregister) {
    subscriber.subscribe();
    takeCalls();
    framework.results["removeSubscription"] = BRY_NOT_FOUND;
    framework.logLevel = 8;
    subscriber.stop();
    EXPECT_THAT(takeCalls(), ElementsAre("removeSubscription EventType", "unregisterConsumer known"));
    EXPECT_EQ(framework.records, source.entry("stop") + subscriptionFailure + source.exit("stop"));
}

TEST_F(EventConsumerStop, TracesAFailedUnregistration) {
    subscriber.subscribe();
    framework.results["unregisterConsumer"] = 99;
    framework.logLevel = 8;
    subscriber.stop();
    EXPECT_EQ(framework.records, source.entry("stop") + consumerFailure + source.exit("stop"));
}

TEST_F(EventConsumerStop, TracesTwoFailuresWhenTheRouterIsGone) {
    const RecordSource portal{"Common", "src/common/inc/Portal"};
    subscriber.subscribe();
    takeCalls();
    givenNoRouterFromNowOn();
    framework.logLevel = 8;
    subscriber.stop();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(framework.records, source.entry("stop") +
                                     portal.warning("getInterface", "Interface %s not found",
                                                    "Interface TulOamSpiEventRouter not found") +
                                     subscriptionFailure + consumerFailure + source.exit("stop"));
}

TEST_F(EventConsumerStop, LogsItsFailuresAsNothingButTraces) {
    subscriber.subscribe();
    framework.results["removeSubscription"] = BRY_FAILED;
    framework.results["unregisterConsumer"] = BRY_FAILED;
    framework.logLevel = 7;
    subscriber.stop();
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(EventConsumerStop, ResetsTheConsumerAlsoWhenTheRouterFails) {
    AllocationWatch watch;
    subscriber.subscribe(threePairs);
    framework.results["removeSubscription"] = BRY_FAILED;
    framework.results["unregisterConsumer"] = BRY_FAILED;
    subscriber.stop();
    EXPECT_THAT(watch.released(), SizeIs(1));
    takeCalls();
    framework.results.clear();
    subscriber.subscribe();
    EXPECT_THAT(takeCalls(), ElementsAre("registerConsumer", "addSubscription EventType"));
    subscriber.stop();
}

TEST_F(EventConsumer, ReleasesTheFilterWithoutTheRouterWhenItIsDestroyedWhileStarted) {
    AllocationWatch watch;
    {
        RecordingSubscriber<2> other;
        other.subscribe(threePairs);
        takeCalls();
    }
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(watch.released(), ElementsAre(watch.taken().at(0).address));
}

TEST_F(EventConsumer, LeavesItsPlaceToAnotherObjectOfItsInstantiation) {
    RecordingSubscriber<2>().stop();
    RecordingSubscriber<2> next;
    next.subscribe();
    EXPECT_EQ(BRY_OK, RecordingSubscriber<2>::notifyCallback(1, "EventType", nullptr, nullptr));
    EXPECT_THAT(next.events, SizeIs(1));
    next.stop();
}

}  // namespace
