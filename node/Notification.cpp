#include "Notification.h"

#include <algorithm>
#include <array>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

Pattern::Pattern(const std::string& text) : _compiled{} {
    const int result = regcomp(&_compiled, text.c_str(), REG_EXTENDED | REG_NOSUB);
    if (result != 0) {
        std::array<char, 128> reason{};
        regerror(result, &_compiled, reason.data(), reason.size());
        throw Refusal(BRY_INVALID_ARGUMENT, "\"" + escape(text) + "\" is not a regular expression: " + reason.data());
    }
}

Pattern::~Pattern() {
    regfree(&_compiled);
}

bool Pattern::isFoundIn(const std::string& text) const {
    return regexec(&_compiled, text.c_str(), 0, nullptr, 0) == 0;
}

Filter::Filter(BryNameValuePairT** pairs) {
    if (pairs == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, "the filter is a null pointer instead of an array that ends with one");
    }
    for (; *pairs != nullptr; ++pairs) {
        if ((*pairs)->name == nullptr || (*pairs)->value == nullptr) {
            throw Refusal(BRY_INVALID_ARGUMENT, "a filter pair has a null name or value");
        }
        Pair& pair = _pairs.emplace_back(Pair{(*pairs)->name, (*pairs)->value, {}});
        if (pair.name != BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1) {
            throw Refusal(BRY_INVALID_ARGUMENT, "there is no filter \"" + escape(pair.name) +
                                                    "\"; allowed: " BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1);
        }
        _patterns.emplace_back(pair.value);
        pair.record = {pair.name.c_str(), pair.value.c_str()};
        _array.push_back(&pair.record);
    }
    _array.push_back(nullptr);
}

bool Filter::matches(const std::string& dn) const {
    return _patterns.empty() ||
           std::any_of(_patterns.begin(), _patterns.end(), [&dn](const Pattern& one) { return one.isFoundIn(dn); });
}

Notification::Notification(const std::vector<MoChange>& changes, const Filter& filter) : _record{} {
    for (const MoChange& change : changes) {
        if (filter.matches(change.dn)) {
            add(change);
        }
    }
    _eventArray.push_back(nullptr);
    _record.events = _eventArray.data();
}

void Notification::add(const MoChange& change) {
    auto& array = _attributeArrays.emplace_back();
    for (const auto& [name, value] : change.attributes) {
        const TulMoAttributeValueContainer_3& values = *_values.emplace_back(value).container();
        array.push_back(&_attributeRecords.emplace_back(
            BryOamSpiCmEvent_Attribute_1{name.c_str(), values.type, values.nrOfValues, values.values}));
    }
    array.push_back(nullptr);
    _eventArray.push_back(
        &_eventRecords.emplace_back(BryOamSpiCmEvent_Event_1{change.dn.c_str(), change.type, array.data()}));
}

}  // namespace TulNode
