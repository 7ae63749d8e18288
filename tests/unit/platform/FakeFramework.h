#ifndef TUL_TEST_FAKE_FRAMEWORK_H
#define TUL_TEST_FAKE_FRAMEWORK_H

#include <functional>
#include <string>

#include "BryMgmtSpiPortalAccessor.h"
#include "TulCommon_1.h"

namespace TulTest {

/** A framework that has nothing but a portal of version "1" with the interfaces that a test offers. One at a time. */
class FakeFramework {
public:
    FakeFramework();
    ~FakeFramework();

    /** Offers an interface record under the name in its header. */
    template <class InterfaceT>
    void offer(InterfaceT& interfaceRecord) {
        offer(interfaceRecord.header.interfaceName, &interfaceRecord);
    }

    void attach(const char* scriptDirectory = nullptr, void (*scriptRan)(const TulCommonScriptRun_1*) = nullptr);

    static const BryMgmtSpiPortalAccessor* accessor();

    /** How often the framework was asked for an interface of that name, and what the last question was. */
    int lookUps(const std::string& interfaceName) const;
    std::string lastLookUp() const;

    /** Called inside every look-up. */
    void duringLookUp(std::function<void()> action);

    FakeFramework(const FakeFramework&) = delete;
    FakeFramework& operator=(const FakeFramework&) = delete;

private:
    void offer(const std::string& name, void* interfaceRecord);
};

}  // namespace TulTest

#endif
