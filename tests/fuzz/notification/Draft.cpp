#include "Draft.h"

#include <map>
#include <string>

namespace TulFuzz {

namespace {

const char* const stateAttribute = "administrativeState";

/** A text of the input's own, a known one, or none at all for letters without meaning. */
std::optional<std::string> takeText(Letters& letters, const std::map<char, std::string>& known) {
    const char letter = letters.take();
    if (letter == '"') {
        return letters.takeUntil('"').c_str();  // up to a NUL, as whoever gets it sees it
    }
    const auto found = known.find(letter);
    return found == known.end() ? std::nullopt : std::optional(found->second);
}

const char* pointerTo(const std::optional<std::string>& text) {
    return text ? text->c_str() : nullptr;
}

std::optional<std::string> takeDn(Letters& letters) {
    const std::string system = "ManagedElement=1,SystemFunctions=1,";
    static const std::map<char, std::string> known{{'c', system + "SysM=1,CliSsh=1"},
                                                   {'n', system + "SysM=1,NetconfSsh=1"},
                                                   {'s', system + "SecM=1,Ssh=1"},
                                                   {'o', "ManagedElement=1,Transport=1,DiffServCategory=OamCM"},
                                                   {'x', "ManagedElement=1,Transport=1,DiffServCategory=OamCMx"},
                                                   {'l', "ManagedElement=1,Transport=1,DiffServCategory=OamCM\n"},
                                                   {'e', ""}};
    return takeText(letters, known);
}

std::optional<std::string> takeName(Letters& letters) {
    static const std::map<char, std::string> known{
        {'s', stateAttribute}, {'S', "AdministrativeState"}, {'d', "dscp"}, {'e', ""}};
    return takeText(letters, known);
}

/** 'e' is the code of enumerations; digits and what follows them are others. */
TulOamSpiMoAttributeType_3 takeType(Letters& letters) {
    const char letter = letters.take();
    return letter == 'e' ? TUL_MO_TYPE_ENUMERATION_3 : static_cast<TulOamSpiMoAttributeType_3>(letter - '0');
}

std::uint32_t takeCount(Letters& letters) {
    const char letter = letters.take();
    return letter == 'M' ? UINT32_MAX : static_cast<std::uint32_t>(letter - '0');
}

/** The one value behind the pointer, or none: then the pointer is null. */
std::vector<std::int64_t> takeValues(Letters& letters) {
    static const std::map<char, std::int64_t> known{
        {'-', -1}, {'M', INT32_MAX}, {'m', INT32_MIN}, {'B', std::int64_t{1} << 32}};
    const char letter = letters.take();
    const auto found = known.find(letter);
    if (found != known.end()) {
        return {found->second};
    }
    return letter >= '0' && letter <= '9' ? std::vector<std::int64_t>{letter - '0'} : std::vector<std::int64_t>{};
}

}  // namespace

void Draft::addEvent(CmEventType type, Letters& letters) {
    const std::optional<std::string> dn = takeDn(letters);
    _notification.event(pointerTo(dn), type);
    _events.push_back({type, true, {}});
}

void Draft::addAttribute(Letters& letters) {
    const std::optional<std::string> name = takeName(letters);
    const TulOamSpiMoAttributeType_3 type = takeType(letters);
    const std::uint32_t count = takeCount(letters);
    const std::vector<std::int64_t> values = takeValues(letters);
    if (_events.empty()) {
        return;
    }
    _notification.attribute(pointerTo(name), type, count, values);
    if (name == stateAttribute && type == TUL_MO_TYPE_ENUMERATION_3 && count != 0 && !values.empty()) {
        _events.back().state = static_cast<std::int32_t>(values.front());
    }
}

void Draft::dropAttributeArray() {
    if (!_events.empty()) {
        _notification.withoutAttributeArray();
        _events.back().hasArray = false;
    }
}

void Draft::dropEventArray() {
    _notification.withoutEventArray();
    _hasArray = false;
}

std::optional<std::int32_t> Draft::newestState() const {
    std::optional<std::int32_t> newest;
    for (const Event& event : _events) {
        const bool counts = _hasArray && event.hasArray && event.type == ATTRIBUTES_CHANGED && event.state;
        newest = counts ? event.state : newest;
    }
    return newest;
}

}  // namespace TulFuzz
