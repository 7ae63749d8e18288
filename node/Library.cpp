#include "Library.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace TulNode {

namespace {

/** Calls `found` with the range and "device inode" of each mapping of the process until it returns true. */
template <class Found>
bool anyMapping(Found&& found) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        std::istringstream words(line);
        std::string range;
        std::string permissions;
        std::string offset;
        std::string device;
        std::string inode;
        words >> range >> permissions >> offset >> device >> inode;
        device.append(" ").append(inode);
        if (found(range, device)) {
            return true;
        }
    }
    return false;
}

bool covers(const std::string& range, std::uintptr_t address) {
    const std::size_t dash = range.find('-');
    return std::stoull(range, nullptr, 16) <= address && address < std::stoull(range.substr(dash + 1), nullptr, 16);
}

/** The path alone would not do: a file that was replaced since is listed under another name. */
std::string fileMappedAt(std::uintptr_t address) {
    std::string result;
    anyMapping([&](const std::string& range, const std::string& fileId) {
        result = fileId;
        return covers(range, address);
    });
    return result;
}

link_map* linkMapOf(void* handle) {
    link_map* map = nullptr;
    dlinfo(handle, RTLD_DI_LINKMAP, &map);
    return map;
}

}  // namespace

Library::Library(const std::string& file) : _handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (_handle == nullptr) {
        throw std::runtime_error(dlerror());
    }
    _mapping = fileMappedAt(reinterpret_cast<std::uintptr_t>(linkMapOf(_handle)->l_ld));
}

Library::~Library() {
    close();
}

void* Library::ownSymbol(const char* name) const {
    void* symbol = dlsym(_handle, name);
    Dl_info info;
    void* owner = nullptr;
    if (symbol == nullptr || dladdr1(symbol, &info, &owner, RTLD_DL_LINKMAP) == 0) {
        return nullptr;
    }
    return owner == linkMapOf(_handle) ? symbol : nullptr;
}

bool Library::close() {
    if (_handle != nullptr) {
        dlclose(_handle);
        _handle = nullptr;
    }
    return !anyMapping([this](const std::string&, const std::string& fileId) { return fileId == _mapping; });
}

}  // namespace TulNode
