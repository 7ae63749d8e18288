#include "Schema.h"

#include <algorithm>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

/** Names of algorithms. A comma cannot be part of one: whoever joins a list would make two of it. */
AttributeSpec nameList(const std::string& name) {
    return {name, TUL_MO_TYPE_STRING_3, 64, 1, 255, {}, {}};
}

AttributeSpec administrativeState() {
    return {"administrativeState", TUL_MO_TYPE_ENUMERATION_3, 1, 0, 1, {"LOCKED", "UNLOCKED"}, {std::int64_t{0}}};
}

std::string rangeText(const AttributeSpec& spec) {
    return std::to_string(spec.minimum) + " to " + std::to_string(spec.maximum);
}

[[noreturn]] void refuseValue(BryReturnT code, const AttributeSpec& spec, const std::string& what) {
    throw Refusal(code, spec.name + " is " + what + "; allowed: " + spec.allowed());
}

void checkScalar(const AttributeSpec& spec, const Scalar& scalar) {
    if (const auto* text = std::get_if<std::string>(&scalar)) {
        const auto length = static_cast<std::int64_t>(text->size());
        if (length < spec.minimum || length > spec.maximum || !isPrintable(*text) ||
            text->find(',') != std::string::npos) {
            refuseValue(BRY_OUT_OF_RANGE, spec, "\"" + escape(*text) + "\"");
        }
        return;
    }
    const std::int64_t number = std::get<std::int64_t>(scalar);
    if (number < spec.minimum || number > spec.maximum) {
        refuseValue(BRY_OUT_OF_RANGE, spec, std::to_string(number));
    }
}

void checkValue(const AttributeSpec& spec, const AttributeValue& value) {
    if (value.type != spec.type) {
        refuseValue(BRY_WRONG_TYPE, spec, "given as " + typeName(value.type));
    }
    if (value.values.size() > spec.mostValues) {
        refuseValue(BRY_WRONG_TYPE, spec, "given " + std::to_string(value.values.size()) + " values");
    }
    for (const Scalar& scalar : value.values) {
        checkScalar(spec, scalar);
    }
}

const ClassSpec* findClass(std::string_view className) {
    const auto found = std::find_if(model().begin(), model().end(),
                                    [className](const ClassSpec& spec) { return spec.name == className; });
    return found == model().end() ? nullptr : &*found;
}

}  // namespace

const std::vector<ClassSpec>& model() {
    static const std::vector<ClassSpec> classes = {
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

std::string AttributeSpec::allowed() const {
    const std::string many = isSequence() ? "up to " + std::to_string(mostValues) + " of: " : "";
    if (!literals.empty()) {
        return many + join(literals, " or ");
    }
    if (isText(type)) {
        return many + "text of " + rangeText(*this) + " bytes without commas and control characters";
    }
    return many + "a number from " + rangeText(*this) + " (" + typeName(type) + ")";
}

const AttributeSpec& ClassSpec::attribute(std::string_view attributeName) const {
    std::vector<std::string> names;
    for (const AttributeSpec& spec : attributes) {
        if (spec.name == attributeName) {
            return spec;
        }
        names.push_back(spec.name);
    }
    if (attributeName == keyAttribute) {
        throw Refusal(BRY_INVALID_ARGUMENT, keyAttribute + " is the key of " + name + ": it stands in the DN");
    }
    throw Refusal(BRY_UNKNOWN_CLASS, name + " has no attribute \"" + escape(attributeName) +
                                         "\"; it has: " + (names.empty() ? "none" : join(names, ", ")));
}

const ClassSpec& classSpec(std::string_view className) {
    if (const ClassSpec* spec = findClass(className)) {
        return *spec;
    }
    std::vector<std::string> names;
    for (const ClassSpec& spec : model()) {
        names.push_back(spec.name);
    }
    throw Refusal(BRY_UNKNOWN_CLASS,
                  "there is no class \"" + escape(className) + "\"; there are: " + join(names, ", "));
}

void checkPlace(const Dn& dn) {
    std::string above;
    for (const std::string& className : split(dn.classPath(), ',')) {
        const std::string& parent = classSpec(className).parent;
        if (parent != above) {
            throw Refusal(BRY_WRONG_PARENT,
                          className + (above.empty() ? " cannot be the root" : " cannot stand below " + above) +
                              "; allowed: " + (parent.empty() ? "nothing above it" : "below " + parent));
        }
        above = className;
    }
}

void checkClassPath(std::string_view classPath) {
    std::string above;
    for (const std::string& className : split(classPath, ',')) {
        const ClassSpec* spec = findClass(className);
        if (spec == nullptr || spec->parent != above) {
            throw Refusal(BRY_UNKNOWN_CLASS, "the model has no class path \"" + escape(classPath) + "\"");
        }
        above = className;
    }
}

void checkAttributes(const ClassSpec& spec, const Attributes& attributes) {
    for (const auto& [name, value] : attributes) {
        checkValue(spec.attribute(name), value);
    }
}

void addDefaults(const ClassSpec& spec, Attributes& attributes) {
    for (const AttributeSpec& attribute : spec.attributes) {
        attributes.try_emplace(attribute.name, AttributeValue{attribute.type, attribute.defaultValues});
    }
}

}  // namespace TulNode
