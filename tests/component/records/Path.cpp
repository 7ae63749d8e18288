#include "Path.h"

#include <cctype>

#include "Portal.h"

namespace TulTest {

void Path::lead(RecordedNode& node, int level) const {
    given(node);
    node.recorder.calls.clear();
    node.recorder.level = level;
}

std::string Path::place(int level) const {
    const std::string operation = name.substr(0, name.find('/'));
    return "streams/" + operation + ".txt, " + name + " at the level " + std::to_string(level) + ": ";
}

std::string testNameOf(const testing::TestParamInfo<Path>& path) {
    std::string name = path.param.name;
    for (char& character : name) {
        character = std::isalnum(static_cast<unsigned char>(character)) != 0 ? character : '_';
    }
    return name;
}

void withSettings(RecordedNode& node) {
    node.framework.givenMo(cliSshDn);
    node.framework.givenMo(netconfSshDn);
    mo(oamCmDn, "dscp", uint8(46))(node);
    node.framework.givenMo(sshDn, {{"selectedCiphers", strings({"a", "b"})},
                                   {"selectedKeyExchanges", strings({"k"})},
                                   {"selectedMacs", strings({"m"})}});
}

void withoutMos(RecordedNode& node) {
    node.framework.model.clear();
}

void withoutRouter(RecordedNode& node) {
    Tul::Portal::instance().reset(false);
    node.framework.results["getInterface TulOamSpiEventRouter"] = -4;
}

Paths returningPaths() {
    Paths paths;
    for (const Paths& more :
         {entryPaths(), configurationPaths(), startPaths(), stopPaths(), instancePaths(), settingPaths(),
          accessorPaths(), consumerPaths(), adapterPaths(), handlerPaths(), libraryPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

}  // namespace TulTest
