#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <future>
#include <stdexcept>
#include <utility>

#include "EventRouter.h"
#include "ModelFixture.h"

namespace TulNode {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::chrono::seconds longEnough{20};

/** A consumer whose callback, a plain function as the SPI wants it, finds its recorder by a number. */
class Recorder {
public:
    template <int number>
    static Recorder& of() {
        static Recorder recorder(notify<number>);
        recorder.reset();
        return recorder;
    }

    BryOamSpiEventConsumerRecord* record() { return &_record; }

    std::vector<std::string> received() {
        const std::lock_guard lock(_mutex);
        return _received;
    }

    bool waitForCount(std::size_t count) {
        std::unique_lock lock(_mutex);
        return _changed.wait_for(lock, longEnough, [&] { return _received.size() >= count; });
    }

    /** Called on the router's thread with each event; its result is the callback's. */
    std::function<BryReturnT(BryOamSpiEventConsumerHandleT)> hook;
    std::atomic<bool> mayBeCalled{true};

private:
    explicit Recorder(decltype(BryOamSpiEventConsumerRecord::notify) callback) : _record{callback} {}

    void reset() {
        hook = nullptr;
        mayBeCalled = true;
        _received.clear();
    }

    template <int number>
    static BryReturnT notify(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter,
                             void* value) {
        static Recorder& self = unreset<number>();
        return self.take(handle, eventType, filter, *static_cast<BryOamSpiCmEvent_Notification_1T*>(value));
    }

    template <int number>
    static Recorder& unreset();

    BryReturnT take(BryOamSpiEventConsumerHandleT handle, const std::string& eventType, BryNameValuePairT** filter,
                    const BryOamSpiCmEvent_Notification_1T& notification) {
        EXPECT_TRUE(mayBeCalled);
        EXPECT_EQ(eventType, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1);
        std::string line = *filter == nullptr ? "" : std::string((*filter)->value) + ": ";
        for (BryOamSpiCmEvent_Event_1** event = notification.events; *event != nullptr; ++event) {
            line += describe(**event) + ";";
        }
        {
            const std::lock_guard lock(_mutex);
            _received.push_back(line);
            _changed.notify_all();
        }
        return hook ? hook(handle) : BRY_OK;
    }

    static std::string describe(const BryOamSpiCmEvent_Event_1& event) {
        std::string text = std::to_string(event.eventType) + " " + event.dn;
        for (BryOamSpiCmEvent_Attribute_1** attribute = event.attributes; *attribute != nullptr; ++attribute) {
            text += std::string(" ") + (*attribute)->name + "/" + std::to_string((*attribute)->type);
            for (std::uint32_t i = 0; i < (*attribute)->nrOfValues; ++i) {
                const TulMoAttributeValue_3& value = (*attribute)->values[i];
                text += (*attribute)->type == TUL_MO_TYPE_STRING_3 ? std::string("=") + value.asString
                                                                   : "=" + std::to_string(value.asEnum);
            }
        }
        return text;
    }

    BryOamSpiEventConsumerRecord _record;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<std::string> _received;
};

/** The recorders by number; a callback cannot carry a pointer to its own. */
std::array<Recorder*, 8> recorders{};

template <int number>
Recorder& Recorder::unreset() {
    return *recorders[number];
}

template <int number>
Recorder& recorder() {
    recorders[number] = &Recorder::of<number>();
    return *recorders[number];
}

/** A null-terminated filter of patterns. */
class Patterns {
public:
    explicit Patterns(std::vector<std::string> patterns, const char* name = BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1)
        : _texts(std::move(patterns)) {
        for (const std::string& text : _texts) {
            _pairs.push_back({name, text.c_str()});
        }
        for (BryNameValuePair& pair : _pairs) {
            _array.push_back(&pair);
        }
        _array.push_back(nullptr);
    }

    BryNameValuePairT** array() { return _array.data(); }

private:
    std::vector<std::string> _texts;
    std::vector<BryNameValuePair> _pairs;
    std::vector<BryNameValuePairT*> _array;
};

Commit created(const std::vector<std::string>& dns) {
    auto changes = std::make_shared<std::vector<MoChange>>();
    for (const std::string& dn : dns) {
        changes->push_back({CREATED, dn, {}});
    }
    return changes;
}

class Router : public testing::Test {
protected:
    static constexpr const char* type = BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1;

    Router() { router.hold(false); }

    EventRouter::Handle subscribe(Recorder& recorder, Patterns& patterns) {
        const EventRouter::Handle handle = router.registerConsumer(recorder.record());
        router.addSubscription(handle, type, patterns.array());
        return handle;
    }

    void waitUntilIdle() { EXPECT_TRUE(router.waitUntilIdle(longEnough)); }

    std::string lastRecord() {
        const std::vector<Record> records = journal.last(1);
        return records.empty() ? "" : records[0].line();
    }

    Journal journal;
    EventRouter router{journal};
    Patterns everything{{}};
};

TEST_F(Router, DeliversTheMatchingChangesWithTheirValuesInOneCall) {
    Recorder& consumer = recorder<0>();
    Patterns patterns{{"^ManagedElement=.*,Ssh=.*$", "Transport=1$"}};
    const auto handle = subscribe(consumer, patterns);
    router.publish(std::make_shared<std::vector<MoChange>>(std::vector<MoChange>{
        {CREATED, transport, {}},
        {DELETED, sysM, {}},
        {ATTRIBUTES_CHANGED, ssh, {{"selectedMacs", texts({"a", "b"})}, {"x", enumeration(-1)}, {"y", texts({})}}}}));
    router.publish(created({sysM}));
    waitUntilIdle();
    EXPECT_THAT(consumer.received(), ElementsAre("^ManagedElement=.*,Ssh=.*$: 1 " + transport + ";3 " + ssh +
                                                 " selectedMacs/10=a=b x/12=-1 y/10;"));
    router.unregisterConsumer(handle, consumer.record());
}

TEST_F(Router, AFilterWithoutPairsLetsEverythingThrough) {
    Recorder& consumer = recorder<0>();
    subscribe(consumer, everything);
    router.publish(created({"A=1", "B=1"}));
    waitUntilIdle();
    EXPECT_THAT(consumer.received(), ElementsAre("1 A=1;1 B=1;"));
}

TEST_F(Router, EachMatchingSubscriptionIsServedByItself) {
    Recorder& consumer = recorder<0>();
    Patterns first{{"A"}};
    Patterns second{{"1$"}};
    const auto handle = subscribe(consumer, first);
    router.addSubscription(handle, type, second.array());
    router.publish(created({"A=1", "B=1", "A=2"}));
    waitUntilIdle();
    EXPECT_THAT(consumer.received(), ElementsAre("A: 1 A=1;1 A=2;", "1$: 1 A=1;1 B=1;"));
}

TEST_F(Router, DeliversInTheOrderOfTheCommits) {
    Recorder& consumer = recorder<0>();
    subscribe(consumer, everything);
    std::vector<std::string> expected;
    for (int i = 0; i < 1000; ++i) {
        const std::string dn = "A=" + std::to_string(i);
        router.publish(created({dn}));
        expected.push_back("1 " + dn + ";");
    }
    waitUntilIdle();
    EXPECT_EQ(consumer.received(), expected);
}

TEST_F(Router, ASubscriptionSeesNothingOfBeforeItWasAddedOrAfterItWasRemoved) {
    Recorder& consumer = recorder<0>();
    Patterns first{{"A"}};
    Patterns second{{"A=[0-9]"}};
    router.hold(true);
    const auto handle = subscribe(consumer, first);
    router.publish(created({"A=1"}));
    router.addSubscription(handle, type, second.array());
    router.publish(created({"A=2"}));
    router.removeSubscription(handle, type, first.array());
    router.hold(false);
    waitUntilIdle();
    EXPECT_THAT(consumer.received(), ElementsAre("A=[0-9]: 1 A=2;"));
}

TEST_F(Router, HoldsBackUntilItIsReleased) {
    EventRouter fresh{journal};
    Recorder& consumer = recorder<0>();
    fresh.addSubscription(fresh.registerConsumer(consumer.record()), type, everything.array());
    fresh.publish(created({"A=1"}));
    EXPECT_TRUE(fresh.waitUntilIdle(longEnough));
    EXPECT_THAT(consumer.received(), IsEmpty());
    fresh.hold(false);
    EXPECT_TRUE(consumer.waitForCount(1));
}

TEST_F(Router, RefusesWhatItCannotMatchAndSaysWhy) {
    Recorder& consumer = recorder<0>();
    const auto handle = router.registerConsumer(consumer.record());
    Patterns broken{{"A", "("}};
    Patterns unknown{{"A"}, "Colour"};
    BryNameValuePair halfPair{BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1, nullptr};
    std::array<BryNameValuePairT*, 2> half{&halfPair, nullptr};
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle, type, broken.array()); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle, type, unknown.array()); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle, type, half.data()); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle, type, nullptr); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle, "Weather", everything.array()); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle, nullptr, everything.array()); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { router.addSubscription(handle + 1, type, everything.array()); }), BRY_INVALID_HANDLE);
    EXPECT_EQ(codeOf([&] { router.removeSubscription(handle, type, everything.array()); }), BRY_NOT_FOUND);
    EXPECT_EQ(codeOf([&] { router.removeSubscription(handle + 1, type, everything.array()); }), BRY_INVALID_HANDLE);
    EXPECT_EQ(codeOf([&] { router.unregisterConsumer(handle, nullptr); }), BRY_INVALID_HANDLE);
    EXPECT_EQ(codeOf([&] { router.registerConsumer(nullptr); }), BRY_INVALID_ARGUMENT);
}

TEST_F(Router, AccusesWhoeverRegistersARecordTwice) {
    Recorder& consumer = recorder<0>();
    router.registerConsumer(consumer.record());
    EXPECT_EQ(codeOf([&] { router.registerConsumer(consumer.record()); }), BRY_ALREADY_EXISTS);
    EXPECT_THAT(lastRecord(), HasSubstr("component misbehaves: "));
}

TEST_F(Router, GivesNoHandleTwice) {
    Recorder& consumer = recorder<0>();
    const auto first = router.registerConsumer(consumer.record());
    router.unregisterConsumer(first, consumer.record());
    EXPECT_GT(router.registerConsumer(consumer.record()), first);
    EXPECT_EQ(codeOf([&] { router.unregisterConsumer(first, consumer.record()); }), BRY_INVALID_HANDLE);
}

TEST_F(Router, ACallbackMayUnregisterItsOwnConsumerAndIsNotCalledAgain) {
    Recorder& consumer = recorder<0>();
    consumer.hook = [&](auto handle) {
        router.unregisterConsumer(handle, consumer.record());
        return BRY_OK;
    };
    router.hold(true);
    const auto handle = subscribe(consumer, everything);
    router.addSubscription(handle, type, everything.array());
    router.publish(created({"A=1"}));
    router.publish(created({"A=2"}));
    router.hold(false);
    EXPECT_TRUE(consumer.waitForCount(1));
    waitUntilIdle();
    EXPECT_THAT(consumer.received(), ElementsAre("1 A=1;"));
    EXPECT_EQ(codeOf([&] { router.unregisterConsumer(handle, consumer.record()); }), BRY_INVALID_HANDLE);
}

TEST_F(Router, ACallbackMayRegisterAndSubscribeAndPublish) {
    Recorder& consumer = recorder<0>();
    Recorder& other = recorder<1>();
    consumer.hook = [&](auto) {
        if (consumer.received().size() == 1) {
            subscribe(other, everything);
            router.publish(created({"A=2"}));
        }
        return BRY_OK;
    };
    subscribe(consumer, everything);
    router.publish(created({"A=1"}));
    EXPECT_TRUE(consumer.waitForCount(2));
    waitUntilIdle();
    EXPECT_THAT(other.received(), ElementsAre("1 A=2;"));
    router.removeAll();
}

TEST_F(Router, UnregisteringWaitsForTheCallbackUnderWay) {
    Recorder& consumer = recorder<0>();
    std::promise<void> gate;
    std::atomic<bool> finished{false};
    consumer.hook = [&, opened = gate.get_future().share()](auto) {
        opened.wait();
        finished = true;
        return BRY_OK;
    };
    const auto handle = subscribe(consumer, everything);
    router.publish(created({"A=1"}));
    ASSERT_TRUE(consumer.waitForCount(1));
    auto unregistered = std::async(std::launch::async, [&] {
        router.unregisterConsumer(handle, consumer.record());
        return finished.load();
    });
    EXPECT_EQ(unregistered.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    gate.set_value();
    EXPECT_TRUE(unregistered.get());
}

TEST_F(Router, ASlowConsumerHoldsUpNobodyElse) {
    Recorder& slow = recorder<0>();
    Recorder& quick = recorder<1>();
    std::promise<void> gate;
    slow.hook = [opened = gate.get_future().share()](auto) {
        opened.wait();
        return BRY_OK;
    };
    subscribe(slow, everything);
    subscribe(quick, everything);
    for (int i = 0; i < 100; ++i) {
        router.publish(created({"A=1"}));
    }
    EXPECT_TRUE(quick.waitForCount(100));
    EXPECT_FALSE(router.waitUntilIdle(std::chrono::milliseconds(1)));
    gate.set_value();
    waitUntilIdle();
    EXPECT_EQ(slow.received().size(), 100U);
}

TEST_F(Router, WritesDownWhatACallbackAnswersAndThrows) {
    Recorder& consumer = recorder<0>();
    subscribe(consumer, everything);
    const auto publishWith = [&](std::function<BryReturnT(EventRouter::Handle)> hook) {
        consumer.hook = std::move(hook);
        router.publish(created({"A=1"}));
        waitUntilIdle();
        return lastRecord();
    };
    EXPECT_THAT(publishWith([](auto) { return BRY_FAILED; }), HasSubstr("answered a notification with -1"));
    EXPECT_EQ(journal.accusations(), 0U);
    EXPECT_THAT(publishWith([](auto) -> BryReturnT { throw std::runtime_error("no luck"); }), HasSubstr("no luck"));
    EXPECT_THAT(publishWith([](auto) -> BryReturnT { throw 1; }), HasSubstr("component misbehaves"));
    EXPECT_EQ(journal.accusations(), 2U);
    publishWith(nullptr);
    EXPECT_EQ(consumer.received().size(), 4U);
}

TEST_F(Router, WarnsOnceOfALongQueue) {
    Recorder& consumer = recorder<0>();
    router.hold(true);
    subscribe(consumer, everything);
    const Commit commit = created({"A=1"});
    for (std::size_t i = 0; i < EventRouter::manyWaiting + 10; ++i) {
        router.publish(commit);
    }
    EXPECT_THAT(lastRecord(), HasSubstr("slow"));
    EXPECT_EQ(journal.last(10).size(), 1U);
}

TEST_F(Router, KeepsNothingForAConsumerThatACommitDoesNotConcern) {
    Recorder& consumer = recorder<0>();
    Patterns other{{"^B="}};
    router.hold(true);
    subscribe(consumer, other);
    const Commit commit = created({"A=1"});
    for (std::size_t i = 0; i < EventRouter::manyWaiting + 10; ++i) {
        router.publish(commit);
    }
    EXPECT_THAT(journal.last(10), IsEmpty());
    router.publish(created({"A=2", "B=1"}));
    router.hold(false);
    waitUntilIdle();
    EXPECT_THAT(consumer.received(), ElementsAre(HasSubstr("B=1")));
}

TEST_F(Router, NamesAndRemovesAllThatIsLeft) {
    Recorder& first = recorder<0>();
    Recorder& second = recorder<1>();
    subscribe(first, everything);
    router.registerConsumer(second.record());
    EXPECT_THAT(router.removeAll(),
                ElementsAre(HasSubstr("1 with 1 subscriptions"), HasSubstr("2 with 0 subscriptions")));
    first.mayBeCalled = false;
    router.publish(created({"A=1"}));
    waitUntilIdle();
    EXPECT_THAT(router.removeAll(), IsEmpty());
}

/** Registers and unregisters a consumer again and again; it must not be called while it is not registered. */
template <int number>
void churn(EventRouter& router, Patterns& patterns, const std::atomic<bool>& over) {
    Recorder& consumer = recorder<number>();
    while (!over) {
        consumer.mayBeCalled = true;
        const auto handle = router.registerConsumer(consumer.record());
        router.addSubscription(handle, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1, patterns.array());
        consumer.waitForCount(consumer.received().size() + 1);
        router.unregisterConsumer(handle, consumer.record());
        consumer.mayBeCalled = false;
    }
}

TEST_F(Router, KeepsOrderAndSilenceWhileConsumersComeAndGo) {
    constexpr int publishers = 4;
    constexpr int commitsEach = 5000;
    Recorder& steady = recorder<0>();
    subscribe(steady, everything);
    std::atomic<bool> over{false};
    std::vector<std::future<void>> churning;
    churning.push_back(std::async(std::launch::async, [&] { churn<1>(router, everything, over); }));
    churning.push_back(std::async(std::launch::async, [&] { churn<2>(router, everything, over); }));
    churning.push_back(std::async(std::launch::async, [&] { churn<3>(router, everything, over); }));
    std::vector<std::future<void>> publishing;
    for (int publisher = 0; publisher < publishers; ++publisher) {
        publishing.push_back(std::async(std::launch::async, [&, publisher] {
            for (int i = 0; i < commitsEach; ++i) {
                router.publish(created({"P" + std::to_string(publisher) + "=" + std::to_string(i)}));
            }
        }));
    }
    for (auto& one : publishing) {
        one.get();
    }
    over = true;
    while (churning.back().wait_for(std::chrono::milliseconds(1)) != std::future_status::ready ||
           churning[0].wait_for(std::chrono::milliseconds(1)) != std::future_status::ready ||
           churning[1].wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        router.publish(created({"End=1"}));
    }
    EXPECT_TRUE(steady.waitForCount(publishers * commitsEach));
    std::map<std::string, int> next;
    for (const std::string& line : steady.received()) {
        const std::string publisher = line.substr(2, 2);
        if (publisher[0] == 'P') {
            EXPECT_EQ(line, "1 " + publisher + "=" + std::to_string(next[publisher]++) + ";");
        }
    }
    EXPECT_EQ(next.size(), std::size_t{publishers});
}

}  // namespace
}  // namespace TulNode
