#include "DoorFile.h"

#include "CheckSum.h"
#include "SshSetting.h"
#include "Store.h"

namespace Vorma {

namespace {

constexpr std::string_view head = "# Rendered by vorma; changes made here are lost.\n";
constexpr std::string_view sumMark = "# sum";

void addLine(std::string& text, const std::string& keyword, const std::string& value) {
    text += keyword + " " + value + "\n";
}

void addSettings(std::string& text, const State& state, bool lastCounts) {
    for (std::size_t i = 0; i < sshSettings().size(); ++i) {
        const SshSetting& row = sshSettings()[i];
        if (row.lastCounts == lastCounts && state.settings[i]) {
            addLine(text, row.keyword, row.inFile(*state.settings[i]));
        }
    }
}

std::string valueOf(const std::string& text, const std::string& keyword) {
    const std::size_t at = text.find("\n" + keyword + " ");
    if (at == std::string::npos) {
        return "";
    }
    const std::size_t begin = at + keyword.size() + 2;
    return text.substr(begin, text.find('\n', begin) - begin);
}

}  // namespace

std::string DoorFile::render(std::size_t door, int port, const State& state, const Configuration& configuration) {
    std::string text(head);
    addLine(text, "Port", std::to_string(port));
    if (!configuration.listenAddress.empty()) {
        addLine(text, "ListenAddress", configuration.listenAddress);
    }
    addLine(text, "PidFile", configuration.stateDirectory + "/" + Store::pidFileOf(door));
    // Of nearly all keywords sshd takes the first value: what is set here wins over the operator's files.
    addSettings(text, state, false);
    if (!configuration.doorConfigs[door].empty()) {
        addLine(text, "Include", configuration.doorConfigs[door]);
    }
    addLine(text, "Include", configuration.baseConfig);
    addSettings(text, state, true);
    return withCheckSum(text, sumMark);
}

std::optional<int> DoorFile::portIn(const std::string& text) {
    const long long port = vouchedFor(text, sumMark) ? number(valueOf(text, "Port"), 1, mostPort) : -1;
    return port > 0 ? std::optional(static_cast<int>(port)) : std::nullopt;
}

std::vector<Endpoint> DoorFile::endpointsIn(const std::string& text) {
    const std::optional<int> port = portIn(text);
    const std::string address = valueOf(text, "ListenAddress");
    std::vector<Endpoint> endpoints;
    for (const std::string& each :
         address.empty() ? std::vector<std::string>{"0.0.0.0", "::"} : std::vector{address}) {
        if (const auto endpoint = Endpoint::parse(each, port.value_or(0))) {
            endpoints.push_back(*endpoint);
        }
    }
    return endpoints;
}

}  // namespace Vorma
