#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <mutex>
#include <new>

#include "Elsewhere.h"
#include "Life.h"

// What the walk through the allocations must see: naive variants of what the component does, each in the same
// harness as the component, and beside it, where it can be reached alone, the component's own part.

namespace {

using namespace TulTest;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/** Calls with the n-th allocation failing, n = 1, 2, 3, ... until none fails, and looks after each. Gives the count.
 */
unsigned int walk(const std::function<void(AllocationFaults&)>& attempt) {
    unsigned int n = 0;
    for (unsigned int delivered = 1; delivered != 0;) {
        AllocationFaults faults(++n, Persistence::ONCE);
        attempt(faults);
        delivered = faults.delivered();
    }
    return n - 1;
}

/** Whether the call threw; nothing else of it counts. */
template <class CallT>
bool throwsUnder(AllocationFaults& faults, const CallT& call) {
    try {
        const AllocationFaults::Armed armed(faults);
        call();
        return false;
    } catch (const std::bad_alloc&) {
        return true;
    }
}

// An option never without its value

/** Queues in two steps. */
class TwoStepQueue {
public:
    void setDscp(const std::string& dscp) {
        _words.push_back("--ipQos");
        _words.push_back(dscp);
    }
    const std::vector<std::string>& words() const { return _words; }

private:
    std::vector<std::string> _words = {"ssh"};
};

TEST(AllocationControls, AnOptionThatIsQueuedInTwoStepsIsFoundWithoutItsValue) {
    Lines flaws;
    const unsigned int count = walk([&flaws](AllocationFaults& faults) {
        TwoStepQueue queue;
        if (throwsUnder(faults, [&queue] { queue.setDscp("46"); }) && queue.words().size() > 1) {
            flaws.push_back(flawIn(queue.words()));
        }
    });
    EXPECT_LT(0u, count);
    EXPECT_THAT(flaws, Contains("not the value of --ipQos"));
}

TEST(AllocationControls, TheAdapterQueuesAllWordsOrNone) {
    Lines runs;
    FaultyAdapter adapter([&runs](const std::string& words) { runs.push_back(words); });
    const unsigned int count = walk([&](AllocationFaults& faults) {
        TulSshdManagement::SshdVormaWrapper wrapper;
        const unsigned int renegotiationTime = 3600;
        ASSERT_TRUE(wrapper.setRenegotiationtime(renegotiationTime));
        runs.clear();
        const bool thrown = throwsUnder(faults, [&wrapper] { wrapper.setDscp("46"); });
        EXPECT_TRUE(wrapper.invokeVorma(30000));
        const std::string rest = thrown ? "" : " --ipQos 46";
        EXPECT_THAT(runs, testing::ElementsAre("ssh --renegotiationTime 3600" + rest));
    });
    EXPECT_LT(0u, count);
}

// The lock is free afterwards

TEST(AllocationControls, ALockWithoutAScopeIsFoundHeld) {
    Poco::Mutex mutex;
    unsigned int held = 0;
    const unsigned int count = walk([&](AllocationFaults& faults) {
        const bool thrown = throwsUnder(faults, [&mutex] {
            mutex.lock();
            const Lines needsMemory(1);
            mutex.unlock();
        });
        Elsewhere next([&mutex] { const Poco::ScopedLock<Poco::Mutex> lock(mutex); });
        held += (thrown ? next.isDoneWithin(std::chrono::milliseconds(50)) : next.isDone()) ? 0 : 1;
        if (thrown) {
            mutex.unlock();
        }
    });
    EXPECT_LT(0u, count);
    EXPECT_EQ(count, held);
}

TEST(AllocationControlsDeathTest, WhatIsStillHeldUpInTheEndEndsTheProcess) {
    const auto forget = [] {
        Poco::Mutex mutex;
        mutex.lock();
        Elsewhere next([&mutex] { mutex.lock(); }, std::chrono::milliseconds(50));
    };
    EXPECT_EXIT(forget(), testing::KilledBySignal(SIGABRT), "still held up: a lock is held");
}

// Nothing is lost

TEST(AllocationControls, ABlockWithoutAnOwnerIsFoundLive) {
    unsigned int lost = 0;
    walk([&lost](AllocationFaults& faults) {
        int* block = nullptr;
        const bool thrown = throwsUnder(faults, [&block] {
            block = new int(7);
            const Lines needsMemory(1);
            delete block;
            block = nullptr;
        });
        EXPECT_THAT(AllocationFaults::live(), SizeIs(block == nullptr ? 0 : 1));
        lost += thrown && block != nullptr ? 1 : 0;
        delete block;
    });
    EXPECT_EQ(1u, lost);
}

// No exception leaves a callback

BryReturnT naiveCallback() {
    const Lines needsMemory(1);
    return BRY_OK;
}

TEST(AllocationControls, ACallbackThatLetsAnExceptionOutIsSeen) {
    unsigned int thrown = 0;
    const unsigned int count =
        walk([&thrown](AllocationFaults& faults) { thrown += throwsUnder(faults, naiveCallback) ? 1 : 0; });
    EXPECT_LT(0u, count);
    EXPECT_EQ(count, thrown);
}

// The construction of the component: what is built so far goes, and the slots of the consumers are free again

TEST(AllocationTortureOfTheConstruction, LeavesNothingAndTheNextOneWorks) {
    using Component = TulSshdManagement::TulSshdManagementComponent;
    RecordingFramework framework;
    const unsigned int count = walk([](AllocationFaults& faults) {
        alignas(Component) unsigned char place[sizeof(Component)];
        Component* component = nullptr;
        throwsUnder(faults, [&] { component = new (place) Component; });
        EXPECT_EQ(faults.delivered() == 0, component != nullptr);
        if (component != nullptr) {
            EXPECT_FALSE(component->isStarted());
            component->~Component();
        }
        EXPECT_THAT(AllocationFaults::live(), IsEmpty());
    });
    EXPECT_LT(0u, count);
}

}  // namespace
