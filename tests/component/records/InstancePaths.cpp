#include "Path.h"

namespace TulTest {

namespace {

void find(RecordedNode& node) {
    node.component.getDnValue("ManagedElement,SystemFunctions,SysM,CliSsh");
}
void createCliSsh(RecordedNode& node) {
    node.component.createMo("CliSsh", "cliSshId");
}
void createNetconfSsh(RecordedNode& node) {
    node.component.createMo("NetconfSsh", "netconfSshId");
}
void deleteCliSsh(RecordedNode& node) {
    node.component.deleteMoInstance(cliSshDn);
}
void withCliSsh(RecordedNode& node) {
    node.framework.givenMo(cliSshDn);
}
/** The component has fetched its interfaces, and has done nothing else. */
void connected(RecordedNode& node) {
    initialized(false)(node);
    start(node);
}

Step connectedWith(const char* operation, BryReturnT result) {
    return after(connected, answered(operation, result));
}

}  // namespace

Paths instancePaths() {
    return {
        {"getDnValue/Found", withCliSsh, find},
        {"getDnValue/NotFound", nothing, find},
        {"getDnValue/SearchFailed", after(withCliSsh, answered("findInstances", -9)), find},
        {"getDnValue/SearchThrew", after(withCliSsh, thrownBy("findInstances")), find},
        {"getDnValue/NoInterface", answered("getInterface TulOamSpiManagedObject", -4), find},
        {"createMo/Created", connected, createCliSsh},
        {"createMo/NoSysM", after(connected, withoutMos), createCliSsh},
        {"createMo/NoMemory", connected, withoutMemory(createCliSsh)},
        {"createMo/NoTransaction", connectedWith("newTransaction", -16), createCliSsh},
        {"createMo/Refused", connectedWith("createMo", -5), createNetconfSsh},
        {"createMo/CommitFailed", connectedWith("commit", -7), createCliSsh},
        {"deleteMoInstance/Deleted", connected, deleteCliSsh},
        {"deleteMoInstance/NoTransaction", connectedWith("newTransaction", -16), deleteCliSsh},
        {"deleteMoInstance/Refused", connectedWith("deleteMo", -15), deleteCliSsh},
        {"deleteMoInstance/CommitFailed", connectedWith("commit", -7), deleteCliSsh},
    };
}

}  // namespace TulTest
