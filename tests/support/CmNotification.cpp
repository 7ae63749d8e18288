#include "CmNotification.h"

namespace TulTest {

CmNotification& CmNotification::event(const char* dn, CmEventType type) {
    Event& added = _events.emplace_back();
    added.dn = dn == nullptr ? "" : dn;
    added.record.dn = dn == nullptr ? nullptr : added.dn.c_str();
    added.record.eventType = type;
    return *this;
}

CmNotification& CmNotification::enumeration(const char* name, int value) {
    return attribute(name, TUL_MO_TYPE_ENUMERATION_3, 1, {value});
}

CmNotification& CmNotification::attribute(const char* name, TulOamSpiMoAttributeType_3 type, std::uint32_t nrOfValues,
                                          const std::vector<std::int64_t>& values) {
    const std::string& ownName = _names.emplace_back(name == nullptr ? "" : name);
    std::vector<TulMoAttributeValue_3>& ownValues = _values.emplace_back();
    for (const std::int64_t value : values) {
        ownValues.push_back(TulMoAttributeValue_3{.asInt64 = value});
    }
    _events.back().attributes.push_back(
        {name == nullptr ? nullptr : ownName.c_str(), type, nrOfValues, values.empty() ? nullptr : ownValues.data()});
    return *this;
}

CmNotification& CmNotification::withoutAttributeArray() {
    _events.back().hasArray = false;
    return *this;
}

CmNotification& CmNotification::withoutEventArray() {
    _hasArray = false;
    return *this;
}

BryOamSpiCmEvent_Notification_1T* CmNotification::record() {
    _array.clear();
    for (Event& event : _events) {
        event.array.clear();
        for (BryOamSpiCmEvent_Attribute_1& attribute : event.attributes) {
            event.array.push_back(&attribute);
        }
        event.array.push_back(nullptr);
        event.record.attributes = event.hasArray ? event.array.data() : nullptr;
        _array.push_back(&event.record);
    }
    _array.push_back(nullptr);
    _record.events = _hasArray ? _array.data() : nullptr;
    return &_record;
}

}  // namespace TulTest
