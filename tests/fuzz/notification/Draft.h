#ifndef TUL_FUZZ_DRAFT_H
#define TUL_FUZZ_DRAFT_H

#include <cstdint>
#include <optional>
#include <vector>

#include "CmNotification.h"
#include "Letters.h"

namespace TulFuzz {

/** A notification that an input writes, and what it says about the administrative state. */
class Draft {
public:
    /** An event of a type; the letters name its DN. */
    void addEvent(CmEventType type, Letters& letters);

    /** An attribute of the newest event, all of it from the letters. */
    void addAttribute(Letters& letters);

    void dropAttributeArray();
    void dropEventArray();

    /** The last state that a handler of state changes may count; none when there is none. */
    std::optional<std::int32_t> newestState() const;

    BryOamSpiCmEvent_Notification_1T* record() { return _notification.record(); }

private:
    struct Event {
        CmEventType type;
        bool hasArray = true;
        std::optional<std::int32_t> state;
    };

    TulTest::CmNotification _notification;
    std::vector<Event> _events;
    bool _hasArray = true;
};

}  // namespace TulFuzz

#endif
