#include <stdexcept>

#include "Path.h"
#include "Portal.h"

namespace TulTest {

namespace {

const Step subscriptionKept = answered("removeSubscription", -6);
const Step registrationKept = answered("unregisterConsumer", -6);
const Step routerRefuses = after(subscriptionKept, registrationKept);
const Step notRegistered = answered("registerConsumer", -16);
const Step notSubscribed = answered("addSubscription", -16);

/** The router refuses one call of an operation, and every later one. */
Step refusedFrom(unsigned int place, const std::string& operation) {
    return [=](RecordedNode& node) {
        node.framework.during[operation] = [=, &framework = node.framework] {
            if (framework.callsOf(operation).size() == place) {
                framework.results[operation] = -16;
            }
        };
    };
}

/** The portal forgets the event router, and finds it as a null pointer from now on. */
void withANullRouter(RecordedNode& node) {
    Tul::Portal::instance().reset(false);
    nullInterface("TulOamSpiEventRouter")(node);
}

void findRouter(RecordedNode& /*node*/) {
    Tul::Portal::instance().getEventRouter();
}

void startStation(RecordedNode& node) {
    node.station->start({{"a", "1"}, {"b", "2"}, {"c", "3"}}, &Station::onWeather, *node.station, "Weather");
}
void startStationWithoutFilter(RecordedNode& node) {
    node.station->start({}, &Station::onWeather, *node.station, "Weather");
}
void stopStation(RecordedNode& node) {
    node.station->stop();
}
void notifyStation(RecordedNode& /*node*/) {
    EXPECT_EQ(BRY_OK, Station::notifyCallback(1, "Weather", nullptr, nullptr));
}
void withoutStation(RecordedNode& node) {
    node.station.reset();
}
void stationThrowsAnException(RecordedNode& node) {
    node.station->during = [] { throw std::runtime_error("100 %s of rain\n"); };
}
void stationThrowsANumber(RecordedNode& node) {
    node.station->during = [] { throw 7; };
}

void listen(RecordedNode& node) {
    node.cmConsumer.start("^a$", &Listener::onChange, node.listener);
}
Step listenTo(const std::list<std::string>& patterns) {
    return [=](RecordedNode& node) { node.cmConsumer.start(patterns, &Listener::onChange, node.listener); };
}
void stopListening(RecordedNode& node) {
    node.cmConsumer.stop();
}
void listenerThrows(RecordedNode& node) {
    node.listener.during = [] { throw std::runtime_error("no more"); };
}
void notifyDirectly(RecordedNode& node) {
    CmNotification notification;
    node.cmConsumer.notifyCb("BryOamSpiCmEvent_Notification_1", notification.record());
}
void notifyThroughTheRouter(RecordedNode& node) {
    CmNotification notification;
    EXPECT_EQ(BRY_OK, node.framework.notify("^a$", notification));
}

Paths stationPaths() {
    return {
        {"EventConsumer.start/Subscribed", nothing, startStation},
        {"EventConsumer.start/WithoutFilter", nothing, startStationWithoutFilter},
        {"EventConsumer.stop/NotStarted", nothing, stopStation},
        {"EventConsumer.stop/Unsubscribed", startStation, stopStation},
        {"EventConsumer.stop/SubscriptionKept", after(startStation, subscriptionKept), stopStation},
        {"EventConsumer.stop/RegistrationKept", after(startStation, registrationKept), stopStation},
        {"EventConsumer.stop/BothKept", after(startStation, routerRefuses), stopStation},
        {"EventConsumer.stop/NoRouter", after(startStation, withoutRouter), stopStation},
        {"EventConsumer.stop/NullRouter", after(startStation, withANullRouter), stopStation},
        {"EventConsumer.notifyCallback/Handled", startStation, notifyStation},
        {"EventConsumer.notifyCallback/ThrewAnException", after(startStation, stationThrowsAnException),
         notifyStation},
        {"EventConsumer.notifyCallback/ThrewANumber", after(startStation, stationThrowsANumber), notifyStation},
    };
}

Paths listenerPaths() {
    const Step throwingListener = after(listen, listenerThrows);
    return {
        {"CmEventConsumer.start/OnePattern", nothing, listen},
        {"CmEventConsumer.start/TwoPatterns", nothing, listenTo({"^a$", "^b$"})},
        {"CmEventConsumer.start/NoPattern", nothing, listenTo({})},
        {"CmEventConsumer.stop/NotStarted", nothing, stopListening},
        {"CmEventConsumer.stop/Stopped", listen, stopListening},
        {"CmEventConsumer.stop/RouterRefused", after(listen, routerRefuses), stopListening},
        {"CmEventConsumer.notifyCb/Handled", listen, notifyDirectly},
        {"CmEventConsumer.notifyCb/Threw", throwingListener, throwing<std::runtime_error>(notifyDirectly)},
        {"CmEventConsumer.notifyCb/ThrewBelowTheCallback", throwingListener, notifyThroughTheRouter},
    };
}

/** The component's start, refused at each of its four consumers. */
Paths refusedStartPaths() {
    Paths paths{
        {"start/ConsumerNotRegistered", after(initialized(), notRegistered), start},
        {"start/ConsumerNotSubscribed", after(initialized(), notSubscribed), start},
    };
    unsigned int place = 2;
    for (const std::string which : {"Second", "Third", "Fourth"}) {
        const Step unregistered = after(initialized(), refusedFrom(place, "registerConsumer"));
        const Step unsubscribed = after(initialized(), refusedFrom(place, "addSubscription"));
        paths.push_back({"start/" + which + "ConsumerNotRegistered", unregistered, start});
        paths.push_back({"start/" + which + "ConsumerNotSubscribed", unsubscribed, start});
        ++place;
    }
    return paths;
}

}  // namespace

Paths consumerPaths() {
    Paths paths{
        {"getEventRouter/LookedUp", nothing, findRouter},
        {"getEventRouter/KnownAlready", findRouter, findRouter},
        {"getEventRouter/NotFound", withoutRouter, findRouter},
    };
    for (const Paths& more : {stationPaths(), listenerPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

Paths endingPaths() {
    Paths paths{
        {"EventConsumer.start/StartedAlready", startStation, startStation},
        {"EventConsumer.start/NotRegistered", notRegistered, startStation},
        {"EventConsumer.start/NotSubscribed", notSubscribed, startStation},
        {"EventConsumer.start/NoMemory", nothing, withoutMemory(startStation)},
        {"EventConsumer.start/NoRouter", withoutRouter, startStation, {SIGSEGV, ""}},
        {"EventConsumer.start/NullRouter", withANullRouter, startStation, {SIGSEGV, ""}},
        {"EventConsumer.notifyCallback/NoObject", withoutStation, notifyStation, {SIGABRT, "`_instance' failed"}},
        {"CmEventConsumer.start/StartedAlready", listen, listen},
        {"CmEventConsumer.start/NotRegistered", notRegistered, listen},
        {"CmEventConsumer.start/NotSubscribed", notSubscribed, listen},
    };
    const Paths more = refusedStartPaths();
    paths.insert(paths.end(), more.begin(), more.end());
    return paths;
}

}  // namespace TulTest
