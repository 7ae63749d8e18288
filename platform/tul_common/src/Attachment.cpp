#include "Attachment.h"

#include <mutex>
#include <new>

#include "BryMgmtSpiPortal_1.h"
#include "LogSinks.h"
#include "Portal.h"
#include "TulExport.h"

namespace Tul {

namespace {

struct State {
    std::mutex mutex;
    Attachment attachment;
};

/** Never destroyed: threads of the host may still write records while it exits. */
State& state() {
    static State& state = *new State;
    return state;
}

BryReturnT attach(const TulCommonSettings_1& settings) {
    Attachment attachment;
    attachment.portalAccessor = settings.portalAccessor;
    attachment.scriptRan = settings.scriptRan;
    if (settings.scriptDirectory != nullptr) {
        attachment.scriptDirectory = settings.scriptDirectory;
    }
    {
        const std::lock_guard lock(state().mutex);
        if (state().attachment.portalAccessor != nullptr) {
            return BRY_ALREADY_EXISTS;
        }
        std::swap(state().attachment, attachment);
    }
    LogSinks::forget();
    Portal::instance().reset(true);
    return BRY_OK;
}

}  // namespace

Attachment Attachment::current() {
    const std::lock_guard lock(state().mutex);
    return state().attachment;
}

const BryMgmtSpiPortalAccessor* Attachment::currentAccessor() noexcept {
    const std::lock_guard lock(state().mutex);
    return state().attachment.portalAccessor;
}

BryReturnT findInterface(const BryMgmtSpiPortalAccessor* accessor, const BryMgmtSpiInterface_1& id,
                         void** interfaceRecord) {
    const auto* portal =
        accessor == nullptr ? nullptr : static_cast<const BryMgmtSpiPortal_1*>(accessor->getPortal("1"));
    if (portal == nullptr) {
        return BRY_NOT_FOUND;
    }
    return portal->getInterface(id.componentName, id.interfaceName, id.interfaceVersion, interfaceRecord);
}

}  // namespace Tul

TUL_EXPORT BryReturnT tulCommonAttach(const TulCommonSettings_1* settings) {
    if (settings == nullptr || settings->portalAccessor == nullptr) {
        return BRY_INVALID_ARGUMENT;
    }
    try {
        return Tul::attach(*settings);
    } catch (const std::bad_alloc&) {
        return BRY_NO_RESOURCES;
    }
}

TUL_EXPORT void tulCommonDetach() {
    {
        Tul::Attachment none;
        const std::lock_guard lock(Tul::state().mutex);
        std::swap(Tul::state().attachment, none);
    }
    Tul::LogSinks::forget();
    Tul::Portal::instance().reset(false);
}
