#include "Notification.h"

namespace TulBench {

StateNotifications::StateNotifications(std::size_t events, std::size_t eventsEach)
    : _events(events), _records(events / eventsEach) {
    for (Event& one : _events) {
        one.attribute = {"administrativeState", TUL_MO_TYPE_ENUMERATION_3, 1, &one.value};
        one.attributes[0] = &one.attribute;
        one.event = {"ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1", ATTRIBUTES_CHANGED, one.attributes};
        _lists.push_back(&one.event);
        if (_lists.size() % (eventsEach + 1) == eventsEach) {
            _lists.push_back(nullptr);
        }
    }
    for (std::size_t i = 0; i < _records.size(); ++i) {
        _records[i].events = &_lists[i * (eventsEach + 1)];
    }
    setState(1);
}

void StateNotifications::setState(std::int32_t state) {
    for (Event& one : _events) {
        one.value.asEnum = state;
    }
}

}  // namespace TulBench
