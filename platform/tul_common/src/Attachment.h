#ifndef TUL_ATTACHMENT_H
#define TUL_ATTACHMENT_H

#include <string>

#include "BryMgmtSpiInterface_1.h"
#include "TulCommon_1.h"

namespace Tul {

/** What tulCommonAttach was given; without a framework a null accessor and the installed script folder. */
struct Attachment {
    const BryMgmtSpiPortalAccessor* portalAccessor = nullptr;
    std::string scriptDirectory = TUL_DEFAULT_SCRIPT_DIRECTORY;
    void (*scriptRan)(const TulCommonScriptRun_1* run) = nullptr;

    /** A copy of the one in force. Any thread. */
    static Attachment current();

    /** The accessor of the one in force, without copying the rest. Any thread, no allocation. */
    static const BryMgmtSpiPortalAccessor* currentAccessor() noexcept;
};

/** Asks the framework behind an accessor for an interface; BRY_NOT_FOUND for a null accessor. */
BryReturnT findInterface(const BryMgmtSpiPortalAccessor* accessor, const BryMgmtSpiInterface_1& id,
                         void** interfaceRecord);

}  // namespace Tul

#endif
