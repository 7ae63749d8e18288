#include "MoAccessor.h"
#include "Path.h"
#include "TulException.h"

namespace TulTest {

namespace {

using Tul::MoAccessor;
using Tul::TulException;

void readState(RecordedNode& /*node*/) {
    MoAccessor(true, 1, 60).getAttr<MoAccessor::Enum>(cliSshDn, "administrativeState");
}
void readNumber(RecordedNode& /*node*/) {
    MoAccessor(true, 1, 60).getAttr<unsigned char>(oamCmDn, "dscp");
}
void readMacs(RecordedNode& /*node*/) {
    MoAccessor(true, 1, 60).getSeqAttr<std::string>(sshDn, "selectedMacs");
}

Step state(const AttributeValues& values) {
    return mo(cliSshDn, "administrativeState", values);
}
Step macs(const AttributeValues& values) {
    return mo(sshDn, "selectedMacs", values);
}

}  // namespace

Paths accessorPaths() {
    const AttributeValues two{TUL_MO_TYPE_ENUMERATION_3, {0, 1}, {}};
    const Step stateFails = throwing<TulException>(readState);
    return {
        {"getAttr/OneValue", state(enumeration(1)), readState},
        {"getAttr/OneNumber", mo(oamCmDn, "dscp", uint8(46)), readNumber},
        {"getAttr/NoValue", mo(cliSshDn, "other", enumeration(1)), stateFails},
        {"getAttr/TwoValues", state(two), stateFails},
        {"getAttr/WrongType", state(uint8(1)), stateFails},
        {"getAttr/NoMo", nothing, stateFails},
        {"getAttr/ReadThrew", after(state(enumeration(1)), thrownBy("getAttribute")), throwing<int>(readState)},
        {"getSeqAttr/Values", macs(strings({"a", "b"})), readMacs},
        {"getSeqAttr/NoValue", mo(sshDn, "other", strings({"a"})), readMacs},
        {"getSeqAttr/NoMo", nothing, readMacs},
        {"getSeqAttr/WrongType", macs(uint8(1)), throwing<TulException>(readMacs)},
        {"getSeqAttr/ReadThrew", after(macs(strings({"a"})), thrownBy("getAttribute")), throwing<int>(readMacs)},
    };
}

}  // namespace TulTest
