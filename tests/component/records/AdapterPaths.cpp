#include <stdexcept>

#include "Path.h"
#include "TulException.h"
#include "VormaSpiVersion.h"

namespace TulTest {

namespace {

constexpr int limit = 30000;
const Tul::TulException no("the adapter says no");
const Tul::TulException unreadable("%s", "bad %s %n\n");
const std::runtime_error standard("standard");

Step enable(const char* subsystem, unsigned int port) {
    return [=](RecordedNode& node) { node.wrapper.enablePorts(subsystem, port, limit); };
}
Step disable(const char* subsystem) {
    return [=](RecordedNode& node) { node.wrapper.disablePorts(subsystem, limit); };
}
void invoke(RecordedNode& node) {
    node.wrapper.invokeVorma(limit);
}
Step setCiphers(const std::map<std::string, std::string>& selected) {
    return [=](RecordedNode& node) { node.wrapper.setCiphers(selected); };
}
Step setDscp(const char* dscp) {
    return [=](RecordedNode& node) { node.wrapper.setDscp(dscp); };
}
Step setTime(unsigned int value) {
    return [=](RecordedNode& node) { node.wrapper.setRenegotiationtime(value); };
}
void ask(RecordedNode& node) {
    node.wrapper.getVormaSpiRevision();
}
void succeed(RecordedNode& node) {
    node.duringRun = nullptr;
}
Step parse(const char* text) {
    return [=](RecordedNode& /*node*/) { Tul::VormaSpiVersion().fromString(text); };
}

Paths portPaths() {
    const Step on = enable("clissh", 2022);
    const Step off = disable("netconfssh");
    return {
        {"enablePorts/Enabled", nothing, on},
        {"enablePorts/LargestPort", nothing, enable("netconfssh", 4294967295U)},
        {"enablePorts/RunFailed", runThrows(unreadable), on},
        {"enablePorts/RunThrewAnotherException", runThrows(standard), on},
        {"enablePorts/RunThrewANumber", runThrows(7), throwing<int>(on)},
        {"disablePorts/Disabled", nothing, disable("clissh")},
        {"disablePorts/UnknownSubsystem", nothing, disable(" ftp ")},
        {"disablePorts/RunFailed", runThrows(unreadable), off},
        {"disablePorts/RunThrewAnotherException", runThrows(standard), off},
        {"disablePorts/RunThrewANumber", runThrows(7), throwing<int>(off)},
    };
}

Paths batchPaths() {
    const Step queued = setDscp("46");
    return {
        {"invokeVorma/NothingQueued", nothing, invoke},
        {"invokeVorma/Sent", queued, invoke},
        {"invokeVorma/RunFailed", after(queued, runThrows(no)), invoke},
        {"invokeVorma/AfterAFailedRun", after(after(queued, runThrows(no)), invoke), invoke},
        {"invokeVorma/RunThrewAnotherException", after(queued, runThrows(standard)), invoke},
        {"invokeVorma/RunThrewANumber", after(queued, runThrows(7)), throwing<int>(invoke)},
    };
}

Paths optionPaths() {
    const Step ciphers =
        setCiphers({{"selectedCiphers", "a,b"}, {"selectedKeyExchanges", "k"}, {"selectedMacs", "m"}});
    return {
        {"setCiphers/AllThree", nothing, ciphers},
        {"setCiphers/OnlyMacs", nothing, setCiphers({{"selectedMacs", "m"}})},
        {"setCiphers/UnknownNames", nothing, setCiphers({{"SelectedCiphers", "a"}, {"", "b"}})},
        {"setCiphers/Nothing", nothing, setCiphers({})},
        {"setCiphers/AdapterTooOld", revision("1.6.9\n"), ciphers},
        {"setCiphers/RevisionUnknown", runThrows(no), ciphers},
        {"setCiphers/QueryThrewAnotherException", runThrows(standard), throwing<std::runtime_error>(ciphers)},
        {"setDscp/Value", revision("1.7.0\n"), setDscp("46")},
        {"setDscp/NoValue", nothing, setDscp("")},
        {"setDscp/AdapterTooOld", revision("1.6.9\n"), setDscp("46")},
        {"setDscp/RevisionUnknown", runThrows(no), setDscp("46")},
        {"setDscp/QueryThrewAnotherException", runThrows(standard), throwing<std::runtime_error>(setDscp("46"))},
        {"setRenegotiationtime/Time", nothing, setTime(3600)},
        {"setRenegotiationtime/None", nothing, setTime(0)},
        {"setRenegotiationtime/LargestTime", nothing, setTime(4294967295U)},
        {"setRenegotiationtime/AdapterTooOld", revision("1.7.0\n"), setTime(3600)},
        {"setRenegotiationtime/RevisionUnknown", runThrows(no), setTime(3600)},
        {"setRenegotiationtime/QueryThrewAnotherException", runThrows(standard),
         throwing<std::runtime_error>(setTime(3600))},
    };
}

Paths revisionPaths() {
    const Step fails = throwing<std::runtime_error>(ask);
    const Step failedOnce = after(runThrows(standard), fails);
    return {
        {"getVormaSpiRevision/Asked", nothing, ask},
        {"getVormaSpiRevision/Known", ask, ask},
        {"getVormaSpiRevision/Empty", revision(""), ask},
        {"getVormaSpiRevision/Unparsable", revision("1.8"), ask},
        {"getVormaSpiRevision/RunFailed", runThrows(no), ask},
        {"getVormaSpiRevision/KnownAfterAFailure", after(after(runThrows(no), ask), succeed), ask},
        {"getVormaSpiRevision/RunThrewAnotherException", runThrows(standard), fails},
        {"getVormaSpiRevision/AskedAgainAfterAnotherException", after(failedOnce, succeed), ask},
        {"VormaSpiVersion.fromString/ThreeNumbers", nothing, parse("1.8.0")},
        {"VormaSpiVersion.fromString/WithMoreBehind", nothing, parse(" 2 . 0 . 0-rc1\n")},
        {"VormaSpiVersion.fromString/TwoNumbers", nothing, parse("1.8\n")},
        {"VormaSpiVersion.fromString/Commas", nothing, parse("1,7,0")},
        {"VormaSpiVersion.fromString/ControlCharacters", nothing, parse("\x1b[31m \"\t\\")},
        {"VormaSpiVersion.fromString/Nothing", nothing, parse("")},
    };
}

}  // namespace

Paths adapterPaths() {
    Paths paths = portPaths();
    for (const Paths& more : {batchPaths(), optionPaths(), revisionPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

}  // namespace TulTest
