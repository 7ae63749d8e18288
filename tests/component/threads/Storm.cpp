#include "Storm.h"

#include <deque>
#include <thread>
#include <vector>

#include "AdapterWatch.h"
#include "CmNotification.h"

namespace TulTest {

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

constexpr const char* sysM = "ManagedElement=1,SystemFunctions=1,SysM=1";
constexpr const char* oamCm = "ManagedElement=1,Transport=1,DiffServCategory=OamCM";
constexpr const char* ssh = "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1";

/** Two notifications for each consumer, the thread's own: a lock and an unlock, a change and a deletion. */
class Notifications {
public:
    Notifications() {
        addStates("CliSsh");
        addStates("NetconfSsh");
        add().changed(oamCm);
        add().deleted(oamCm);
        add().changed(ssh);
        add().changed(ssh).changed(ssh);
        for (CmNotification& notification : _notifications) {
            _records.push_back(notification.record());
        }
    }

    BryOamSpiCmEvent_Notification_1T* record(std::size_t consumer, unsigned number) const {
        return _records.at(2 * consumer + number % 2);
    }

private:
    CmNotification& add() { return _notifications.emplace_back(); }

    void addStates(const std::string& className) {
        const std::string dn = std::string(sysM) + "," + className + "=1";
        add().changed(dn.c_str()).enumeration("administrativeState", 0);
        add().changed(dn.c_str()).enumeration("administrativeState", 1);
    }

    std::deque<CmNotification> _notifications;
    std::vector<BryOamSpiCmEvent_Notification_1T*> _records;
};

}  // namespace

Storm::Storm(LightFramework& framework, StormTarget target) : _framework(framework), _target(std::move(target)) {
    _framework.onSubscribed = [this](std::size_t consumer) {
        if (consumer == NETCONF_SSH) {
            waitForDeliveries(deliveriesInAStart);
        }
    };
}

Storm::~Storm() {
    _framework.onSubscribed = nullptr;
}

void Storm::blow(unsigned notifications) {
    _notifications = notifications;
    std::vector<std::thread> deliverers;
    for (unsigned i = 0; i < threads; ++i) {
        deliverers.emplace_back([this, notifications] { deliverAll(notifications / threads); });
    }
    startAndStop();
    for (std::thread& deliverer : deliverers) {
        deliverer.join();
    }
}

void Storm::deliverAll(unsigned share) {
    AdapterWatch::thisThreadDelivers();
    const Notifications notifications;
    constexpr unsigned deliveriesOfOneState = 8;  // so that a state meets itself as well as the other one
    unsigned tries = 0;
    for (unsigned done = 0; done < share; ++tries) {
        const std::size_t consumer = tries % _target.consumers;
        if (_framework.deliver(consumer, notifications.record(consumer, tries / deliveriesOfOneState))) {
            ++done;
            count(consumer);
        } else {
            std::this_thread::yield();
        }
    }
}

void Storm::count(std::size_t consumer) {
    _deliveredTo.at(consumer).fetch_add(1, relaxed);
    _duringStart.fetch_add(_starting.load(relaxed) ? 1 : 0, relaxed);
    _delivered.fetch_add(1, relaxed);
}

void Storm::startAndStop() {
    while (delivered() < _notifications) {
        _framework.hold(true);
        _starting.store(true, relaxed);
        _target.start();
        _starting.store(false, relaxed);
        _framework.hold(false);
        waitForDeliveries(deliveriesInACycle);
        _target.stop();
        ++cycles;
    }
}

void Storm::waitForDeliveries(unsigned number) const {
    const unsigned enough = delivered() + number;
    while (delivered() < enough && delivered() < _notifications) {
        std::this_thread::yield();
    }
}

}  // namespace TulTest
