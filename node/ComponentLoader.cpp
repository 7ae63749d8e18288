#include "ComponentLoader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <utility>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

std::string whyNotReadable(const std::string& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        return "it is a folder";
    }
    return access(file.c_str(), R_OK) == 0 ? "" : std::strerror(errno);
}

}  // namespace

ComponentLoader::ComponentLoader(Services& services, const BryMgmtSpiPortalAccessor* accessor)
    : _services(services), _accessor(accessor) {}

// What is thrown here ends the process, rightly: a component that cannot be taken down would call into nothing.
// NOLINTNEXTLINE(bugprone-exception-escape)
ComponentLoader::~ComponentLoader() {
    unload(BRY_REASON_NORMAL);
}

/** A component's exception must not end the node: it is accused, and the call has failed. */
template <class Call>
BryReturnT ComponentLoader::guarded(const char* what, Call&& call) {
    try {
        return call();
    } catch (const std::exception& e) {
        _services.journal.accuse(std::string("throws from ") + what + ": " + e.what());
    } catch (...) {
        _services.journal.accuse(std::string("throws from ") + what);
    }
    return BRY_FAILED;
}

void ComponentLoader::load(const std::string& file, const char* configuration) {
    if (_state != State::Unloaded) {
        throw Refusal(BRY_ALREADY_EXISTS, name() + " is loaded already; unload it first");
    }
    _services.journal.setComponent(escape(std::filesystem::path(file).filename().string()));
    open(file);
    try {
        initialise(file, configuration);
        checkDependencies(file);
    } catch (const LoadFailure&) {
        terminate();
        close();
        throw;
    }
    _state = State::Loaded;
}

void ComponentLoader::open(const std::string& file) {
    if (const std::string why = whyNotReadable(file); !why.empty()) {
        throw LoadFailure(file, "file", why);
    }
    try {
        // A name without a slash would be looked for in the system's folders.
        _library = std::make_unique<Library>(std::filesystem::absolute(file));
    } catch (const std::runtime_error& e) {
        throw LoadFailure(file, "load", e.what());
    }
    _init = reinterpret_cast<BryLcmInitT>(_library->ownSymbol(BRY_LCM_INIT_SYMBOL));
    _terminate = reinterpret_cast<BryLcmTerminateT>(_library->ownSymbol(BRY_LCM_TERMINATE_SYMBOL));
    if (_init == nullptr || _terminate == nullptr) {
        close();
        throw LoadFailure(file, "symbols",
                          std::string("the library itself does not define ") +
                              (_init == nullptr ? BRY_LCM_INIT_SYMBOL : BRY_LCM_TERMINATE_SYMBOL));
    }
}

void ComponentLoader::initialise(const std::string& file, const char* configuration) {
    BryReturnT result = BRY_FAILED;
    const auto init = [&] { result = guarded(BRY_LCM_INIT_SYMBOL, [&] { return _init(_accessor, configuration); }); };
    const ComponentRegistry::Registrations made = _services.registry.during(init);
    _registered = made.registered;
    if (!made.refusal.empty()) {
        throw LoadFailure(file, "record", made.refusal);
    }
    if (result != BRY_OK) {
        throw LoadFailure(file, "init", std::string(BRY_LCM_INIT_SYMBOL) + " returned " + codeText(result));
    }
    if (_registered.size() != 1) {
        throw LoadFailure(file, "record",
                          std::to_string(_registered.size()) + " component records were registered instead of 1");
    }
}

void ComponentLoader::checkDependencies(const std::string& file) {
    const std::string missing = _services.registry.missingDependency(*_registered.front());
    if (!missing.empty()) {
        throw LoadFailure(file, "dependencies", "nobody offers " + missing);
    }
}

void ComponentLoader::start(BryStateChangeReason reason) {
    if (_state != State::Loaded) {
        throw Refusal(BRY_FAILED, _state == State::Started ? name() + " is started already"
                                                           : "no component is loaded; load one first");
    }
    const BryReturnT result = guarded("start", [&] { return _registered.front()->start(reason); });
    if (result != BRY_OK) {
        throw LoadFailure(name(), "start", "start returned " + codeText(result));
    }
    _state = State::Started;
    _services.router.hold(false);
}

BryReturnT ComponentLoader::stop(BryStateChangeReason reason) {
    if (_state != State::Started) {
        throw Refusal(BRY_FAILED, "no component is started");
    }
    _services.router.hold(true);
    _state = State::Loaded;
    const BryReturnT result = guarded("stop", [&] { return _registered.front()->stop(reason); });
    if (result != BRY_OK) {
        _services.journal.log(Error, "node", name() + " did not stop cleanly: " + codeText(result));
    }
    return result;
}

BryReturnT ComponentLoader::unload(BryStateChangeReason reason) {
    const BryReturnT result = _state == State::Started ? stop(reason) : BRY_OK;
    if (_state == State::Loaded) {
        terminate();
        close();
        _state = State::Unloaded;
    }
    return result;
}

void ComponentLoader::terminate() {
    const auto call = [this] {
        _terminate();
        return BRY_OK;
    };
    const auto made = _services.registry.during([&] { guarded(BRY_LCM_TERMINATE_SYMBOL, call); });
    _registered.insert(_registered.end(), made.registered.begin(), made.registered.end());
    removeLeftovers();
    _registered.clear();
}

void ComponentLoader::removeLeftovers() {
    Journal& journal = _services.journal;
    for (BryMgmtSpiComponent_2* record : _registered) {
        if (_services.registry.forget(record)) {
            journal.accuse("leaves its record registered");
        }
    }
    for (const std::string& consumer : _services.router.removeAll()) {
        journal.accuse("leaves " + consumer + " registered");
    }
    if (const std::size_t count = _services.values.outstanding(); count != 0) {
        journal.accuse("does not give " + std::to_string(count) + " value containers back");
    }
    // No accusation: after a change that was refused, a component may leave the rest to the time-out.
    for (const TransactionMaster::Handle handle : _services.transactions.unfinished(ownerComponent)) {
        journal.log(Information, "node",
                    "transaction " + std::to_string(handle) + " is left open; it ends by its time-out");
    }
}

void ComponentLoader::close() {
    if (!_library->close()) {
        _services.journal.accuse("is still mapped after it was unloaded");
    }
    _library.reset();
}

}  // namespace TulNode
