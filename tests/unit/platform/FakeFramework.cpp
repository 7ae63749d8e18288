#include "FakeFramework.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <mutex>

#include "BryMgmtSpiPortal_1.h"

namespace TulTest {

namespace {

struct State {
    std::mutex mutex;
    std::map<std::string, void*> interfaces;
    std::map<std::string, int> lookUps;
    std::string lastLookUp;
    std::function<void()> duringLookUp;
};

State* state = nullptr;

const char* orNull(const char* text) {
    return text == nullptr ? "null" : text;
}

BryReturnT getInterface(const char* componentName, const char* interfaceName, const char* interfaceVersion,
                        void** interfaceRecord) {
    std::function<void()> action;
    {
        const std::lock_guard lock(state->mutex);
        ++state->lookUps[interfaceName];
        state->lastLookUp = std::string(orNull(componentName)) + " " + interfaceName + " " + orNull(interfaceVersion);
        action = state->duringLookUp;
    }
    if (action) {
        action();
    }
    const std::lock_guard lock(state->mutex);
    const auto found = state->interfaces.find(interfaceName);
    if (found == state->interfaces.end()) {
        return BRY_NOT_FOUND;
    }
    *interfaceRecord = found->second;
    return BRY_OK;
}

void* getPortal(const char* interfaceVersion) {
    static BryMgmtSpiPortal_1 portal{{"Test", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
    return std::strcmp(interfaceVersion, "1") == 0 ? &portal : nullptr;
}

}  // namespace

FakeFramework::FakeFramework() {
    state = new State;
}

FakeFramework::~FakeFramework() {
    tulCommonDetach();
    delete state;
    state = nullptr;
}

void FakeFramework::offer(const std::string& name, void* interfaceRecord) {
    const std::lock_guard lock(state->mutex);
    state->interfaces[name] = interfaceRecord;
}

void FakeFramework::attach(const char* scriptDirectory, void (*scriptRan)(const TulCommonScriptRun_1*)) {
    const TulCommonSettings_1 settings{accessor(), scriptDirectory, scriptRan};
    ASSERT_EQ(BRY_OK, tulCommonAttach(&settings));
}

const BryMgmtSpiPortalAccessor* FakeFramework::accessor() {
    static const BryMgmtSpiPortalAccessor accessor{getPortal};
    return &accessor;
}

int FakeFramework::lookUps(const std::string& interfaceName) const {
    const std::lock_guard lock(state->mutex);
    return state->lookUps[interfaceName];
}

std::string FakeFramework::lastLookUp() const {
    const std::lock_guard lock(state->mutex);
    return state->lastLookUp;
}

void FakeFramework::duringLookUp(std::function<void()> action) {
    const std::lock_guard lock(state->mutex);
    state->duringLookUp = std::move(action);
}

}  // namespace TulTest
