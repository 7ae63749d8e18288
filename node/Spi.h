#ifndef TUL_NODE_SPI_H
#define TUL_NODE_SPI_H

#include "BryMgmtSpiPortalAccessor.h"
#include "Services.h"
#include "TulCommon_1.h"

namespace TulNode {

/**
 * The C interface of the node: makes the services reachable for a component as long as it lives.
 *
 * The SPI's functions carry no user data, so there is one at a time in a process. It offers the interfaces of the
 * framework in the services' registry.
 */
class Spi {
public:
    explicit Spi(Services& services);
    ~Spi();

    static const BryMgmtSpiPortalAccessor* accessor();

    /** For tulCommonAttach: notes the run in the services. */
    static void scriptRan(const TulCommonScriptRun_1* run);

    Spi(const Spi&) = delete;
    Spi& operator=(const Spi&) = delete;
};

}  // namespace TulNode

#endif
