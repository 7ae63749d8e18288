#ifndef TUL_BRY_COMPONENT_H
#define TUL_BRY_COMPONENT_H

#include <string>
#include <vector>

#include "BryMgmtSpiComponent_2.h"
#include "BryMgmtSpiPortalAccessor.h"
#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "Portal.h"

namespace Tul {

/**
 * The framework's side of a component: the one object of class T, its record and its portals.
 *
 * T derives from BryComponent<T> and has initialize, terminate, start and stop. The library's two entry points
 * call lcmInit and lcmTerminate. The framework makes all these calls one at a time; no lock
 * is taken.
 */
template <class T>
class BryComponent {
public:
    /** The one object, built on the first call, destroyed when the library is unloaded. Any thread. */
    static T& instance() {
        static T component;
        return component;
    }

    /** Registers the component and initialises it. A failed initialisation leaves it registered. */
    BryReturnT lcmInit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration);

    /** Terminates the component and unregisters it if it is registered. It is not stopped. */
    void lcmTerminate();

    BryComponent(const BryComponent&) = delete;
    BryComponent& operator=(const BryComponent&) = delete;

protected:
    /** componentName stays where it is: the record points into it. */
    explicit BryComponent(const std::string& componentName);
    ~BryComponent() = default;

    /** Adds an interface to what must be there before start. id is kept by address. */
    void dependOn(const BryMgmtSpiInterface_1& id) {
        // The record's arrays are not const, but the framework only reads them.
        _dependencies.push_back(const_cast<BryMgmtSpiInterface_1*>(&id));
    }

private:
    using InterfaceListT = std::vector<BryMgmtSpiInterface_1*>;

    static BryMgmtSpiInterface_1** terminated(InterfaceListT& array, const InterfaceListT& list) {
        array = list;  // afresh each time: a second lcmInit must not add a second null
        array.push_back(nullptr);
        return array.data();
    }

    static BryReturnT startInstance(BryStateChangeReason reason) { return instance().start(reason); }
    static BryReturnT stopInstance(BryStateChangeReason reason) { return instance().stop(reason); }

protected:
    const BryMgmtSpiPortalAccessor* _portalAccessor = nullptr;
    BryMgmtSpiPortal_3* _portal = nullptr;
    BryMgmtSpiPortal_1* _portalV1 = nullptr;
    BryMgmtSpiComponent_2 _componentRecord;
    InterfaceListT _interfaces;
    InterfaceListT _interfaceArray;
    InterfaceListT _dependencies;
    InterfaceListT _dependencyArray;
    InterfaceListT _extraInterfaces;
    InterfaceListT _extraInterfaceArray;
};

template <class T>
BryComponent<T>::BryComponent(const std::string& componentName)
    : _componentRecord{componentName.c_str(),
                       BRY_MGMT_SPI_COMPONENT_NAME,
                       BRY_MGMT_SPI_COMPONENT_VERSION_2,
                       nullptr,
                       nullptr,
                       startInstance,
                       stopInstance,
                       nullptr,
                       false} {
    if (componentName != Portal::COMP_ID.componentName) {
        dependOn(Portal::COMP_ID);
    }
}

template <class T>
BryReturnT BryComponent<T>::lcmInit(const BryMgmtSpiPortalAccessor* accessor, const char* configuration) {
    if (accessor == nullptr) {
        return BRY_FAILED;  // before anything is overwritten: an initialised component keeps its portals
    }
    _portalAccessor = accessor;
    _portal = static_cast<BryMgmtSpiPortal_3*>(accessor->getPortal("3"));
    // Not tested, on purpose: every framework has the portal of version "1", and start relies on it.
    _portalV1 = static_cast<BryMgmtSpiPortal_1*>(accessor->getPortal("1"));
    if (_portal == nullptr) {
        return BRY_FAILED;
    }
    _componentRecord.interfaceArray = terminated(_interfaceArray, _interfaces);
    _componentRecord.dependencyArray = terminated(_dependencyArray, _dependencies);
    _componentRecord.extraInterfaceArray = terminated(_extraInterfaceArray, _extraInterfaces);
    const BryReturnT result = _portal->registerComponent(&_componentRecord);
    if (result != BRY_OK) {
        return result;
    }
    return static_cast<T*>(this)->initialize(configuration);
}

template <class T>
void BryComponent<T>::lcmTerminate() {
    static_cast<T*>(this)->terminate();
    if (_portal != nullptr) {
        _portal->unregisterComponent(&_componentRecord);
        _portal = nullptr;
    }
}

}  // namespace Tul

#endif
