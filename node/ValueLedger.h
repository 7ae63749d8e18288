#ifndef TUL_NODE_VALUE_LEDGER_H
#define TUL_NODE_VALUE_LEDGER_H

#include <memory>
#include <mutex>
#include <unordered_map>

#include "Value.h"

namespace TulNode {

/** Keeps the value containers that the component has in its hands. Any thread. */
class ValueLedger {
public:
    TulMoAttributeValueContainer_3* issue(AttributeValue value) {
        auto record = std::make_unique<ValueRecord>(std::move(value));
        TulMoAttributeValueContainer_3* container = record->container();
        const std::lock_guard lock(_mutex);
        _issued.emplace(container, std::move(record));
        return container;
    }

    /** False when it is none that is out: never issued, or given back before. */
    bool giveBack(const TulMoAttributeValueContainer_3* container) {
        const std::lock_guard lock(_mutex);
        return _issued.erase(container) == 1;
    }

    /** How many are out. */
    std::size_t outstanding() const {
        const std::lock_guard lock(_mutex);
        return _issued.size();
    }

private:
    mutable std::mutex _mutex;
    std::unordered_map<const TulMoAttributeValueContainer_3*, std::unique_ptr<ValueRecord>> _issued;
};

}  // namespace TulNode

#endif
