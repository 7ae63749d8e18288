#ifndef TUL_BENCH_NOTIFICATION_H
#define TUL_BENCH_NOTIFICATION_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "BryOamSpiCmEvent_Notification_1.h"

namespace TulBench {

/** Changes of the administrative state of CliSsh, each with records of its own, in notifications of equal size. */
class StateNotifications {
public:
    explicit StateNotifications(std::size_t events = 1, std::size_t eventsEach = 1);

    void setState(std::int32_t state); /**< in all events */

    std::vector<BryOamSpiCmEvent_Notification_1T>& records() { return _records; }
    BryOamSpiCmEvent_Notification_1T& first() { return _records.front(); }

    StateNotifications(const StateNotifications&) = delete;
    StateNotifications& operator=(const StateNotifications&) = delete;

private:
    /** What a framework puts together for one event. */
    struct Event {
        TulMoAttributeValue_3 value{};
        BryOamSpiCmEvent_Attribute_1 attribute{};
        BryOamSpiCmEvent_Attribute_1* attributes[2]{};
        BryOamSpiCmEvent_Event_1 event{};
    };

    std::vector<Event> _events;
    std::vector<BryOamSpiCmEvent_Event_1*> _lists; /**< one behind the other, each null-terminated */
    std::vector<BryOamSpiCmEvent_Notification_1T> _records;
};

}  // namespace TulBench

#endif
