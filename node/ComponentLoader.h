#ifndef TUL_NODE_COMPONENT_LOADER_H
#define TUL_NODE_COMPONENT_LOADER_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "BryMgmtSpiComponent_2.h"
#include "Library.h"
#include "Services.h"

namespace TulNode {

/** The rung of the ladder on which a component could not be brought up, and why. */
class LoadFailure : public std::runtime_error {
public:
    LoadFailure(const std::string& file, const std::string& rung, const std::string& why)
        : std::runtime_error(file + ": " + rung + ": " + why), _rung(rung) {}

    /** "file", "load", "symbols", "init", "record", "dependencies" or "start". */
    const std::string& rung() const { return _rung; }

private:
    std::string _rung;
};

/**
 * Brings one component library up and down.
 *
 * What it does wrong is written to the journal as misbehaviour and put right. Its notifications are held back
 * from the moment it is asked to stop until its start has returned. One thread, never a callback's.
 */
class ComponentLoader {
public:
    enum class State { Unloaded, Loaded, Started };

    /** The accessor is what the component gets first. */
    ComponentLoader(Services& services, const BryMgmtSpiPortalAccessor* accessor);

    /** Unloads. */
    ~ComponentLoader();  // NOLINT(bugprone-exception-escape): see there

    /**
     * The rungs file to dependencies. A null configuration is passed on as such.
     * LoadFailure: nothing of the component is left then. Refusal when one is loaded.
     */
    void load(const std::string& file, const char* configuration);

    /** The rung start; on LoadFailure the component stays loaded. Refusal when it is not loaded, or started. */
    void start(BryStateChangeReason reason);

    /** Its result; the component counts as stopped whatever it is. Refusal when it is not started. */
    BryReturnT stop(BryStateChangeReason reason);

    /** Stops it if need be, terminates and unloads it, after the callbacks under way. 0, or the result of stop. */
    BryReturnT unload(BryStateChangeReason reason);

    State state() const { return _state; }

    /** The component's name; empty when unloaded. */
    std::string name() const { return _registered.empty() ? "" : _registered.front()->componentName; }

    ComponentLoader(const ComponentLoader&) = delete;
    ComponentLoader& operator=(const ComponentLoader&) = delete;

private:
    void open(const std::string& file);
    void initialise(const std::string& file, const char* configuration);
    void checkDependencies(const std::string& file);
    void terminate();
    void removeLeftovers();
    void close();

    template <class Call>
    BryReturnT guarded(const char* what, Call&& call);

    Services& _services;
    const BryMgmtSpiPortalAccessor* _accessor;
    State _state = State::Unloaded;
    std::unique_ptr<Library> _library;
    BryLcmInitT _init = nullptr;
    BryLcmTerminateT _terminate = nullptr;
    std::vector<BryMgmtSpiComponent_2*> _registered; /**< by its entry points; the first is the component */
};

}  // namespace TulNode

#endif
