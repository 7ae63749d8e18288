#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "RecordingFramework.h"
#include "ScriptedRunner.h"
#include "SshComponent.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::Pair;

constexpr unsigned int threads = 8;
constexpr unsigned int notifications = 5000;

/** An adapter that is held in its first run, until the test's condition is met; sees runs that overlap. */
class HeldAdapter {
public:
    /** Gets how many deliveries have begun and how many runs are under way. */
    using Condition = bool (*)(unsigned int begun, unsigned int running);

    explicit HeldAdapter(Condition releases) : _releases(releases) {}

    void run(const std::string& words) {
        std::unique_lock lock(_mutex);
        _overlaps += _running++ > 0 ? 1 : 0;
        ++_runs[words];
        _changed.notify_all();
        _changed.wait(lock, [this] { return _released = _released || _releases(_begun, _running); });
        --_running;
    }

    /** A thread is about to deliver its first notification. */
    void deliveryBegins() {
        const std::lock_guard lock(_mutex);
        ++_begun;
        _changed.notify_all();
    }

    unsigned int overlaps() const { return _overlaps; }
    const std::map<std::string, unsigned int>& runs() const { return _runs; }

private:
    const Condition _releases;
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _released = false;
    unsigned int _begun = 0;
    unsigned int _running = 0;
    unsigned int _overlaps = 0;
    std::map<std::string, unsigned int> _runs;
};

/**
 * Hands in all the notifications at once: they wait for eight threads as they would with a router. The threads are
 * past the beginning of their first one before the adapter's first run ends.
 */
void deliverAll(HeldAdapter& adapter, const std::function<void(unsigned int)>& deliver) {
    std::atomic<unsigned int> next = 0;
    std::vector<std::thread> deliverers;
    for (unsigned int i = 0; i < threads; ++i) {
        deliverers.emplace_back([&] {
            adapter.deliveryBegins();
            for (unsigned int number = next++; number < notifications; number = next++) {
                deliver(number);
            }
        });
    }
    for (std::thread& deliverer : deliverers) {
        deliverer.join();
    }
}

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

/** The n-th of the flood: the four consumers take turns, and each notification changes something. */
BryReturnT deliverTo(RecordingFramework& framework, unsigned int number) {
    const int newState = static_cast<int>(number) + 2;  // unlike every other, so that it leads to a run of its own
    CmNotification notification;
    switch (number % 4) {
        case 0:
            notification.changed(cliSshDn).enumeration("administrativeState", newState);
            return framework.notify(cliSshPattern, notification);
        case 1:
            notification.changed(netconfSshDn).enumeration("administrativeState", newState);
            return framework.notify(netconfSshPattern, notification);
        case 2:
            return framework.notify(serviceCategoryPattern, notification.deleted(oamCmDn));
        default:
            return framework.notify(sshPattern, notification.changed(sshDn));
    }
}

TEST(Flood, IsHandledOneByOneWithoutLossWhileTheAdapterIsHeldInItsFirstRun) {
    RecordingFramework framework;
    framework.givenEmptyNode();
    framework.givenMo(sshDn, {{"selectedMacs", strings({"m"})}});
    TulSshdManagement::TulSshdManagementComponent component;
    ASSERT_EQ(BRY_OK, component.lcmInit(framework.accessor(), configuration(true).c_str()));
    ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));

    HeldAdapter adapter([](unsigned int begun, unsigned int) { return begun == threads; });
    std::atomic<unsigned int> refused = 0;
    {
        const ScriptedRunner runner([&adapter](const AdapterRun& run) {
            adapter.run(joined(run.words));
            return std::string();
        });
        deliverAll(adapter, [&](unsigned int number) { refused += deliverTo(framework, number) == BRY_OK ? 0 : 1; });
    }
    EXPECT_EQ(0u, refused);
    EXPECT_EQ(0u, adapter.overlaps());
    const unsigned int each = notifications / 4;
    EXPECT_THAT(adapter.runs(),
                ElementsAre(Pair("clissh unlock port 2022", each), Pair("netconfssh unlock port 2830", each),
                            Pair("ssh --macs m", each), Pair("ssh --removeIpQoS", each)));
    EXPECT_THAT(framework.logs(4), testing::SizeIs(2)) << "those of the start, which found neither port's MO";
    component.stop(BRY_REASON_NORMAL);
}

/** The control: without a lock the second handler comes to the adapter while it is held in the first one's run. */
TEST(Flood, OfHandlersWithoutALockOverlaps) {
    HeldAdapter adapter([](unsigned int, unsigned int running) { return running > 1; });
    deliverAll(adapter, [&adapter](unsigned int) { adapter.run("run"); });
    EXPECT_THAT(adapter.runs(), ElementsAre(Pair("run", notifications)));
    EXPECT_LT(0u, adapter.overlaps());
}

}  // namespace
