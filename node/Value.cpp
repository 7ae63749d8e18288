#include "Value.h"

#include <array>
#include <limits>
#include <utility>

#include "Refusal.h"

namespace TulNode {

namespace {

TulMoAttributeValue_3 recordOf(const Scalar& scalar) {
    TulMoAttributeValue_3 record{};
    if (const auto* text = std::get_if<std::string>(&scalar)) {
        record.asString = text->c_str();
    } else {
        record.asInt64 = std::get<std::int64_t>(scalar);
    }
    return record;
}

Scalar unsignedScalar(std::uint64_t number) {
    if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        throw Refusal(BRY_OUT_OF_RANGE, std::to_string(number) + " is larger than any attribute of the model takes");
    }
    return static_cast<std::int64_t>(number);
}

Scalar scalarOf(TulOamSpiMoAttributeType_3 type, const TulMoAttributeValue_3& value) {
    switch (type) {
        case TUL_MO_TYPE_INT8_3:
        case TUL_MO_TYPE_INT16_3:
        case TUL_MO_TYPE_INT32_3:
        case TUL_MO_TYPE_INT64_3:
            return value.asInt64;
        case TUL_MO_TYPE_UINT8_3:
        case TUL_MO_TYPE_UINT16_3:
        case TUL_MO_TYPE_UINT32_3:
        case TUL_MO_TYPE_UINT64_3:
        case TUL_MO_TYPE_BOOLEAN_3:
            return unsignedScalar(value.asUint64);
        case TUL_MO_TYPE_ENUMERATION_3:
            return std::int64_t{value.asEnum};
        case TUL_MO_TYPE_STRING_3:
        case TUL_MO_TYPE_REFERENCE_3:
            if (value.asString == nullptr) {
                throw Refusal(BRY_INVALID_ARGUMENT, "a text value is a null pointer");
            }
            return value.asString;
    }
    throw Refusal(BRY_WRONG_TYPE, "there is no value type with the code " + std::to_string(type));
}

}  // namespace

bool isText(TulOamSpiMoAttributeType_3 type) {
    return type == TUL_MO_TYPE_STRING_3 || type == TUL_MO_TYPE_REFERENCE_3;
}

std::string typeName(TulOamSpiMoAttributeType_3 type) {
    static constexpr std::array names = {"",       "int8",   "int16",   "int32",  "int64",     "uint8",      "uint16",
                                         "uint32", "uint64", "boolean", "string", "reference", "enumeration"};
    const auto index = static_cast<std::size_t>(type);
    return index >= 1 && index < names.size() ? names[index] : "type " + std::to_string(type);
}

ValueRecord::ValueRecord(AttributeValue value) : _value(std::move(value)), _container{} {
    for (const Scalar& scalar : _value.values) {
        _records.push_back(recordOf(scalar));
    }
    _container = {_value.type, static_cast<std::uint32_t>(_records.size()), _records.data()};
}

AttributeValue readContainer(const TulMoAttributeValueContainer_3& container) {
    AttributeValue result{container.type, {}};
    for (std::uint32_t i = 0; container.values != nullptr && i < container.nrOfValues; ++i) {
        result.values.push_back(scalarOf(container.type, container.values[i]));
    }
    return result;
}

}  // namespace TulNode
