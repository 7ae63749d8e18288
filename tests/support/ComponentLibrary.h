#ifndef TUL_TEST_COMPONENT_LIBRARY_H
#define TUL_TEST_COMPONENT_LIBRARY_H

#include <dlfcn.h>

#include <string>

#include "RecordingFramework.h"

namespace TulTest {

/**
 * The built component library, loaded as a framework does it and driven through its entry points and its record
 * only. Unloaded at the end: every object starts from a fresh library.
 */
class ComponentLibrary {
public:
    /** Loads a file with a mode of dlopen. */
    explicit ComponentLibrary(RecordingFramework& framework, const std::string& file = path(), int mode = RTLD_LOCAL);
    ~ComponentLibrary();

    BryReturnT init(const std::string& configuration) { return init(configuration.c_str()); }
    BryReturnT init(const char* configuration) { return init(_framework.accessor(), configuration); }
    BryReturnT init(const BryMgmtSpiPortalAccessor* accessor, const char* configuration);
    BryReturnT start(BryStateChangeReason reason = BRY_REASON_NORMAL);
    BryReturnT stop(BryStateChangeReason reason = BRY_REASON_NORMAL);
    void terminate();

    /** Unloads now; the object is of no use afterwards. */
    void unload();

    /** The file of the library; the environment variable TUL_TEST_COMPONENT_LIBRARY names another one. */
    static std::string path();

    /** True while the file is mapped into this process. */
    static bool isMapped(const std::string& file = path());

    ComponentLibrary(const ComponentLibrary&) = delete;
    ComponentLibrary& operator=(const ComponentLibrary&) = delete;

private:
    template <class FunctionT>
    FunctionT symbol(const char* name) const;

    RecordingFramework& _framework;
    void* _library;
};

}  // namespace TulTest

#endif
