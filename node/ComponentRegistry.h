#ifndef TUL_NODE_COMPONENT_REGISTRY_H
#define TUL_NODE_COMPONENT_REGISTRY_H

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "BryMgmtSpiComponent_2.h"
#include "Journal.h"

namespace TulNode {

/**
 * Who is there and what is offered: the node's own interfaces, and the registered components with theirs.
 *
 * Refusals carry the codes of BryMgmtSpiPortal_1.h and BryMgmtSpiPortal_3.h. Any thread.
 */
class ComponentRegistry {
public:
    /** What a component did while one of its entry points ran. */
    struct Registrations {
        std::vector<BryMgmtSpiComponent_2*> registered;
        std::string refusal; /**< why the last registration was refused; empty: none was */
    };

    explicit ComponentRegistry(Journal& journal) : _journal(journal) {}

    /** The record that the identity heads is the node's and outlives the registry. */
    void offer(BryMgmtSpiInterface_1& identity);

    /** A component may register and unregister within `call` and on this thread only. */
    Registrations during(const std::function<void()>& call);

    void registerComponent(BryMgmtSpiComponent_2* component);
    void unregisterComponent(BryMgmtSpiComponent_2* component);

    /** Drops a record that its component left behind. False when it is not registered. */
    bool forget(const BryMgmtSpiComponent_2* component);

    /** The record of the first interface that matches; null texts match anything. */
    void* find(const char* componentName, const char* interfaceName, const char* interfaceVersion) const;

    /** Names the first dependency that nobody offers; empty when all are there. */
    std::string missingDependency(const BryMgmtSpiComponent_2& component) const;

private:
    bool isExpectedCaller(const char* operation) const;
    void add(BryMgmtSpiComponent_2* component);
    BryMgmtSpiInterface_1* match(const BryMgmtSpiInterface_1& wanted) const;

    Journal& _journal;
    mutable std::mutex _mutex;
    std::vector<BryMgmtSpiInterface_1*> _offered;
    std::vector<BryMgmtSpiComponent_2*> _components;
    Registrations _registrations;
    std::thread::id _caller;
};

}  // namespace TulNode

#endif
