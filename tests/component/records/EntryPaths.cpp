#include "Path.h"

namespace TulTest {

namespace {

Step initialize(const char* text) {
    return [=](RecordedNode& node) { node.component.initialize(text); };
}
Step initialize(bool managed) {
    return [=](RecordedNode& node) { node.component.initialize(configuration(managed).c_str()); };
}
void terminate(RecordedNode& node) {
    node.component.terminate();
}
void isStarted(RecordedNode& node) {
    node.component.isStarted();
}

void init(RecordedNode& node) {
    node.library.init(configuration(true));
}
void initWithNothing(RecordedNode& node) {
    node.library.init(nullptr);
}
void bryLcmTerminate(RecordedNode& node) {
    node.library.terminate();
}
void withoutPortal3(RecordedNode& node) {
    node.framework.hasPortal3 = false;
}
void withoutPortal1(RecordedNode& node) {
    node.framework.hasPortal1 = false;
}

}  // namespace

Paths entryPaths() {
    return {
        {"initialize/ManagementOn", nothing, initialize(true)},
        {"initialize/ManagementOff", nothing, initialize(false)},
        {"initialize/AgainAfterTerminate", after(initialize(true), terminate), initialize(false)},
        {"initialize/AlreadyInitialized", initialize(true), initialize(false)},
        {"initialize/NoConfiguration", nothing, initialize(nullptr)},
        {"initialize/UnreadableConfiguration", nothing, initialize("<a/>")},
        {"terminate/Initialized", initialized(), terminate},
        {"terminate/Running", after(initialized(), start), terminate},
        {"isStarted/Stopped", nothing, isStarted},
        {"isStarted/Running", after(initialized(), start), isStarted},
        {"bryLCMinit/NoPortal", withoutPortal3, init},
        {"bryLCMinit/RegistrationRefused", answered("registerComponent", -5), init},
        {"bryLCMinit/Initialized", nothing, init},
        {"bryLCMinit/NoPortalOfVersionOne", withoutPortal1, init},
        {"bryLCMinit/NoConfiguration", nothing, initWithNothing},
        {"bryLCMinit/Twice", init, init},
        {"bryLCMterminate/Initialized", init, bryLcmTerminate},
        {"bryLCMterminate/NeverRegistered", after(withoutPortal3, init), bryLcmTerminate},
    };
}

}  // namespace TulTest
