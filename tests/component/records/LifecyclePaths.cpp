#include <stdexcept>

#include "Path.h"
#include "TulException.h"

namespace TulTest {

namespace {

const Tul::TulException no("the adapter says no");

void stop(RecordedNode& node) {
    node.component.stop(BRY_REASON_RELOAD);
}
void startThroughTheRecord(RecordedNode& node) {
    node.library.init(nullptr);
    node.library.start(BRY_REASON_NORMAL);
}
void stopThroughTheRecord(RecordedNode& node) {
    node.library.stop(BRY_REASON_NORMAL);
}
void terminate(RecordedNode& node) {
    node.component.terminate();
}
Step full(int cliState, int netconfState) {
    return [=](RecordedNode& node) {
        initialized()(node);
        withSettings(node);
        mo(cliSshDn, "administrativeState", enumeration(cliState))(node);
        mo(netconfSshDn, "administrativeState", enumeration(netconfState))(node);
    };
}

Step fullWith(const Step& more) {
    return after(full(1, 0), more);
}
Step emptyWith(const Step& more) {
    return after(initialized(), more);
}
Step offWith(const Step& more) {
    return after(initialized(false), more);
}

void onlyCliSsh(RecordedNode& node) {
    mo(cliSshDn, "administrativeState", enumeration(1))(node);
}
void bothSsh(RecordedNode& node) {
    node.framework.givenMo(cliSshDn);
    node.framework.givenMo(netconfSshDn);
}

Step running(const Step& more) {
    return after(after(initialized(), start), more);
}

Paths refusedPaths() {
    return {
        {"start/StartedAlready", after(initialized(), start), start},
        {"start/NotInitialized", nothing, start},
        {"start/TerminatedWhileRunning", running(terminate), start},
        {"start/NoManagedObjectInterface", emptyWith(answered("getInterface TulOamSpiManagedObject", -4)), start},
        {"start/NoManagedObjectInterfacePointer", emptyWith(nullInterface("TulOamSpiManagedObject")), start},
        {"start/NoTransactionInterface", emptyWith(answered("getInterface TulOamSpiTransactionMaster", -4)), start},
        {"start/NoTransactionInterfacePointer", emptyWith(nullInterface("TulOamSpiTransactionMaster")), start},
        {"start/NoSysM", emptyWith(withoutMos), start},
        {"start/CliSshNotCreated", emptyWith(answered("createMo", -5)), start},
        {"start/NetconfSshNotCreated", emptyWith(after(onlyCliSsh, answered("commit", -7))), start},
    };
}

Paths managedPaths() {
    const Step queryThrows = runThrows(std::runtime_error("standard"), "spi-revision");
    return {
        {"start/EmptyNode", initialized(), start},
        {"start/FullNode", full(1, 0), start},
        {"start/FullNodeTheOtherWay", full(0, 1), start},
        {"start/StatesUnreadable", emptyWith(withSettings), start},
        {"start/StatesUnreadableTheSecondTime", after(after(full(1, 1), start), after(stop, withSettings)), start},
        {"start/EmptyLists", emptyWith(mo(sshDn, "other", uint8(1))), start},
        {"start/AdapterFails", fullWith(runThrows(no)), start},
        {"start/BatchFails", emptyWith(runThrows(no, "ssh")), start},
        {"start/AdapterTooOldForOne", fullWith(revision("1.7.0\n")), start},
        {"start/ReadsThrow", fullWith(thrownBy("getAttribute")), throwing<int>(start)},
        {"start/QueryThrewAnotherException", emptyWith(queryThrows), throwing<std::runtime_error>(start)},
        {"start/PortRunThrewANumber", emptyWith(runThrows(7)), throwing<int>(start)},
        {"start/BatchThrewANumber", emptyWith(runThrows(7, "ssh")), throwing<int>(start)},
    };
}

Paths withdrawnPaths() {
    return {
        {"start/ManagementOffAndNothingThere", initialized(false), start},
        {"start/ManagementOff", offWith(bothSsh), start},
        {"start/ManagementOffAndNotDeleted", offWith(after(bothSsh, answered("deleteMo", -15))), start},
        {"start/ManagementOffAndNotCommitted", offWith(after(bothSsh, answered("commit", -7))), start},
        {"start/ManagementOffAndAdapterFails", offWith(runThrows(no)), start},
    };
}

}  // namespace

Paths startPaths() {
    Paths paths{{"start/ThroughTheRecord", [](RecordedNode& node) { node.library.init(nullptr); },
                 [](RecordedNode& node) { node.library.start(BRY_REASON_NORMAL); }}};
    for (const Paths& more : {refusedPaths(), managedPaths(), withdrawnPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

Paths stopPaths() {
    const Step offMeanwhile = after(terminate, initialized(false));
    const Step routerRefuses = after(answered("removeSubscription", -6), answered("unregisterConsumer", -6));
    return {
        {"stop/NotStarted", initialized(), stop},
        {"stop/Running", running(nothing), stop},
        {"stop/ManagementOffMeanwhile", running(offMeanwhile), stop},
        {"stop/RouterRefuses", running(routerRefuses), stop},
        {"stop/NoRouter", running(withoutRouter), stop},
        {"stop/AdapterFails", running(runThrows(no)), stop},
        {"stop/RunThrewANumber", running(runThrows(7)), throwing<int>(stop)},
        {"stop/ThroughTheRecord", startThroughTheRecord, stopThroughTheRecord},
    };
}

}  // namespace TulTest
