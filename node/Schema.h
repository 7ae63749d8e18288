#ifndef TUL_NODE_SCHEMA_H
#define TUL_NODE_SCHEMA_H

#include <string>
#include <string_view>
#include <vector>

#include "Dn.h"
#include "Value.h"

namespace TulNode {

/** What an attribute may hold. */
struct AttributeDefinition {
    std::string name;
    TulOamSpiMoAttributeType_3 type;
    std::size_t mostValues;            /**< 1: a single value; more: a sequence */
    std::int64_t minimum;              /**< of a number, or of a text's length in bytes */
    std::int64_t maximum;              /**< as minimum */
    std::vector<std::string> literals; /**< of an enumeration: the index is the number */
    std::vector<Scalar> defaultValues; /**< what a new MO gets when it is not told */

    bool isSequence() const { return mostValues > 1; }

    /** What it takes, for messages: "LOCKED or UNLOCKED", "a number from 0 to 63". */
    std::string allowed() const;
};

/** A class of managed objects. Its key attribute is readable but never changes. */
struct ClassDefinition {
    std::string name;
    std::string keyAttribute;
    std::string parent; /**< the class above; empty for the root */
    std::vector<AttributeDefinition> attributes;

    /** Refusal with BRY_UNKNOWN_CLASS, or BRY_INVALID_ARGUMENT for the key attribute. */
    const AttributeDefinition& attribute(std::string_view attributeName) const;
};

/** The whole model of the node, in the order root first. */
const std::vector<ClassDefinition>& model();

/** Refusal with BRY_UNKNOWN_CLASS. */
const ClassDefinition& classDefinition(std::string_view className);

/** The names of the classes from the root down to this one, with commas: "ManagedElement,Transport". */
std::string classPath(const ClassDefinition& definition);

/** Whether the classes of the DN may stand below each other so. Refusal: BRY_UNKNOWN_CLASS or BRY_WRONG_PARENT. */
void checkPlace(const Dn& dn);

/** Whether a class path can have instances. Refusal with BRY_UNKNOWN_CLASS. */
void checkClassPath(std::string_view classPath);

/** Refusal: the attribute's, BRY_WRONG_TYPE (also: several values where one is allowed) or BRY_OUT_OF_RANGE. */
void checkAttributes(const ClassDefinition& definition, const Attributes& attributes);

/** Adds the default of each attribute that is not given. */
void addDefaults(const ClassDefinition& definition, Attributes& attributes);

}  // namespace TulNode

#endif
