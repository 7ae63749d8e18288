#ifndef TUL_TEST_LISTENER_H
#define TUL_TEST_LISTENER_H

#include <functional>

#include "BryOamSpiCmEvent_Notification_1.h"

namespace TulTest {

/** Subscribes to configuration changes. */
class Listener {
public:
    void onChange(const BryOamSpiCmEvent_Notification_1T& /*notification*/) {
        if (during) {
            during();
        }
    }

    std::function<void()> during;
};

}  // namespace TulTest

#endif
