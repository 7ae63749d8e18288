#include "Path.h"
#include "TulException.h"

namespace TulTest {

namespace {

const Step noInterface = answered("getInterface TulOamSpiManagedObject", -4);

void readState(RecordedNode& node) {
    std::string dn = cliSshDn;
    auto state = TulSshdManagement::BasicAdmState::LOCKED;
    node.component.getAdministrativeState(dn, state);
}
void readDscp(RecordedNode& node) {
    node.component.getDscp();
}
void readLists(RecordedNode& node) {
    node.component.fetchCipherConfiguration(sshDn);
}

Step state(const AttributeValues& values) {
    return mo(cliSshDn, "administrativeState", values);
}
Step dscp(const AttributeValues& values) {
    return mo(oamCmDn, "dscp", values);
}
Step lists(const std::map<std::string, AttributeValues>& attributes) {
    return [=](RecordedNode& node) { node.framework.givenMo(sshDn, attributes); };
}

AttributeValues two(const AttributeValues& one) {
    return {one.type, {one.numbers.front(), one.numbers.front()}, {}};
}

const Step allLists = lists({{"selectedCiphers", strings({"aes128-ctr", "aes256-ctr"})},
                             {"selectedKeyExchanges", strings({"curve25519-sha256"})},
                             {"selectedMacs", strings({"hmac-sha2-256", "hmac-sha2-512"})}});
const Step onlyMacs = lists({{"selectedMacs", strings({"hmac-sha2-256"})}});
const Step numbersInTheMiddle = lists(
    {{"selectedCiphers", strings({"a", "b"})}, {"selectedKeyExchanges", uint8(1)}, {"selectedMacs", strings({"c"})}});

Paths statePaths() {
    return {
        {"getAdministrativeState/Unlocked", state(enumeration(1)), readState},
        {"getAdministrativeState/Locked", state(enumeration(0)), readState},
        {"getAdministrativeState/OtherNumber", state(enumeration(2)), readState},
        {"getAdministrativeState/NoValue", mo(cliSshDn, "other", enumeration(1)), readState},
        {"getAdministrativeState/TwoValues", state(two(enumeration(1))), readState},
        {"getAdministrativeState/WrongType", state(uint8(1)), readState},
        {"getAdministrativeState/NoMo", nothing, readState},
        {"getAdministrativeState/NoInterface", after(state(enumeration(1)), noInterface), readState},
        {"getAdministrativeState/ReadThrew", after(state(enumeration(1)), thrownBy("getAttribute")), readState},
    };
}

Paths dscpPaths() {
    return {
        {"getDscp/Read", dscp(uint8(46)), readDscp},
        {"getDscp/Zero", dscp(uint8(0)), readDscp},
        {"getDscp/NoTransport", withoutMos, readDscp},
        {"getDscp/NoCategory", nothing, readDscp},
        {"getDscp/NoValue", mo(oamCmDn, "other", uint8(46)), readDscp},
        {"getDscp/TwoValues", dscp(two(uint8(46))), readDscp},
        {"getDscp/WrongType", dscp(enumeration(46)), readDscp},
        {"getDscp/NoInterface", noInterface, readDscp},
        {"getDscp/SearchThrew", thrownBy("findInstances"), throwing<int>(readDscp)},
        {"getDscp/ReadThrew", thrownBy("getAttribute"), throwing<int>(readDscp)},
    };
}

Paths listPaths() {
    return {
        {"fetchCipherConfiguration/AllThree", allLists, readLists},
        {"fetchCipherConfiguration/OnlyMacs", onlyMacs, readLists},
        {"fetchCipherConfiguration/EmptyStrings", lists({{"selectedMacs", strings({"", ""})}}), readLists},
        {"fetchCipherConfiguration/NoMo", nothing, readLists},
        {"fetchCipherConfiguration/WrongType", numbersInTheMiddle, readLists},
        {"fetchCipherConfiguration/ReadsThrew", after(allLists, thrownBy("getAttribute")), readLists},
        {"fetchCipherConfiguration/NoInterface", noInterface, throwing<Tul::TulException>(readLists)},
    };
}

}  // namespace

Paths settingPaths() {
    Paths paths = statePaths();
    for (const Paths& more : {dscpPaths(), listPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

}  // namespace TulTest
