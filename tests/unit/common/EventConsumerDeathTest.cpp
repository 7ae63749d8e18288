#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

#include "AllocationWatch.h"
#include "CmEventConsumer.h"
#include "Emulation.h"
#include "ExpectedRecords.h"
#include "RecordingSubscriber.h"

namespace {

using namespace TulTest;
using testing::HasSubstr;
using testing::KilledBySignal;
using Subscriber = RecordingSubscriber<1>;

const RecordSource source{"Common", "src/common/inc/EventConsumer"};

std::string printed(const Records& records) {
    std::ostringstream text;
    for (const Record& record : records) {
        text << record << '\n';
    }
    return text.str();
}

/** The dying process prints its records: nobody else could tell of them. */
class EventConsumerDeathTest : public testing::Test {
protected:
    EventConsumerDeathTest() {
        framework.onRecord = [](const Record& record) { std::cerr << record << std::endl; };
    }

    RecordingFramework framework;
    Subscriber subscriber;
};

TEST_F(EventConsumerDeathTest, AbortsWithoutAMessageWhenItIsStartedTwice) {
    subscriber.subscribe();
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT), lastWords(""));
    subscriber.stop();
}

TEST_F(EventConsumerDeathTest, TracesJustTheEntryOfTheSecondStart) {
    subscriber.subscribe();
    framework.logLevel = 8;
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT), lastWords(printed(source.entry("start"))));
    framework.logLevel = 6;
    subscriber.stop();
}

TEST_F(EventConsumerDeathTest, LogsAnErrorAndAbortsWhenItCannotRegister) {
    framework.results["registerConsumer"] = BRY_ALREADY_EXISTS;
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT),
                lastWords(printed(source.error("start", "Could not register consumer"))));
}

TEST_F(EventConsumerDeathTest, LogsAnErrorAndAbortsWhenItCannotSubscribe) {
    framework.results["addSubscription"] = 99;
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT),
                lastWords(printed(source.error("start", "Could not add subscription"))));
}

TEST_F(EventConsumerDeathTest, AbortsWithoutTheErrorBelowItsLevel) {
    framework.results["registerConsumer"] = BRY_FAILED;
    framework.logLevel = 2;
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT), lastWords(""));
}

TEST_F(EventConsumerDeathTest, StaysRegisteredWhenItCannotSubscribe) {
    framework.results["addSubscription"] = BRY_FAILED;
    framework.onRecord = [this](const Record& record) {
        std::cerr << record.call << " with " << framework.consumers.size() << " registered\n";
    };
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT), HasSubstr("log with 1 registered"));
}

TEST_F(EventConsumerDeathTest, AbortsLikeAfterAFailedSubscriptionWhenThereIsNoMemoryForTheFilter) {
    AllocationWatch watch;
    watch.exhaustMemory();
    EXPECT_EXIT(subscriber.subscribe(), KilledBySignal(SIGABRT),
                lastWords(printed(source.error("start", "Could not add subscription"))));
}

TEST_F(EventConsumerDeathTest, DoesNotSurviveAStartWithoutARouter) {
    framework.results["getInterface TulOamSpiEventRouter"] = BRY_NOT_FOUND;
    EXPECT_DEATH(subscriber.subscribe(), "Interface TulOamSpiEventRouter not found");
}

TEST_F(EventConsumerDeathTest, AssertsThatItIsTheOnlyObjectOfItsInstantiation) {
    EXPECT_EXIT(Subscriber(), KilledBySignal(SIGABRT), HasSubstr("Assertion `_instance == NULL' failed"));
}

TEST_F(EventConsumerDeathTest, AssertsThatAnObjectLivesWhenANotificationComes) {
    EXPECT_EXIT(RecordingSubscriber<2>::notifyCallback(1, "EventType", nullptr, nullptr), KilledBySignal(SIGABRT),
                HasSubstr("Assertion `_instance' failed"));
}

TEST_F(EventConsumerDeathTest, AssertsItAlsoAfterTheLastObjectIsGone) {
    RecordingSubscriber<2>().stop();
    EXPECT_EXIT(RecordingSubscriber<2>::notifyCallback(1, "EventType", nullptr, nullptr), KilledBySignal(SIGABRT),
                HasSubstr("Assertion `_instance' failed"));
}

TEST_F(EventConsumerDeathTest, NamesItsSourceFileRelativeToTheTreeInAnAssertion) {
    EXPECT_EXIT(Subscriber(), KilledBySignal(SIGABRT), HasSubstr(" src/common/inc/EventConsumer.h:"));
}

struct Listener {
    void hear(const BryOamSpiCmEvent_Notification_1T& /*notification*/) {}
};

class CmEventConsumerDeathTest : public EventConsumerDeathTest {
protected:
    Listener listener;
    Tul::CmEventConsumer<Listener, 1> consumer;
};

TEST_F(CmEventConsumerDeathTest, AbortsWhenItCannotSubscribe) {
    framework.results["addSubscription"] = BRY_FAILED;
    EXPECT_EXIT(consumer.start("CliSsh", &Listener::hear, listener), KilledBySignal(SIGABRT),
                lastWords(printed(source.error("start", "Could not add subscription"))));
}

TEST_F(CmEventConsumerDeathTest, AbortsWhenItIsStartedTwice) {
    consumer.start("CliSsh", &Listener::hear, listener);
    EXPECT_EXIT(consumer.start("CliSsh", &Listener::hear, listener), KilledBySignal(SIGABRT), lastWords(""));
    consumer.stop();
}

TEST_F(CmEventConsumerDeathTest, AssertsThatItIsTheOnlyOneOfItsNumber) {
    using Consumer = Tul::CmEventConsumer<Listener, 1>;
    EXPECT_EXIT(Consumer(), KilledBySignal(SIGABRT), HasSubstr("Assertion `_instance == NULL' failed"));
}

}  // namespace
