#include "ComponentHost.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <fstream>
#include <stdexcept>

#include "TulCommon_1.h"
#include "framework.h"

namespace TulBench {

namespace {

namespace fs = std::filesystem;

constexpr const char* configuration =
    "<TulConfiguration><TulSshdManager><sshdManagement>true</sshdManagement><cliPort>2022</cliPort>"
    "<netconfPort>2830</netconfPort><renegotiationTime>3600</renegotiationTime></TulSshdManager></TulConfiguration>";
constexpr const char* cliSshPattern = "^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$";

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

fs::path folderWithAdapter() {
    std::string folder = (fs::temp_directory_path() / "tul-bench-XXXXXX").string();
    require(mkdtemp(folder.data()) != nullptr, "no temporary folder");
    const fs::path script = fs::path(folder) / "vorma";
    std::ofstream(script) << "#!/bin/sh\n[ \"$1\" != spi-revision ] || echo 1.8.0\n";
    fs::permissions(script, fs::perms::owner_all);
    return folder;
}

}  // namespace

ComponentHost::ComponentHost(const std::string& library) : _scripts(folderWithAdapter()) {
    frameworkLogLevel = 6;
    require(frameworkAttach(_scripts.c_str()) == BRY_OK, "libtul_common does not take this framework");
    _library = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    require(_library != nullptr, "the component's library cannot be loaded");
    const auto init = reinterpret_cast<BryLcmInitT>(dlsym(_library, BRY_LCM_INIT_SYMBOL));
    require(init != nullptr && init(frameworkAccessor(), configuration) == BRY_OK, "bryLCMinit failed");
}

ComponentHost::~ComponentHost() {
    frameworkHeld.component->stop(BRY_REASON_NORMAL);
    reinterpret_cast<BryLcmTerminateT>(dlsym(_library, BRY_LCM_TERMINATE_SYMBOL))();
    dlclose(_library);
    tulCommonDetach();
    fs::remove_all(_scripts);
}

void ComponentHost::start() {
    frameworkForget();
    require(frameworkHeld.component->start(BRY_REASON_NORMAL) == BRY_OK, "start failed");
}

void ComponentHost::deliver(BryOamSpiCmEvent_Notification_1T& notification) {
    require(frameworkDeliver(cliSshPattern, &notification), "nobody takes the notification");
}

Command ComponentHost::adapter(const Command& arguments) const {
    Command command{(_scripts / "vorma").string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

}  // namespace TulBench
