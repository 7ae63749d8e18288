#include <cstdlib>
#include <string>

#include "BryReturn.h"

/*
 * Another component, whose author chose names that ours has too, and hides none of them. Compiled twice: as the
 * stranger, whose functions must never be called by anybody else, and as a library that calls its own.
 */

namespace TulSshdManagement {

class TulSshdManagementComponent {
public:
    BryReturnT initialize(const char* configuration);
    void terminate();
    std::string getDnValue(const std::string& classPath);
};

#ifdef CALLS_ITS_OWN
constexpr BryReturnT answer = 1;
#else
constexpr BryReturnT answer = 2;
#endif

BryReturnT TulSshdManagementComponent::initialize(const char* /*configuration*/) {
    return answer;
}

void TulSshdManagementComponent::terminate() {
    std::abort();
}

std::string TulSshdManagementComponent::getDnValue(const std::string& /*classPath*/) {
    std::abort();
}

}  // namespace TulSshdManagement

extern "C" BryReturnT initializeItsOwn() {
    return TulSshdManagement::TulSshdManagementComponent().initialize(nullptr);
}
