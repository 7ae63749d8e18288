#include "Life.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <new>

#include "BryMwSpiTrace.h"
#include "Elsewhere.h"
#include "TulException.h"

namespace TulTest {

namespace {

bool isTelling(const std::string& trace) {
    return trace.starts_with("Unable to get dscp") || trace.starts_with("Could not unregister") ||
           trace.find("instance is ") != std::string::npos;
}

}  // namespace

Life::Life(const Scenario& scenario) : _scenario(scenario), _configuration(configuration(scenario.managed)) {
    framework.logLevel = 8;
    framework.onRecord = [this](const Record& record) { noteRecord(record); };
    framework.givenEmptyNode();
    if (scenario.full) {
        givenFullNode();
    }
    if (scenario.call != Call::INIT) {
        EXPECT_EQ(BRY_OK, init(scenario.managed));
    }
    if (scenario.call == Call::NOTIFY || scenario.call == Call::STOP) {
        EXPECT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
    }
    if (scenario.call == Call::NOTIFY) {
        scenario.build(_notification);
        _record = _notification.record();
        const std::string pattern = std::string(BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1) + "=" + scenario.pattern;
        _consumer = &*std::find_if(framework.consumers.begin(), framework.consumers.end(),
                                   [&pattern](const auto& one) { return one.patterns.front() == pattern; });
    }
    forget();
}

void Life::givenFullNode() {
    framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
    framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
    framework.givenMo(sshDn, {{"selectedCiphers", strings({"aes128-ctr", "aes256-ctr"})},
                              {"selectedKeyExchanges", strings({"curve25519-sha256"})},
                              {"selectedMacs", strings({"hmac-sha2-256"})}});
}

BryReturnT Life::init(bool managed) {
    return component.lcmInit(spi.accessor(), configuration(managed).c_str());
}

BryReturnT Life::perform() {
    switch (_scenario.call) {
        case Call::INIT:
            return component.lcmInit(spi.accessor(), _configuration.c_str());
        case Call::START:
            return component.start(BRY_REASON_NORMAL);
        case Call::NOTIFY:
            return _consumer->record->notify(_consumer->handle, _consumer->eventType.c_str(), _consumer->filter,
                                             _record);
        case Call::STOP:
            return component.stop(BRY_REASON_NORMAL);
        default:
            component.lcmTerminate();
            return BRY_OK;
    }
}

Outcome Life::act() {
    AllocationFaults none(0, Persistence::ONCE);
    return act(none);
}

Outcome Life::act(AllocationFaults& faults) {
    try {
        const AllocationFaults::Armed armed(faults);
        return Outcome::of(perform());
    } catch (const std::bad_alloc&) {
        return Outcome::ofThrown("bad_alloc");
    } catch (const std::exception& exception) {
        return Outcome::ofThrown(exception.what());
    } catch (...) {
        return Outcome::ofThrown("integer");
    }
}

void Life::takeAwayWhatIsLeft() {
    if (!component.isStarted()) {
        framework.consumers.clear();
    }
    if (_scenario.call == Call::TERMINATE) {
        framework.component = nullptr;
    }
}

void Life::startAgain() {
    spi.heal();
    adapter.heal();
    EXPECT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
}

void Life::expectUsable() {
    spi.heal();
    adapter.heal();
    if (_scenario.call == Call::START) {
        startAgain();
    }
    component.stop(BRY_REASON_NORMAL);
    component.lcmTerminate();
    EXPECT_EQ(BRY_OK, init(true));
    startAgain();
    EXPECT_TRUE(component.isStarted());
    EXPECT_EQ(4u, subscribed());
    expectNotificationsWork();
    forget();
    EXPECT_EQ(BRY_OK, component.stop(BRY_REASON_NORMAL));
    EXPECT_EQ(Lines({"clissh lock", "netconfssh lock"}), runs());
    component.lcmTerminate();
    EXPECT_THAT(framework.consumers, testing::IsEmpty());
    EXPECT_EQ(nullptr, framework.component);
    EXPECT_EQ(framework.containersFetched, framework.containersReleased);
}

void Life::deliverElsewhere(const char* pattern, void (*build)(CmNotification&)) {
    CmNotification notification;
    build(notification);
    Elsewhere delivery([&] { EXPECT_EQ(BRY_OK, framework.notify(pattern, notification)); });
    EXPECT_TRUE(delivery.isDone()) << "a lock is held";
}

void Life::deliverElsewhere(const char* pattern, void (*build)(CmNotification&), const char* expectedRun) {
    forget();
    deliverElsewhere(pattern, build);
    EXPECT_THAT(runs(), testing::ElementsAre(testing::EndsWith(expectedRun)));
}

void Life::expectNextNotification() {
    spi.heal();
    adapter.heal();
    deliverElsewhere(_scenario.pattern, _scenario.buildNext, _scenario.nextRun);
}

void Life::expectNotificationsWork() {
    givenFullNode();
    for (const char* name : {"CliSshChanged", "NetconfSshChanged", "CategoryChanged", "SshChanged"}) {
        const Scenario& one = scenario(name);
        const std::string pattern = std::string(BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1) + "=" + one.pattern;
        const auto isWanted = [&pattern](const auto& consumer) { return consumer.patterns == Lines{pattern}; };
        if (std::any_of(framework.consumers.begin(), framework.consumers.end(), isWanted)) {
            // Whatever state the port is in, a notification for each of both states leads to a run at last.
            deliverElsewhere(one.pattern, one.build);
            deliverElsewhere(one.pattern, one.buildNext, one.nextRun);
        }
    }
}

Lines Life::runs() const {
    Lines words;
    for (const std::string& line : journal) {
        if (line.starts_with("run: ")) {
            words.push_back(line.substr(5));
        }
    }
    return words;
}

std::size_t Life::subscribed() const {
    return static_cast<std::size_t>(std::count_if(framework.consumers.begin(), framework.consumers.end(),
                                                  [](const auto& consumer) { return consumer.filter != nullptr; }));
}

void Life::note(const std::string& line) {
    journal.push_back(line);
    if (_printing) {
        std::cerr << line << std::endl;
    }
}

void Life::noteRecord(const Record& record) {
    const bool isGuard = record.function == "getDnValue" || record.function == "getAdministrativeState";
    if (isGuard && record.call == "trace" && record.level != BRY_TRACE_KIND_OTHER) {
        _guarded = record.level == BRY_TRACE_KIND_ENTRY;
    }
    if (record.call == "log") {
        note(std::to_string(record.level) + " " + record.function + ": " + record.text);
    } else if (record.call == "traceV2" && isTelling(record.text)) {
        note("trace: " + record.text);
    }
}

void Life::forget() {
    journal.clear();
    spi.uses.clear();
    adapter.forget();
    framework.records.clear();
    framework.calls.clear();
}

}  // namespace TulTest
