#include <stdexcept>

#include "Path.h"
#include "TulException.h"

namespace TulTest {

namespace {

using Component = TulSshdManagement::TulSshdManagementComponent;
using Handler = void (Component::*)(const BryOamSpiCmEvent_Notification_1T&);
using Build = std::function<void(CmNotification&)>;

const auto unknownEvent = static_cast<CmEventType>(9);
const Tul::TulException no("the adapter says no");
const Step runFails = runThrows(no);
const Step batchThrows = runThrows(7, "ssh");
const Step queryThrows = runThrows(std::runtime_error("standard"), "spi-revision");
const Step old = revision("1.6.9\n");

Step handle(Handler handler, const Build& build) {
    return [=](RecordedNode& node) {
        CmNotification notification;
        build(notification);
        (node.component.*handler)(*notification.record());
    };
}

// The administrative states

/** administrativeState takes these values, one event each. */
Build states(const std::vector<int>& values) {
    return [=](CmNotification& notification) {
        for (const int value : values) {
            notification.changed("x").enumeration("administrativeState", value);
        }
    };
}

void notCounting(CmNotification& notification) {
    notification.created("x").enumeration("administrativeState", 1);
    notification.deleted("x").enumeration("administrativeState", 1);
    notification.event("x", unknownEvent).enumeration("administrativeState", 1);
    notification.changed("x").enumeration("AdministrativeState", 1);
    notification.changed("x").attribute("administrativeState", TUL_MO_TYPE_INT32_3, 1, {1});
    notification.changed("x").attribute("administrativeState", TUL_MO_TYPE_ENUMERATION_3, 0, {1});
}

Paths statePaths(const std::string& operation, Handler handler) {
    const Step unlock = handle(handler, states({1}));
    const Step lock = handle(handler, states({0}));
    const Step unlocked = after(initialized(), unlock);
    return {
        {operation + "/NoEvents", initialized(), handle(handler, states({}))},
        {operation + "/Unlocked", initialized(), unlock},
        {operation + "/Locked", unlocked, lock},
        {operation + "/Unchanged", unlocked, unlock},
        {operation + "/OtherNumber", initialized(), handle(handler, states({7}))},
        {operation + "/ThereAndBack", unlocked, handle(handler, states({0, 1}))},
        {operation + "/NotCounting", initialized(), handle(handler, notCounting)},
        {operation + "/PortNotOpened", after(initialized(), runFails), unlock},
        {operation + "/PortNotClosed", after(unlocked, runFails), lock},
        {operation + "/RunThrewANumber", after(initialized(), runThrows(7)), throwing<int>(unlock)},
    };
}

// The service category

Step onCategory(const Build& build) {
    return handle(&Component::onServiceCategoryMoChangeNotification, build);
}

void oneCategory(CmNotification& notification) {
    notification.changed(oamCmDn);
}
void noCategory(CmNotification& notification) {
    notification.deleted("x");
}
void wrongDns(CmNotification& notification) {
    notification.changed("ManagedElement=1,Transport=1,DiffServCategory=OamCMx").created("").changed(oamCmDn);
}

Paths categoryPaths() {
    const std::string operation = "onServiceCategoryMoChangeNotification";
    const Step value = mo(oamCmDn, "dscp", uint8(46));
    return {
        {operation + "/NoEvents", nothing, onCategory([](auto&) {})},
        {operation + "/Changed", value, onCategory(oneCategory)},
        {operation + "/Created", mo(oamCmDn, "dscp", uint8(0)), onCategory([](auto& n) { n.created(oamCmDn); })},
        {operation + "/ChangedTwice", value, onCategory([](auto& n) { n.changed(oamCmDn).changed(oamCmDn); })},
        {operation + "/Unreadable", nothing, onCategory(oneCategory)},
        {operation + "/Deleted", value, onCategory(noCategory)},
        {operation + "/UnknownEvent", value, onCategory([](auto& n) { n.event(oamCmDn, unknownEvent); })},
        {operation + "/NullDn", value, onCategory([](auto& n) { n.created(nullptr).changed(nullptr); })},
        {operation + "/WrongDn", value, onCategory(wrongDns)},
        {operation + "/AdapterTooOld", after(value, old), onCategory(oneCategory)},
        {operation + "/RunFailed", runThrows(no, "ssh"), onCategory(noCategory)},
        {operation + "/RunThrewANumber", batchThrows, throwing<int>(onCategory(noCategory))},
        {operation + "/ReadThrew", thrownBy("getAttribute"), throwing<int>(onCategory(oneCategory))},
        {operation + "/QueryThrewAnotherException", queryThrows,
         throwing<std::runtime_error>(onCategory(noCategory))},
    };
}

// The algorithms

Step onSsh(const Build& build) {
    return handle(&Component::onSshMoCipherChangeNotification, build);
}

void oneSsh(CmNotification& notification) {
    notification.changed(sshDn);
}

Paths sshPaths() {
    const std::string operation = "onSshMoCipherChangeNotification";
    const Step list = mo(sshDn, "selectedCiphers", strings({"a", "b"}));
    const Step noInterface = answered("getInterface TulOamSpiManagedObject", -4);
    return {
        {operation + "/NoEvents", list, onSsh([](auto&) {})},
        {operation + "/Changed", list, onSsh(oneSsh)},
        {operation + "/Created", list, onSsh([](auto& n) { n.created(sshDn); })},
        {operation + "/ChangedTwice", list, onSsh([](auto& n) { n.changed("x").changed(sshDn); })},
        {operation + "/NoLists", nothing, onSsh(oneSsh)},
        {operation + "/UnreadableList", mo(sshDn, "selectedCiphers", uint8(1)), onSsh(oneSsh)},
        {operation + "/Deleted", list, onSsh([](auto& n) { n.deleted(sshDn); })},
        {operation + "/DeletedAndCreated", list, onSsh([](auto& n) { n.deleted(sshDn).created(sshDn); })},
        {operation + "/UnknownEvent", list, onSsh([](auto& n) { n.event(sshDn, unknownEvent); })},
        {operation + "/NullDn", list, throwing<std::logic_error>(onSsh([](auto& n) { n.created(nullptr); }))},
        {operation + "/AdapterTooOld", after(list, old), onSsh(oneSsh)},
        {operation + "/RunFailed", after(list, runThrows(no, "ssh")), onSsh(oneSsh)},
        {operation + "/RunThrewANumber", after(list, batchThrows), throwing<int>(onSsh(oneSsh))},
        {operation + "/QueryThrewAnotherException", after(list, queryThrows),
         throwing<std::runtime_error>(onSsh(oneSsh))},
        {operation + "/NoInterface", noInterface, throwing<Tul::TulException>(onSsh(oneSsh))},
    };
}

}  // namespace

Paths handlerPaths() {
    Paths paths = statePaths("onCliSshMoChangeNotification", &Component::onCliSshMoChangeNotification);
    const Paths netconf =
        statePaths("onNetconfSshMoChangeNotification", &Component::onNetconfSshMoChangeNotification);
    for (const Paths& more : {netconf, categoryPaths(), sshPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

}  // namespace TulTest
