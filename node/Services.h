#ifndef TUL_NODE_SERVICES_H
#define TUL_NODE_SERVICES_H

#include <functional>
#include <string>
#include <utility>

#include "ComponentRegistry.h"
#include "EventRouter.h"
#include "Journal.h"
#include "MoStore.h"
#include "RunLog.h"
#include "TransactionMaster.h"
#include "ValueLedger.h"

namespace TulNode {

/** Who opened a transaction. */
inline constexpr const char* ownerComponent = "component";
inline constexpr const char* ownerOperator = "operator";

/** All that the node has to offer to a component. */
struct Services {
    /** State file as for MoStore, clock as for TransactionMaster. */
    explicit Services(const std::string& stateFile, TransactionMaster::Clock clock = std::chrono::steady_clock::now)
        : store(stateFile),
          transactions(
              store, [this](Commit commit) { publish(std::move(commit)); }, std::move(clock)) {}

    Journal journal;
    RunLog runs;
    ValueLedger values;
    ComponentRegistry registry{journal};
    EventRouter router{journal};
    MoStore store;
    TransactionMaster transactions;

    /** Gets every change, in order, from within the commit. Set before the first commit; must not call back. */
    std::function<void(const MoChange&)> onChange;

private:
    void publish(Commit commit) {
        if (onChange) {
            for (const MoChange& change : *commit) {
                onChange(change);
            }
        }
        router.publish(std::move(commit));
    }
};

}  // namespace TulNode

#endif
