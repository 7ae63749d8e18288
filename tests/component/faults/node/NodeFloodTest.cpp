#include <malloc.h>

#include <array>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

#include "ComponentLibrary.h"
#include "LeakCheck.h"
#include "ModelFixture.h"
#include "Node.h"
#include "Sanitizers.h"
#include "ScriptedRunner.h"

namespace TulNode {
namespace {

using testing::Contains;
using testing::HasSubstr;
using TulTest::AdapterRun;
using TulTest::ProcessState;
using TulTest::ScriptedRunner;
using Lines = std::vector<std::string>;

constexpr std::chrono::seconds longEnough{100};

/** So many that the router warns of its queue, and some. */
constexpr std::size_t commits = EventRouter::manyWaiting + 500;

/** Bytes that one notification may take while it waits. */
constexpr std::size_t mostEach = 4096;

/** Bytes by which the heap may differ afterwards: less than the smallest block for each notification. */
constexpr std::size_t mostLeft = 16 * commits;

/** Bytes of the heap that are in use, on all threads together. */
std::size_t heapInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

/** Held in its first run, until it is released; a destroyed test releases it too. */
class HeldAdapter {
public:
    ~HeldAdapter() { release(); }

    void run(const std::string& words) {
        _runs.push_back(words);
        if (_runs.size() == 1) {
            _begun.set_value();
            _gate.wait();
        }
    }

    void waitForFirstRun() { ASSERT_EQ(std::future_status::ready, _begun.get_future().wait_for(longEnough)); }

    void release() {
        if (!std::exchange(_isReleased, true)) {
            _released.set_value();
        }
    }

    /** While it is held, or when nothing is under way. */
    const Lines& runs() const { return _runs; }

private:
    Lines _runs;
    bool _isReleased = false;
    std::promise<void> _begun;
    std::promise<void> _released;
    std::shared_future<void> _gate = _released.get_future().share();
};

class NodeFlood : public testing::Test {
public:
    NodeFlood() { node.applyInitialModel(defaultModel, "default"); }

    void startComponent() {
        node.load();
        node.loader.start(BRY_REASON_NORMAL);
        ASSERT_TRUE(node.services.router.waitUntilIdle(longEnough));
    }

    /** For the controls: an MO, and in place of the component a consumer of whatever happens to it. */
    EventRouter::Handle subscribe(BryOamSpiEventConsumerRecord& record) {
        node.services.router.hold(false);
        const auto handle = node.services.transactions.open(TUL_LOCK_POLICY_SHARED, 60, "test");
        node.services.transactions.create(handle, cliSsh, {{"administrativeState", enumeration(1)}});
        node.services.transactions.commit(handle);
        std::array<BryNameValuePairT*, 1> everything{nullptr};
        const auto consumer = node.services.router.registerConsumer(&record);
        node.services.router.addSubscription(consumer, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1, everything.data());
        return consumer;
    }

    /** One transaction each: locked, unlocked, locked, ... */
    void commitAll() {
        for (std::size_t i = 0; i < commits; ++i) {
            const auto handle = node.services.transactions.open(TUL_LOCK_POLICY_SHARED, 60, "test");
            node.services.transactions.set(handle, cliSsh,
                                           {{"administrativeState", enumeration(i % 2 == 0 ? 0 : 1)}});
            node.services.transactions.commit(handle);
        }
    }

    static Lines everyRunOnceInOrder() {
        Lines lines;
        for (std::size_t i = 0; i < commits; ++i) {
            lines.emplace_back(i % 2 == 0 ? "clissh lock" : "clissh unlock port 2022");
        }
        return lines;
    }

    Lines warnings() const {
        Lines lines;
        for (const Record& record : node.services.journal.last(Journal::mostRecords)) {
            if (record.severity <= Warning) {
                lines.push_back(record.line());
            }
        }
        return lines;
    }

    Node node{{"", TulTest::ComponentLibrary::path(), ""}};
};

std::string joined(const Lines& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

TEST_F(NodeFlood, WaitsInTheRoutersQueueWhileTheAdapterIsHeldAndIsRunInOrder) {
    startComponent();
    const std::size_t warningsBefore = warnings().size();
    HeldAdapter adapter;
    const ScriptedRunner runner([&adapter](const AdapterRun& run) {
        adapter.run(joined(run.words));
        return std::string();
    });
    const ProcessState before = ProcessState::now();
    commitAll();
    adapter.waitForFirstRun();
    EXPECT_EQ("", before.leftBehindIn(ProcessState::now())) << "no thread and no descriptor for what waits";
    EXPECT_EQ(1u, adapter.runs().size());
    EXPECT_EQ(warningsBefore + 1, warnings().size());
    EXPECT_THAT(warnings(), Contains(HasSubstr("many notifications wait for it")));
    adapter.release();
    ASSERT_TRUE(node.services.router.waitUntilIdle(longEnough));
    EXPECT_EQ(everyRunOnceInOrder(), adapter.runs());
    node.loader.unload(BRY_REASON_NORMAL);
    EXPECT_EQ(0u, node.services.journal.accusations());
}

/** What a flood adds to the heap, in bytes. */
struct Growth {
    std::size_t held; /**< while everything but the first notification waits */
    std::size_t left; /**< when all is done */
};

std::size_t growthSince(std::size_t before) {
    const std::size_t now = heapInUse();
    return now > before ? now - before : 0;
}

class NodeFloodHeap : public NodeFlood {
public:
    void SetUp() override {
        if (TulTest::hasSanitizer) {
            GTEST_SKIP() << "a sanitizer's heap is not the C library's, and keeps what is freed";
        }
    }

    Growth flood() {
        Growth growth{};
        const std::size_t before = heapInUse();
        {
            HeldAdapter adapter;
            const ScriptedRunner runner([&adapter](const AdapterRun& run) {
                adapter.run(joined(run.words));
                return std::string();
            });
            commitAll();
            adapter.waitForFirstRun();
            growth.held = growthSince(before);
            adapter.release();
            EXPECT_TRUE(node.services.router.waitUntilIdle(longEnough));
            EXPECT_EQ(everyRunOnceInOrder(), adapter.runs());
        }
        growth.left = growthSince(before);
        return growth;
    }
};

TEST_F(NodeFloodHeap, GrowsByLittleForWhatWaitsAndIsAsBeforeInTheEnd) {
    startComponent();
    flood();  // the journal is full from here on, and so are the caches of the C library
    const Growth growth = flood();
    RecordProperty("bytesEach", static_cast<int>(growth.held / commits));
    RecordProperty("bytesLeft", static_cast<int>(growth.left));
    EXPECT_LT(growth.held, mostEach * commits);
    EXPECT_LT(growth.left, mostLeft);
    node.loader.unload(BRY_REASON_NORMAL);
}

/** The control: a component that has a queue of its own and keeps what it has done. */
TEST_F(NodeFloodHeap, OfAHoardingComponentIsSeenToGrow) {
    static std::vector<std::string> hoard;
    BryOamSpiEventConsumerRecord record{[](auto, auto, auto, void*) -> BryReturnT {
        hoard.emplace_back(mostEach, 'x');
        return BRY_OK;
    }};
    const auto consumer = subscribe(record);
    const std::size_t before = heapInUse();
    commitAll();
    ASSERT_TRUE(node.services.router.waitUntilIdle(longEnough));
    EXPECT_LT(mostEach * commits, growthSince(before));
    node.services.router.unregisterConsumer(consumer, &record);
    std::vector<std::string>().swap(hoard);
}

/** The control: a component with a thread of its own that keeps only the newest state while its adapter is busy. */
class Forgetful {
public:
    explicit Forgetful(HeldAdapter& adapter) : _adapter(adapter) { current = this; }

    static BryReturnT notify(BryOamSpiEventConsumerHandleT /*handle*/, const char* /*eventType*/,
                             BryNameValuePairT** /*filter*/, void* value) {
        const auto& notification = *static_cast<BryOamSpiCmEvent_Notification_1T*>(value);
        const bool locks = notification.events[0]->attributes[0]->values[0].asEnum == 0;
        current->keep(locks ? "clissh lock" : "clissh unlock port 2022");
        return BRY_OK;
    }

    void finish() {
        keep("");
        _worker.join();
    }

private:
    void keep(const std::string& words) {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [&] { return !words.empty() || _newest.empty(); });  // the end waits for what is kept
        _newest = words;
        _isOver = words.empty();
        _changed.notify_all();
    }

    void work() {
        std::unique_lock lock(_mutex);
        for (;;) {
            _changed.wait(lock, [this] { return _isOver || !_newest.empty(); });
            if (_newest.empty()) {
                return;
            }
            const std::string words = std::exchange(_newest, "");
            _changed.notify_all();
            lock.unlock();
            _adapter.run(words);
            lock.lock();
        }
    }

    static inline Forgetful* current = nullptr;

    HeldAdapter& _adapter;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::string _newest;
    bool _isOver = false;
    std::thread _worker{[this] { work(); }};
};

TEST_F(NodeFlood, OfAForgetfulComponentIsSeenToBeLost) {
    HeldAdapter adapter;
    Forgetful forgetful(adapter);
    BryOamSpiEventConsumerRecord record{Forgetful::notify};
    const auto consumer = subscribe(record);
    commitAll();
    adapter.waitForFirstRun();
    EXPECT_TRUE(node.services.router.waitUntilIdle(longEnough)) << "nothing waits in the router";
    adapter.release();
    forgetful.finish();
    node.services.router.unregisterConsumer(consumer, &record);
    EXPECT_NE(everyRunOnceInOrder(), adapter.runs());
}

}  // namespace
}  // namespace TulNode
