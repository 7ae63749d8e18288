#include "ComponentRegistry.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

/** No component depends on, or offers, this many: its array has no null at the end. */
constexpr std::size_t longestArray = 256;

bool fits(const char* wanted, const char* offered) {
    return wanted == nullptr || (offered != nullptr && std::strcmp(wanted, offered) == 0);
}

std::string textOr(const char* text, const char* instead) {
    return text == nullptr ? instead : escape(text);
}

std::string describe(const BryMgmtSpiInterface_1& id) {
    return textOr(id.interfaceName, "any interface") + " version " + textOr(id.interfaceVersion, "any") + " of " +
           textOr(id.componentName, "any component");
}

void checkArray(BryMgmtSpiInterface_1** array, const char* name) {
    if (array == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, std::string(name) + " of the record is a null pointer");
    }
    for (std::size_t i = 0; i < longestArray; ++i) {
        if (array[i] == nullptr) {
            return;
        }
    }
    throw Refusal(BRY_INVALID_ARGUMENT, std::string(name) + " of the record does not end with a null pointer");
}

void checkText(const char* text, const char* name, const char* allowed) {
    if (text == nullptr || *text == '\0' || (allowed != nullptr && std::strcmp(text, allowed) != 0)) {
        throw Refusal(BRY_INVALID_ARGUMENT, std::string(name) + " of the record is \"" + textOr(text, "(null)") +
                                                "\"; allowed: " + (allowed == nullptr ? "a name" : allowed));
    }
}

void checkRecord(const BryMgmtSpiComponent_2* component) {
    if (component == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, "the record is a null pointer");
    }
    checkText(component->componentName, "componentName", nullptr);
    checkText(component->interfaceName, "interfaceName", BRY_MGMT_SPI_COMPONENT_NAME);
    checkText(component->interfaceVersion, "interfaceVersion", BRY_MGMT_SPI_COMPONENT_VERSION_2);
    if (component->start == nullptr || component->stop == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, "start or stop of the record is a null pointer");
    }
    checkArray(component->interfaceArray, "interfaceArray");
    checkArray(component->dependencyArray, "dependencyArray");
    checkArray(component->extraInterfaceArray, "extraInterfaceArray");
}

}  // namespace

void ComponentRegistry::offer(BryMgmtSpiInterface_1& identity) {
    const std::lock_guard lock(_mutex);
    _offered.push_back(&identity);
}

ComponentRegistry::Registrations ComponentRegistry::during(const std::function<void()>& call) {
    {
        const std::lock_guard lock(_mutex);
        _caller = std::this_thread::get_id();
    }
    call();
    const std::lock_guard lock(_mutex);
    _caller = {};
    return std::exchange(_registrations, {});
}

bool ComponentRegistry::isExpectedCaller(const char* operation) const {
    const bool expected = _caller == std::this_thread::get_id();
    if (!expected) {
        _journal.accuse(std::string("calls ") + operation +
                        " from outside bryLCMinit and bryLCMterminate, or on another thread");
    }
    return expected;
}

void ComponentRegistry::registerComponent(BryMgmtSpiComponent_2* component) {
    const std::lock_guard lock(_mutex);
    if (!isExpectedCaller("registerComponent")) {
        throw Refusal(BRY_FAILED, "a component registers from within bryLCMinit");
    }
    try {
        checkRecord(component);
        add(component);
    } catch (const Refusal& refusal) {
        _registrations.refusal = refusal.what();
        throw;
    }
}

void ComponentRegistry::add(BryMgmtSpiComponent_2* component) {
    for (const BryMgmtSpiComponent_2* other : _components) {
        if (std::strcmp(other->componentName, component->componentName) == 0) {
            _journal.accuse("registers the name " + escape(component->componentName) + " twice");
            throw Refusal(BRY_ALREADY_EXISTS,
                          "a component named " + escape(component->componentName) + " is registered already");
        }
    }
    _journal.setComponent(escape(component->componentName));
    _components.push_back(component);
    _registrations.registered.push_back(component);
}

void ComponentRegistry::unregisterComponent(BryMgmtSpiComponent_2* component) {
    const std::lock_guard lock(_mutex);
    if (std::erase(_components, component) == 0) {
        throw Refusal(BRY_NOT_FOUND, "the component record is not registered");
    }
    isExpectedCaller("unregisterComponent");
    std::erase(_registrations.registered, component);
}

bool ComponentRegistry::forget(const BryMgmtSpiComponent_2* component) {
    const std::lock_guard lock(_mutex);
    return std::erase(_components, component) == 1;
}

BryMgmtSpiInterface_1* ComponentRegistry::match(const BryMgmtSpiInterface_1& wanted) const {
    const auto matches = [&wanted](const BryMgmtSpiInterface_1* offered) {
        return fits(wanted.componentName, offered->componentName) &&
               fits(wanted.interfaceName, offered->interfaceName) &&
               fits(wanted.interfaceVersion, offered->interfaceVersion);
    };
    const auto found = std::find_if(_offered.begin(), _offered.end(), matches);
    if (found != _offered.end()) {
        return *found;
    }
    for (const BryMgmtSpiComponent_2* component : _components) {
        for (BryMgmtSpiInterface_1** one = component->interfaceArray; *one != nullptr; ++one) {
            if (matches(*one)) {
                return *one;
            }
        }
    }
    return nullptr;
}

void* ComponentRegistry::find(const char* componentName, const char* interfaceName,
                              const char* interfaceVersion) const {
    const BryMgmtSpiInterface_1 wanted{componentName, interfaceName, interfaceVersion};
    if (interfaceName == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, "the name of the interface is a null pointer");
    }
    const std::lock_guard lock(_mutex);
    BryMgmtSpiInterface_1* found = match(wanted);
    if (found == nullptr) {
        throw Refusal(BRY_NOT_FOUND, "nobody offers " + describe(wanted));
    }
    return found;
}

std::string ComponentRegistry::missingDependency(const BryMgmtSpiComponent_2& component) const {
    const std::lock_guard lock(_mutex);
    for (BryMgmtSpiInterface_1** wanted = component.dependencyArray; *wanted != nullptr; ++wanted) {
        if (match(**wanted) == nullptr) {
            return describe(**wanted);
        }
    }
    return "";
}

}  // namespace TulNode
