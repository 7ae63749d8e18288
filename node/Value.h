#ifndef TUL_NODE_VALUE_H
#define TUL_NODE_VALUE_H

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "TulMoAttributeValue_3.h"

namespace TulNode {

/** One value: every kind of number, enumeration and boolean as an integer, texts and references as text. */
using Scalar = std::variant<std::int64_t, std::string>;

/** All values of one attribute, in their order; none at all means that the attribute has no value. */
struct AttributeValue {
    TulOamSpiMoAttributeType_3 type;
    std::vector<Scalar> values;

    bool operator==(const AttributeValue&) const = default;
};

/** Attributes by name. */
using Attributes = std::map<std::string, AttributeValue>;

/** Whether values of the type are text. */
bool isText(TulOamSpiMoAttributeType_3 type);

/** "uint8", "string", ...; "type 99" for a code that is not listed. */
std::string typeName(TulOamSpiMoAttributeType_3 type);

/**
 * The values of one attribute as C records. The container and what it points to live as long as the object.
 */
class ValueRecord {
public:
    explicit ValueRecord(AttributeValue value);

    TulMoAttributeValueContainer_3* container() { return &_container; }

    ValueRecord(const ValueRecord&) = delete;
    ValueRecord& operator=(const ValueRecord&) = delete;

private:
    AttributeValue _value;
    std::vector<TulMoAttributeValue_3> _records;
    TulMoAttributeValueContainer_3 _container;
};

/** The values of a container that somebody else built. Refusal for a type that is not listed or a null text. */
AttributeValue readContainer(const TulMoAttributeValueContainer_3& container);

}  // namespace TulNode

#endif
