#include "ComponentModel.h"

#include <optional>
#include <utility>

namespace Sequences {

namespace {

constexpr int created = 1;
constexpr int deleted = 2;
constexpr int changed = 3;

const std::string component = "TulSshdManagementComponent";
const std::string sysM = "ManagedElement,SystemFunctions,SysM";
const std::string ssh = "ManagedElement,SystemFunctions,SecM,Ssh";

std::string thrown(const Stage::Failure& failure) {
    switch (failure.kind) {
        case Ending::INTEGER:
            return "threw 7";
        case Ending::STANDARD_EXCEPTION:
            return "threw std::exception " + failure.text;
        default:
            return "threw TulException " + failure.text;
    }
}

/** The last state that the events bring. */
std::optional<int> stateIn(const std::vector<Event>& events, bool firstCounts) {
    std::optional<int> state;
    for (const Event& event : events) {
        for (const EventAttribute& attribute : event.attributes) {
            const bool counts = event.type == changed && event.hasAttributes &&
                                attribute.name == "administrativeState" && attribute.type == 12 &&
                                attribute.count > 0 && attribute.hasValues;
            if (counts && (!state || !firstCounts)) {
                state = static_cast<std::int32_t>(attribute.value);
            }
        }
    }
    return state;
}

}  // namespace

Outcome ComponentModel::perform(const Command& command) {
    std::string result;
    try {
        result = std::visit([this](const auto& what) { return carryOut(what); }, command.what);
    } catch (const Stage::Failure& failure) {
        result = thrown(failure);
    } catch (const Stage::Abort&) {
        result = "abort";
    }
    return {std::exchange(_stage.journal, {}), result};
}

template <class ChangeT>
std::string ComponentModel::carryOut(const ChangeT& change) {
    _stage.surroundings.change(change);
    return "done";
}

std::string ComponentModel::carryOut(const Init& command) {
    return std::to_string(init(command));
}

std::string ComponentModel::carryOut(const Start&) {
    return _hasRecord ? std::to_string(start()) : "nobody is there";
}

std::string ComponentModel::carryOut(const Stop&) {
    return _hasRecord ? std::to_string(stop()) : "nobody is there";
}

std::string ComponentModel::carryOut(const Terminate&) {
    _initialized = false;
    _started = _started && !_stage.isBent(Bend::TERMINATE_CLEARS_STARTED);
    if (_hasPortal) {
        _stage.say("unregisterComponent " + component);
        _hasPortal = false;
    }
    return "done";
}

BryReturnT ComponentModel::init(const Init& init) {
    _stage.say("getPortal 3");
    _stage.say("getPortal 1");
    _hasPortal = init.hasPortal3;
    if (!_hasPortal) {
        return -1;
    }
    if (const BryReturnT refused = _stage.call("registerComponent", component)) {
        return refused;
    }
    _hasRecord = true;
    const BryReturnT result = initialize(init.document);
    if (result != 0 && _stage.isBent(Bend::FAILED_INIT_IS_UNREGISTERED)) {
        _stage.say("unregisterComponent " + component);
    }
    return result;
}

BryReturnT ComponentModel::initialize(const Document& document) {
    if (_initialized) {
        _stage.error("initialize", "Component already initialized!");
        return -1;
    }
    if (document.form == Form::NULL_POINTER) {
        _stage.warning("initialize", "No configuration provided for " + component);
        return -8;
    }
    _initialized = _configuration.read(document);
    return _initialized ? 0 : -1;
}

BryReturnT ComponentModel::start() {
    const std::string missing = "Failed to getInterface (";
    if (_started) {
        _stage.warning("start", "TulSshdManager already running");
        return 0;
    }
    if (!_initialized) {
        _stage.error("start", "Component not initialized!");
        return -1;
    }
    if (!_stage.findsManagedObjects()) {
        _stage.error("start", missing + "TulOamSpiManagedObject:3) from the portal");
        return -1;
    }
    if (!_stage.findsInterface("TulOamSpiTransactionService", "TulOamSpiTransactionMaster", "1")) {
        _stage.error("start", missing + "TulOamSpiTransactionMaster:1) from the portal");
        return -1;
    }
    return _configuration.managed ? startManaged() : startUnmanaged();
}

BryReturnT ComponentModel::startManaged() {
    for (Port* port : {&_cli, &_netconf}) {
        if (const BryReturnT failed = adopt(*port)) {
            return failed;
        }
        if (port->state == 1) {
            _adapter.enablePorts(port->subsystem, port->number);
        } else {
            _adapter.disablePorts(port->subsystem);
        }
    }
    _adapter.setDscp(_node.dscp());
    _adapter.setRenegotiationTime(_configuration.renegotiationTime);
    if (const std::string dn = _node.firstDn(ssh); !dn.empty()) {
        _adapter.setCiphers(_node.ciphers(dn));
    }
    _consumers.start();
    _started = true;
    const bool applied = _adapter.runBatch();
    _started = applied || !_stage.isBent(Bend::FAILED_BATCH_IS_NOT_STARTED);
    return 0;
}

BryReturnT ComponentModel::adopt(Port& port) {
    const std::string dn = _node.firstDn(sysM + "," + port.className);
    if (!dn.empty()) {
        port.state = _node.administrativeState(dn).value_or(port.state);
        return 0;
    }
    const BryReturnT failed = _node.createMo(port.className, port.keyName);
    if (failed == 0) {
        port.state = 1;
    }
    return failed;
}

/** The component does not count as started. */
BryReturnT ComponentModel::startUnmanaged() {
    for (const Port* port : {&_cli, &_netconf}) {
        if (const std::string dn = _node.firstDn(sysM + "," + port->className); !dn.empty()) {
            _node.deleteMo(dn);
        }
    }
    closePorts();
    return 0;
}

void ComponentModel::closePorts() {
    _adapter.disablePorts(_cli.subsystem);
    _adapter.disablePorts(_netconf.subsystem);
}

BryReturnT ComponentModel::stop() {
    if (!_started) {
        _stage.warning("stop", "TulSshdManager is already stopped");
        return 0;
    }
    if (_configuration.managed) {
        _consumers.stop();
        closePorts();
    }
    _started = false;
    if (_stage.isBent(Bend::STOP_FORGETS_THE_STATES)) {
        _cli.state = _netconf.state = 0;
    }
    return 0;
}

std::string ComponentModel::carryOut(const Notify& notification) {
    if (!_consumers.isKnown(notification.consumer)) {
        return "nobody is there";
    }
    try {
        handle(notification);
    } catch (const Stage::Failure& failure) {
        _stage.warning("notifyCallback", failure.kind == Ending::INTEGER
                                             ? "Unknown exception thrown from event consumer"
                                             : "Exception thrown from event consumer :" + failure.text);
    }
    return "0";
}

void ComponentModel::handle(const Notify& notification) {
    const std::vector<Event> events = notification.hasEvents ? notification.events : std::vector<Event>{};
    switch (notification.consumer) {
        case 0:
            return onPort(_cli, events);
        case 1:
            return onPort(_netconf, events);
        case 2:
            for (const Event& event : events) {
                onServiceCategory(event);
            }
            break;
        default:
            onSsh(events);
    }
    _adapter.runBatch();
}

/** Any state but 0 opens the port here; only 1 does so when the MO is read. */
void ComponentModel::onPort(Port& port, const std::vector<Event>& events) {
    std::optional<int> state = stateIn(events, _stage.isBent(Bend::FIRST_STATE_IN_EVENT_COUNTS));
    if (state && _stage.isBent(Bend::STATE_IN_EVENT_IS_MAPPED)) {
        state = *state == 1 ? 1 : 0;
    }
    if (!state || (*state == port.state && !_stage.isBent(Bend::SAME_STATE_IS_APPLIED_AGAIN))) {
        return;
    }
    port.state = *state;
    if (*state == 0) {
        _adapter.disablePorts(port.subsystem);
    } else {
        _adapter.enablePorts(port.subsystem, port.number);
    }
}

void ComponentModel::onServiceCategory(const Event& event) {
    const std::string function = "onServiceCategoryMoChangeNotification";
    const std::string received = "CM Event type, " + std::to_string(event.type) + " received with ";
    if (event.type == deleted) {
        _adapter.setDscp("");
        return _stage.information(function, "As ServiceCategory mo was deleted, dscp for sshd set to default");
    }
    if (event.type != created && event.type != changed) {
        return;
    }
    if (!event.dn) {
        return _stage.error(function, received + "NULL dn value");
    }
    // The expression has to cover the whole DN, and its dot stands for anything but a new line.
    const bool isRight = event.dn->ends_with("OamCM") && event.dn->find('\n') == std::string::npos;
    const bool isFound = event.dn->find("OamCM") != std::string::npos;
    const bool isTaken = isFound && _stage.isBent(Bend::OAMCM_ANYWHERE_IN_THE_DN);
    if (!isRight && !isTaken) {
        return _stage.error(function, received + "incorrect dn value - " + *event.dn);
    }
    const std::string dscp = _node.dscp();
    _adapter.setDscp(dscp);
    _stage.information(function, "dscp value for SSHD set to : " + dscp + ".");
}

void ComponentModel::onSsh(const std::vector<Event>& events) {
    std::optional<std::string> dn;
    for (const Event& event : events) {
        if (event.type == deleted) {
            _stage.error("onSshMoCipherChangeNotification",
                         "Unexpected delete event received on system created on Ssh MO");
        } else if (event.type == created || event.type == changed) {
            dn = dn && _stage.isBent(Bend::FIRST_SSH_DN_COUNTS) ? dn : event.dn;
        }
    }
    if (dn) {
        _adapter.setCiphers(_node.ciphers(*dn));
    }
}

}  // namespace Sequences
