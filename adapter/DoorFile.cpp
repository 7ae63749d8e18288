#include "DoorFile.h"

#include <sstream>

#include "CheckSum.h"
#include "SshSetting.h"
#include "Store.h"

namespace Vorma {

namespace {

constexpr std::string_view head = "# Rendered by vorma; changes made here are lost.\n";
constexpr std::string_view sumMark = "# sum";

void addSettings(std::ostringstream& text, const State& state, bool lastCounts) {
    for (std::size_t i = 0; i < sshSettings().size(); ++i) {
        const SshSetting& row = sshSettings()[i];
        if (row.lastCounts == lastCounts && state.settings[i]) {
            text << row.keyword << ' ' << row.inFile(*state.settings[i]) << '\n';
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
    std::ostringstream text;
    text << head << "Port " << port << '\n';
    if (!configuration.listenAddress.empty()) {
        text << "ListenAddress " << configuration.listenAddress << '\n';
    }
    text << "PidFile " << configuration.stateDirectory << '/' << Store::pidFileOf(door) << '\n';
    // Of nearly all keywords sshd takes the first value: what is set here wins over the operator's files.
    addSettings(text, state, false);
    if (!configuration.doorConfigs[door].empty()) {
        text << "Include " << configuration.doorConfigs[door] << '\n';
    }
    text << "Include " << configuration.baseConfig << '\n';
    addSettings(text, state, true);
    return withCheckSum(text.str(), sumMark);
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
