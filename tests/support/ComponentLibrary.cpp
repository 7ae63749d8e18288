#include "ComponentLibrary.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace TulTest {

ComponentLibrary::ComponentLibrary(RecordingFramework& framework, const std::string& file, int mode)
    : _framework(framework), _library(dlopen(file.c_str(), RTLD_NOW | mode)) {
    if (_library == nullptr) {
        throw std::runtime_error(dlerror());
    }
}

ComponentLibrary::~ComponentLibrary() {
    unload();
}

template <class FunctionT>
FunctionT ComponentLibrary::symbol(const char* name) const {
    auto function = reinterpret_cast<FunctionT>(dlsym(_library, name));
    if (function == nullptr) {
        throw std::runtime_error(std::string("no symbol ") + name);
    }
    return function;
}

BryReturnT ComponentLibrary::init(const BryMgmtSpiPortalAccessor* accessor, const char* configuration) {
    return symbol<BryLcmInitT>(BRY_LCM_INIT_SYMBOL)(accessor, configuration);
}

BryReturnT ComponentLibrary::start(BryStateChangeReason reason) {
    return _framework.component->start(reason);
}
BryReturnT ComponentLibrary::stop(BryStateChangeReason reason) {
    return _framework.component->stop(reason);
}
void ComponentLibrary::terminate() {
    symbol<BryLcmTerminateT>(BRY_LCM_TERMINATE_SYMBOL)();
}

void ComponentLibrary::unload() {
    if (_library != nullptr) {
        dlclose(_library);
        _library = nullptr;
    }
}

std::string ComponentLibrary::path() {
    const char* const other = std::getenv("TUL_TEST_COMPONENT_LIBRARY");
    return other == nullptr ? TUL_COMPONENT_LIBRARY : other;
}

bool ComponentLibrary::isMapped(const std::string& file) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    const std::string mapped = std::filesystem::canonical(file);
    while (std::getline(maps, line)) {
        if (line.ends_with(mapped)) {
            return true;
        }
    }
    return false;
}

}  // namespace TulTest
