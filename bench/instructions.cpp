// What callgrind counts, see bench/run: the first start of a component on an empty node, and notifications that
// change nothing.

#include "ComponentHost.h"
#include "Notification.h"

constexpr int notifications = 1000;

int main() {
    TulBench::ComponentHost host(TUL_COMPONENT_LIBRARY);
    host.start();
    TulBench::StateNotifications noChange;
    for (int i = 0; i < notifications; ++i) {
        host.deliver(noChange.first());
    }
    return 0;
}
