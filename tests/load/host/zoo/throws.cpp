// A component that throws from one place, which is chosen by THROWS_... when it is compiled.

#include <stdexcept>

#include "BryMgmtSpiPortal_3.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

BryMgmtSpiPortal_3* portal = nullptr;
BryMgmtSpiInterface_1* nothing[] = {nullptr};

BryReturnT start(BryStateChangeReason /*reason*/) {
    return BRY_OK;
}

BryReturnT stop(BryStateChangeReason /*reason*/) {
#ifdef THROWS_IN_STOP
    throw 7;
#else
    return BRY_OK;
#endif
}

BryMgmtSpiComponent_2 record = {"Thrower", BRY_MGMT_SPI_COMPONENT_NAME, "2", nothing, nothing, start, stop, nothing,
                                false};

}  // namespace

EXPORT BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* /*configuration*/) {
    portal = static_cast<BryMgmtSpiPortal_3*>(accessor->getPortal("3"));
    portal->registerComponent(&record);
#ifdef THROWS_IN_INIT
    throw std::runtime_error("no init");
#else
    return BRY_OK;
#endif
}

EXPORT void bryLCMterminate() {
    portal->unregisterComponent(&record);
}
