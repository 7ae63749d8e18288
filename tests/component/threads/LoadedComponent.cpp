#include "LoadedComponent.h"

#include <dlfcn.h>

#include <stdexcept>

#include "ComponentLibrary.h"

namespace TulTest {

namespace {

template <class FunctionT>
FunctionT symbol(void* library, const char* name) {
    return reinterpret_cast<FunctionT>(dlsym(library, name));
}

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

}  // namespace

LoadedComponent::LoadedComponent(LightFramework& framework)
    : _framework(framework), _library(dlopen(ComponentLibrary::path().c_str(), RTLD_NOW | RTLD_LOCAL)) {
    require(_library != nullptr, "the component's library cannot be loaded");
    const auto init = symbol<BryLcmInitT>(_library, BRY_LCM_INIT_SYMBOL);
    require(init(LightFramework::accessor(), configuration(true).c_str()) == BRY_OK, "init failed");
}

LoadedComponent::~LoadedComponent() {
    symbol<BryLcmTerminateT>(_library, BRY_LCM_TERMINATE_SYMBOL)();
    dlclose(_library);
}

void LoadedComponent::start() {
    require(_framework.component->start(BRY_REASON_NORMAL) == BRY_OK, "start failed");
}

void LoadedComponent::stop() {
    require(_framework.component->stop(BRY_REASON_NORMAL) == BRY_OK, "stop failed");
}

}  // namespace TulTest
