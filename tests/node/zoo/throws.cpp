// A component in C++ that throws from wherever it can.

#include <stdexcept>

#include "BryMgmtSpiPortal_3.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

BryMgmtSpiPortal_3* portal = nullptr;
BryMgmtSpiInterface_1* nothing[] = {nullptr};

BryReturnT start(BryStateChangeReason /*reason*/) {
    throw std::runtime_error("no start");
}
BryReturnT stop(BryStateChangeReason /*reason*/) {
    throw 7;
}

BryMgmtSpiComponent_2 record = {"Thrower", BRY_MGMT_SPI_COMPONENT_NAME, "2", nothing, nothing, start, stop, nothing,
                                false};

}  // namespace

EXPORT BryReturnT bryLCMinit(const BryMgmtSpiPortalAccessor* accessor, const char* /*configuration*/) {
    portal = static_cast<BryMgmtSpiPortal_3*>(accessor->getPortal("3"));
    return portal->registerComponent(&record);
}

EXPORT void bryLCMterminate() {
    portal->unregisterComponent(&record);
    throw 8;
}
