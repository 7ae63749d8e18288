#include "Portal.h"

#include "Attachment.h"
#include "BryMgmtSpiPortal_1.h"

namespace Tul {

constinit BryMgmtSpiInterface_1 Portal::COMP_ID = {"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"};

Portal& Portal::instance() {
    static Portal portal;
    return portal;
}

BryReturnT Portal::getInterface(const BryMgmtSpiInterface_1& id, void** interfaceRecord) {
    return findInterface(Attachment::currentAccessor(), id, interfaceRecord);
}

void Portal::reset(bool reuse) {
    _eventRouter = nullptr;
    _reuse = reuse;
}

}  // namespace Tul
