// Does one thing with threads under the thread sanitizer, whose report is then looked at from outside.

#include <Poco/Mutex.h>

#include <cstring>
#include <optional>
#include <thread>

#include "AdapterWatch.h"
#include "CmEventConsumer.h"
#include "CmNotification.h"
#include "LightFramework.h"
#include "LoadedComponent.h"
#include "Storm.h"

namespace {

using namespace TulTest;

constexpr auto relaxed = std::memory_order_relaxed;
constexpr unsigned notifications = 20'000;

void waitFor(const std::atomic<bool>& flag) {
    while (!flag.load(relaxed)) {
        std::this_thread::yield();
    }
}

/**
 * A handler has queued its option, and stands still at its log record, while start sends its batch. Both use the
 * queue at the same time as far as order between threads goes, though not by the clock, so that nothing breaks.
 */
void sendDuringStart() {
    std::atomic<bool> isQueued{false};
    std::atomic<bool> hasStarted{false};
    LightFramework framework;
    const AdapterWatch watch;
    framework.onLog = [&](const std::string& text) {
        if (text.starts_with("dscp value")) {
            isQueued.store(true, relaxed);
            waitFor(hasStarted);
        }
    };
    framework.onSubscribed = [&](std::size_t consumer) {
        if (consumer == SSH) {  // the last: what start does next is its batch
            waitFor(isQueued);
        }
    };
    LoadedComponent component(framework);
    std::thread deliverer([&framework] {
        CmNotification change;
        change.changed("ManagedElement=1,Transport=1,DiffServCategory=OamCM");
        while (!framework.deliver(SERVICE_CATEGORY, change.record())) {
            std::this_thread::yield();
        }
    });
    component.start();
    hasStarted.store(true, relaxed);
    deliverer.join();
    component.stop();
}

/** As the component: consumers whose handlers work on the same state. With the lock, or without it. */
class SmallComponent {
public:
    explicit SmallComponent(bool locks) : _locks(locks) {}

    void start() {
        _first.start("", &SmallComponent::onChange, *this);
        _second.start("", &SmallComponent::onChange, *this);
    }

    void stop() {
        _first.stop();
        _second.stop();
    }

private:
    void onChange(const BryOamSpiCmEvent_Notification_1T& notification) {
        std::optional<Poco::ScopedLock<Poco::Mutex>> lock;
        if (_locks) {
            lock.emplace(_mutex);
        }
        _lastEvent = notification.events[0]->eventType;
    }

    const bool _locks;
    Poco::Mutex _mutex;
    CmEventType _lastEvent{};
    Tul::CmEventConsumer<SmallComponent, 1> _first;
    Tul::CmEventConsumer<SmallComponent, 2> _second;
};

void stormOnSmallComponent(bool locks) {
    LightFramework framework;
    SmallComponent component(locks);
    Storm storm(framework, {[&component] { component.start(); }, [&component] { component.stop(); }, 2});
    storm.blow(notifications);
}

}  // namespace

int main(int argc, char** argv) {
    const char* const what = argc > 1 ? argv[1] : "";
    if (std::strcmp(what, "send-during-start") == 0) {
        sendDuringStart();
    } else if (std::strcmp(what, "handlers-with-lock") == 0) {
        stormOnSmallComponent(true);
    } else if (std::strcmp(what, "handlers-without-lock") == 0) {
        stormOnSmallComponent(false);
    } else {
        return 2;
    }
    return 0;
}
