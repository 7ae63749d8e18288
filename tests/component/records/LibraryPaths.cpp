#include <stdexcept>

#include "Path.h"

namespace TulTest {

namespace {

using Build = std::function<void(CmNotification&)>;

void withEverything(RecordedNode& node) {
    withSettings(node);
    mo(cliSshDn, "administrativeState", enumeration(1))(node);
    mo(netconfSshDn, "administrativeState", enumeration(0))(node);
}

void run(RecordedNode& node) {
    ASSERT_EQ(BRY_OK, node.library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, node.library.start(BRY_REASON_OPERATOR));
}

Step notify(const char* pattern, const Build& build) {
    return [=](RecordedNode& node) {
        CmNotification notification;
        build(notification);
        EXPECT_EQ(BRY_OK, node.framework.notify(pattern, notification));
    };
}

Step state(const char* pattern, const char* dn, int value) {
    return notify(pattern, [=](auto& n) { n.changed(dn).enumeration("administrativeState", value); });
}

const Step cliLocked = state(cliSshPattern, cliSshDn, 0);
const Step netconfUnlocked = state(netconfSshPattern, netconfSshDn, 1);
const Step categoryChanged = notify(serviceCategoryPattern, [](auto& n) { n.changed(oamCmDn); });
const Step sshChanged = notify(sshPattern, [](auto& n) { n.changed(sshDn); });
const Step sshWithoutDn = notify(sshPattern, [](auto& n) { n.changed(nullptr); });

void live(RecordedNode& node) {
    run(node);
    for (const Step& step : {cliLocked, netconfUnlocked, categoryChanged, sshChanged}) {
        step(node);
    }
    node.library.stop(BRY_REASON_RELOAD);
    node.library.terminate();
}

void searchThrows(RecordedNode& node) {
    node.framework.during["findInstances"] = [] { throw std::runtime_error("standard"); };
}

}  // namespace

Paths libraryPaths() {
    const Step running = after(withEverything, run);
    return {
        {"notification/CliSshLocked", running, cliLocked},
        {"notification/NetconfSshUnlocked", running, netconfUnlocked},
        {"notification/CategoryChanged", running, categoryChanged},
        {"notification/SshChanged", running, sshChanged},
        {"notification/SshWithoutDn", running, sshWithoutDn},
        {"notification/HandlerThrewANumber", after(running, thrownBy("findInstances")), categoryChanged},
        {"notification/HandlerThrewAnException", after(running, searchThrows), categoryChanged},
        {"life/OnAFullNode", withEverything, live},
    };
}

}  // namespace TulTest
