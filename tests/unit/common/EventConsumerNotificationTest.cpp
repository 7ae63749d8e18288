#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "EventConsumer.h"
#include "ExpectedRecords.h"
#include "RecordingSubscriber.h"
#include "TulException.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Subscriber = RecordingSubscriber<1>;

const RecordSource source{"Common", "src/common/inc/EventConsumer"};

class EventConsumerNotification : public testing::Test {
protected:
    EventConsumerNotification() { subscriber.subscribe(); }
    ~EventConsumerNotification() override { subscriber.stop(); }

    BryReturnT notify(void* value = nullptr) {
        framework.records.clear();
        const RegisteredConsumer& consumer = framework.consumers.at(0);
        return consumer.record->notify(consumer.handle, "EventType", consumer.filter, value);
    }

    RecordingFramework framework;
    Subscriber subscriber;
};

TEST_F(EventConsumerNotification, ReachesTheSubscriberWithEventTypeAndValue) {
    int value = 0;
    EXPECT_EQ(BRY_OK, notify(&value));
    EXPECT_THAT(subscriber.events, ElementsAre(Pair("EventType", &value)));
}

TEST_F(EventConsumerNotification, ReachesTheSubscriberWhateverHandleAndFilterItHas) {
    EXPECT_EQ(BRY_OK, Subscriber::notifyCallback(0, "Other", nullptr, nullptr));
    EXPECT_THAT(subscriber.events, ElementsAre(Pair("Other", nullptr)));
}

TEST_F(EventConsumerNotification, ReachesTheSubscriberOfItsOwnInstantiationOnly) {
    RecordingSubscriber<2> other;
    other.subscribe();
    EXPECT_EQ(BRY_OK, RecordingSubscriber<2>::notifyCallback(0, "EventType", nullptr, nullptr));
    EXPECT_THAT(subscriber.events, IsEmpty());
    EXPECT_EQ(1u, other.events.size());
    other.stop();
}

TEST_F(EventConsumerNotification, TracesItsEntryAndExit) {
    framework.logLevel = 8;
    EXPECT_EQ(BRY_OK, notify());
    EXPECT_EQ(framework.records, source.entry("notifyCallback") + source.exit("notifyCallback"));
}

TEST_F(EventConsumerNotification, WritesNothingBelowTheLevelOfTraces) {
    framework.logLevel = 7;
    EXPECT_EQ(BRY_OK, notify());
    EXPECT_THAT(framework.records, IsEmpty());
}

struct Thrown {
    const char* name;
    void (*reaction)();
    const char* format;
    const char* text;
};

void PrintTo(const Thrown& thrown, std::ostream* stream) {
    *stream << thrown.name;
}

const char* const known = "Exception thrown from event consumer :%s";
const char* const unknown = "Unknown exception thrown from event consumer";

const Thrown thrownThings[] = {
    {"RuntimeError", [] { throw std::runtime_error("x"); }, known, "Exception thrown from event consumer :x"},
    {"TulException", [] { throw Tul::TulException("no %d", 5); }, known,
     "Exception thrown from event consumer :no 5"},
    {"PlainException", [] { throw std::exception(); }, known, "Exception thrown from event consumer :std::exception"},
    {"TextWithPercentSigns", [] { throw std::runtime_error("%s%n"); }, known,
     "Exception thrown from event consumer :%s%n"},
    {"Integer", [] { throw 5; }, unknown, unknown},
    {"Text", [] { throw "text"; }, unknown, unknown},
};

class EventConsumerNotificationThat : public EventConsumerNotification, public testing::WithParamInterface<Thrown> {
protected:
    EventConsumerNotificationThat() { subscriber.reaction = GetParam().reaction; }
};

TEST_P(EventConsumerNotificationThat, ThrowsEndsAsAWarningAndInSuccess) {
    framework.logLevel = 8;
    EXPECT_EQ(BRY_OK, notify());
    EXPECT_EQ(framework.records, source.entry("notifyCallback") +
                                     source.warning("notifyCallback", GetParam().format, GetParam().text) +
                                     source.exit("notifyCallback"));
}

TEST_P(EventConsumerNotificationThat, ThrowsIsNotLoggedBelowTheLevelOfWarnings) {
    framework.logLevel = 3;
    EXPECT_EQ(BRY_OK, notify());
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_P(EventConsumerNotificationThat, ThrowsDoesNotTouchTheNextOne) {
    EXPECT_EQ(BRY_OK, notify());
    subscriber.reaction = nullptr;
    EXPECT_EQ(BRY_OK, notify());
    EXPECT_THAT(framework.records, IsEmpty());
    EXPECT_EQ(2u, subscriber.events.size());
}

INSTANTIATE_TEST_SUITE_P(EveryKind, EventConsumerNotificationThat, testing::ValuesIn(thrownThings),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(EventConsumerNotification, MayStopItsConsumer) {
    subscriber.reaction = [this] { subscriber.stop(); };
    EXPECT_EQ(BRY_OK, notify());
    EXPECT_THAT(framework.consumers, IsEmpty());
}

}  // namespace
