#ifndef TUL_BENCH_COMPONENT_HOST_H
#define TUL_BENCH_COMPONENT_HOST_H

#include <filesystem>
#include <string>

#include "BryMgmtSpiComponent_2.h"
#include "BryOamSpiCmEvent_Notification_1.h"
#include "Script.h"

namespace TulBench {

/**
 * The real library, loaded and initialised in the smallest framework, with an adapter that does nothing but tell its
 * revision. One at a time. std::runtime_error when something does not do its part.
 */
class ComponentHost {
public:
    explicit ComponentHost(const std::string& library);
    ~ComponentHost();

    /** Begins with an empty node: neither of the component's MOs is there. */
    void start();

    /** As the router hands a change of CliSsh to the component. Returns when the handler has. */
    void deliver(BryOamSpiCmEvent_Notification_1T& notification);

    /** The adapter's command line. */
    Command adapter(const Command& arguments) const;

    ComponentHost(const ComponentHost&) = delete;
    ComponentHost& operator=(const ComponentHost&) = delete;

private:
    std::filesystem::path _scripts;
    void* _library = nullptr;
};

}  // namespace TulBench

#endif
