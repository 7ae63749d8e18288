#ifndef TUL_PORTAL_H
#define TUL_PORTAL_H

#include "BryMgmtSpiInterface_1.h"
#include "BryReturn.h"
#include "Logging.h"
#include "TulExport.h"
#include "TulOamSpiEventRouter_1.h"

namespace Tul {

/** Names the event router, in look-ups and in the components' dependency lists. */
inline constexpr BryMgmtSpiInterface_1 eventRouterInterfaceId = {
    TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, TUL_OAM_SPI_EVENT_ROUTER_VERSION_1};

/**
 * The process's way to the framework's interfaces. libtul_common owns the one object.
 *
 * Any thread may look up interfaces; what is found belongs to the framework.
 */
class Portal {
public:
    /** Names the platform's portal component; every other component depends on it. */
    TUL_EXPORT static BryMgmtSpiInterface_1 COMP_ID;

    TUL_EXPORT static Portal& instance();

    /** Stores the interface with that identity. 0, or the framework's code; BRY_NOT_FOUND without a framework. */
    TUL_EXPORT BryReturnT getInterface(const BryMgmtSpiInterface_1& id, void** interfaceRecord);

    /** The event router, or null when the framework has none. */
    TulOamSpiEventRouter_1* getEventRouter();

    /** Drops what was found and says whether what is found from now on may be used again. */
    TUL_EXPORT void reset(bool reuse);

    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;

private:
    Portal() = default;

    template <class InterfaceT>
    InterfaceT* getInterface(const BryMgmtSpiInterface_1& id, InterfaceT*& slot);

    TulOamSpiEventRouter_1* _eventRouter = nullptr;
    bool _reuse = false;
};

inline TulOamSpiEventRouter_1* Portal::getEventRouter() {
    if (_eventRouter != nullptr && _reuse) {
        return _eventRouter;
    }
    return getInterface(eventRouterInterfaceId, _eventRouter);
}

template <class InterfaceT>
InterfaceT* Portal::getInterface(const BryMgmtSpiInterface_1& id, InterfaceT*& slot) {
    void* found = slot;
    const BryReturnT result = getInterface(id, &found);
    slot = static_cast<InterfaceT*>(found);
    if (result != BRY_OK) {
        TUL_WARNING(Trace::Common, "Interface %s not found", id.interfaceName);
        return nullptr;
    }
    return slot;
}

}  // namespace Tul

#endif
