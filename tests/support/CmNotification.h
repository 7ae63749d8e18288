#ifndef TUL_TEST_CM_NOTIFICATION_H
#define TUL_TEST_CM_NOTIFICATION_H

#include <deque>
#include <string>
#include <vector>

#include "BryOamSpiCmEvent_Notification_1.h"

namespace TulTest {

/**
 * Builds the record of a CM notification, step by step, and owns all of it.
 *
 *     CmNotification().changed(dn).enumeration("administrativeState", 0)
 */
class CmNotification {
public:
    CmNotification& created(const char* dn) { return event(dn, CREATED); }
    CmNotification& deleted(const char* dn) { return event(dn, DELETED); }
    CmNotification& changed(const char* dn) { return event(dn, ATTRIBUTES_CHANGED); }

    /** Adds an event; everything that follows belongs to it. */
    CmNotification& event(const char* dn, CmEventType type);

    /** Adds an enumeration attribute with one value to the newest event. */
    CmNotification& enumeration(const char* name, int value);

    /** Adds an attribute with any fields; an empty list of values gives a null pointer. */
    CmNotification& attribute(const char* name, TulOamSpiMoAttributeType_3 type, std::uint32_t nrOfValues,
                              const std::vector<std::int64_t>& values);

    /** Gives the newest event a null attribute array. */
    CmNotification& withoutAttributeArray();

    /** Gives the notification a null event array. */
    CmNotification& withoutEventArray();

    /** The record; valid while this object lives and is not added to. */
    BryOamSpiCmEvent_Notification_1T* record();

private:
    struct Event {
        std::string dn;
        BryOamSpiCmEvent_Event_1 record{};
        bool hasArray = true;
        std::deque<BryOamSpiCmEvent_Attribute_1> attributes;
        std::vector<BryOamSpiCmEvent_Attribute_1*> array;
    };

    std::deque<Event> _events;
    std::deque<std::string> _names;
    std::deque<std::vector<TulMoAttributeValue_3>> _values;
    std::vector<BryOamSpiCmEvent_Event_1*> _array;
    bool _hasArray = true;
    BryOamSpiCmEvent_Notification_1T _record{};
};

}  // namespace TulTest

#endif
