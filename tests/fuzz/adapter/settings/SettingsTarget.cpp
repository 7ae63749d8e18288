/* Any bytes as vorma.conf, against a reference that knows which lines are allowed. */

#include <map>
#include <optional>

#include "Allowed.h"
#include "Refusal.h"
#include "SettingsSubject.h"
#include "Target.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;
using Vorma::Configuration;
using Settings = std::map<std::string, std::string>;

constexpr const char* aFile = "/x/vorma.conf";

const std::map<std::string, bool (*)(std::string_view)> allowed{
    {"STATE_DIR", isPath},         {"BASE_CONFIG", isPath},       {"CLISSH_CONFIG", isPath},
    {"NETCONFSSH_CONFIG", isPath}, {"LISTEN_ADDRESS", isAddress}, {"SSHD", isPath},
    {"SPI_REVISION", isRevision}};

/** Takes one line; false when it is not allowed. */
bool take(const std::string& line, Settings& settings) {
    const std::size_t sign = line.find('=');
    const auto key = allowed.find(line.substr(0, sign));
    if (line.empty() || line.front() == '#') {
        return true;
    }
    if (key == allowed.end() || sign == std::string::npos || !key->second(line.substr(sign + 1))) {
        return false;
    }
    settings[key->first] = line.substr(sign + 1);
    return true;
}

/** What a file sets; nothing when it is not allowed. */
std::optional<Settings> expectedSettings(const std::string& text) {
    Settings settings{{"SSHD", "/usr/sbin/sshd"}, {"SPI_REVISION", "1.8.0"}};
    for (const std::string& line : split(text, '\n')) {
        if (!take(line, settings)) {
            return {};
        }
    }
    if (!settings.contains("STATE_DIR") || !settings.contains("BASE_CONFIG")) {
        return {};
    }
    std::string& store = settings["STATE_DIR"];
    while (store.size() > 1 && store.back() == '/') {
        store.pop_back();
    }
    return settings;
}

std::optional<Configuration> reading(const std::string& text) {
    try {
        return readSettings(text, aFile);
    } catch (const Vorma::Refusal& refusal) {
        require(refusal.code() == Vorma::Exit::Settings, "settings are refused with their code");
        require(std::string(refusal.what()).starts_with(aFile), "a refusal names the file");
        return {};
    }
}

Settings settingsOf(const Configuration& configuration) {
    Settings settings{
        {"STATE_DIR", configuration.stateDirectory},     {"BASE_CONFIG", configuration.baseConfig},
        {"CLISSH_CONFIG", configuration.doorConfigs[0]}, {"NETCONFSSH_CONFIG", configuration.doorConfigs[1]},
        {"LISTEN_ADDRESS", configuration.listenAddress}, {"SSHD", configuration.sshd},
        {"SPI_REVISION", configuration.revision}};
    std::erase_if(settings, [](const auto& setting) { return setting.second.empty(); });
    return settings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::optional<Settings> expected = expectedSettings(text);
    const std::optional<Configuration> configuration = reading(text);
    require(configuration.has_value() == expected.has_value(), "taken exactly when the reference takes it");
    require(!configuration || settingsOf(*configuration) == *expected, "each setting has the value of the reference");
    return 0;
}
