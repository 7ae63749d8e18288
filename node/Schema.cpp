#include "Schema.h"

#include <algorithm>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

/** Names of algorithms. A comma cannot be part of one: whoever joins a list would make two of it. */
AttributeDefinition nameList(const std::string& name) {
    return {name, TUL_MO_TYPE_STRING_3, 64, 1, 255, {}, {}};
}

AttributeDefinition administrativeState() {
    return {"administrativeState", TUL_MO_TYPE_ENUMERATION_3, 1, 0, 1, {"LOCKED", "UNLOCKED"}, {std::int64_t{0}}};
}

std::string rangeText(const AttributeDefinition& definition) {
    return std::to_string(definition.minimum) + " to " + std::to_string(definition.maximum);
}

[[noreturn]] void refuseValue(BryReturnT code, const AttributeDefinition& definition, const std::string& what) {
    throw Refusal(code, definition.name + " is " + what + "; allowed: " + definition.allowed());
}

void checkScalar(const AttributeDefinition& definition, const Scalar& scalar) {
    if (const auto* text = std::get_if<std::string>(&scalar)) {
        const auto length = static_cast<std::int64_t>(text->size());
        if (length < definition.minimum || length > definition.maximum || !isPrintable(*text) ||
            text->find(',') != std::string::npos) {
            refuseValue(BRY_OUT_OF_RANGE, definition, "\"" + escape(*text) + "\"");
        }
        return;
    }
    const std::int64_t number = std::get<std::int64_t>(scalar);
    if (number < definition.minimum || number > definition.maximum) {
        refuseValue(BRY_OUT_OF_RANGE, definition, std::to_string(number));
    }
}

void checkValue(const AttributeDefinition& definition, const AttributeValue& value) {
    if (value.type != definition.type) {
        refuseValue(BRY_WRONG_TYPE, definition, "given as " + typeName(value.type));
    }
    if (value.values.size() > definition.mostValues) {
        refuseValue(BRY_WRONG_TYPE, definition, "given " + std::to_string(value.values.size()) + " values");
    }
    for (const Scalar& scalar : value.values) {
        checkScalar(definition, scalar);
    }
}

const ClassDefinition* findClass(std::string_view className) {
    const auto found = std::find_if(model().begin(), model().end(), [className](const ClassDefinition& definition) {
        return definition.name == className;
    });
    return found == model().end() ? nullptr : &*found;
}

[[noreturn]] void refusePlace(const std::string& className, const std::string& above, const std::string& parent) {
    const std::string place = above.empty() ? " cannot be the root" : " cannot stand below " + above;
    const std::string allowed = parent.empty() ? "nothing above it" : "below " + parent;
    throw Refusal(BRY_WRONG_PARENT, className + place + "; allowed: " + allowed);
}

}  // namespace

const std::vector<ClassDefinition>& model() {
    static const std::vector<ClassDefinition> classes = {
        {"ManagedElement", "managedElementId", "", {}},
        {"SystemFunctions", "systemFunctionsId", "ManagedElement", {}},
        {"SysM", "sysMId", "SystemFunctions", {}},
        {"CliSsh", "cliSshId", "SysM", {administrativeState()}},
        {"NetconfSsh", "netconfSshId", "SysM", {administrativeState()}},
        {"SecM", "secMId", "SystemFunctions", {}},
        {"Ssh",
         "sshId",
         "SecM",
         {nameList("selectedCiphers"), nameList("selectedKeyExchanges"), nameList("selectedMacs")}},
        {"Transport", "transportId", "ManagedElement", {}},
        {"DiffServCategory", "diffServCategoryId", "Transport", {{"dscp", TUL_MO_TYPE_UINT8_3, 1, 0, 63, {}, {}}}},
    };
    return classes;
}

std::string AttributeDefinition::allowed() const {
    const std::string many = isSequence() ? "up to " + std::to_string(mostValues) + " of: " : "";
    if (!literals.empty()) {
        return many + join(literals, " or ");
    }
    if (isText(type)) {
        return many + "text of " + rangeText(*this) + " bytes without commas and control characters";
    }
    return many + "a number from " + rangeText(*this) + " (" + typeName(type) + ")";
}

const AttributeDefinition& ClassDefinition::attribute(std::string_view attributeName) const {
    std::vector<std::string> names;
    for (const AttributeDefinition& definition : attributes) {
        if (definition.name == attributeName) {
            return definition;
        }
        names.push_back(definition.name);
    }
    if (attributeName == keyAttribute) {
        throw Refusal(BRY_INVALID_ARGUMENT, keyAttribute + " is the key of " + name + ": it stands in the DN");
    }
    throw Refusal(BRY_UNKNOWN_CLASS, name + " has no attribute \"" + escape(attributeName) +
                                         "\"; it has: " + (names.empty() ? "none" : join(names, ", ")));
}

const ClassDefinition& classDefinition(std::string_view className) {
    if (const ClassDefinition* definition = findClass(className)) {
        return *definition;
    }
    std::vector<std::string> names;
    for (const ClassDefinition& definition : model()) {
        names.push_back(definition.name);
    }
    throw Refusal(BRY_UNKNOWN_CLASS,
                  "there is no class \"" + escape(className) + "\"; there are: " + join(names, ", "));
}

std::string classPath(const ClassDefinition& definition) {
    return definition.parent.empty() ? definition.name
                                     : classPath(classDefinition(definition.parent)) + "," + definition.name;
}

void checkPlace(const Dn& dn) {
    std::string above;
    for (const std::string& className : split(dn.classPath(), ',')) {
        const std::string& parent = classDefinition(className).parent;
        if (parent != above) {
            refusePlace(className, above, parent);
        }
        above = className;
    }
}

void checkClassPath(std::string_view classPath) {
    std::string above;
    for (const std::string& className : split(classPath, ',')) {
        const ClassDefinition* definition = findClass(className);
        if (definition == nullptr || definition->parent != above) {
            throw Refusal(BRY_UNKNOWN_CLASS, "the model has no class path \"" + escape(classPath) + "\"");
        }
        above = className;
    }
}

void checkAttributes(const ClassDefinition& definition, const Attributes& attributes) {
    for (const auto& [name, value] : attributes) {
        checkValue(definition.attribute(name), value);
    }
}

void addDefaults(const ClassDefinition& definition, Attributes& attributes) {
    for (const AttributeDefinition& attribute : definition.attributes) {
        attributes.try_emplace(attribute.name, AttributeValue{attribute.type, attribute.defaultValues});
    }
}

}  // namespace TulNode
