#include "Configuration.h"

#include <arpa/inet.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "Refusal.h"
#include "TrustedPath.h"

namespace Vorma {

namespace {

constexpr std::size_t longestPath = 255;
constexpr std::size_t longestRevision = 20;
constexpr std::size_t longestShown = 80;
constexpr std::size_t largestFile = std::size_t{64} * 1024;

constexpr const char* aPath = "an absolute path of letters, digits and ._/+@:=,-";

/** Paths end up as words of sshd's file, where blanks, quotes and wildcards mean something else. */
bool isPath(const std::string& text) {
    constexpr const char* allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._/+@:=,-";
    return text.starts_with('/') && text.size() <= longestPath &&
           text.find_first_not_of(allowed) == std::string::npos;
}

bool isAddress(const std::string& text) {
    in6_addr address;
    if (text.find('\0') != std::string::npos) {
        return false;  // what comes behind it would go unseen
    }
    return inet_pton(AF_INET, text.c_str(), &address) == 1 || inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

bool parseRevision(const std::string& text, Revision& revision) {
    int end = -1;
    return text.size() <= longestRevision && text.find_first_not_of("0123456789.") == std::string::npos &&
           std::sscanf(text.c_str(), "%9d.%9d.%9d%n", &revision.major, &revision.minor, &revision.patch, &end) == 3 &&
           end == static_cast<int>(text.size());
}

bool isRevision(const std::string& text) {
    Revision revision{};
    return parseRevision(text, revision);
}

/** A key, where its value goes, and what that may be. */
struct Key {
    std::string name;
    std::string Configuration::*value;
    bool (*isAllowed)(const std::string&);
    const char* allowed;
};

const Key keys[] = {
    {"STATE_DIR", &Configuration::stateDirectory, isPath, aPath},
    {"BASE_CONFIG", &Configuration::baseConfig, isPath, aPath},
    {"LISTEN_ADDRESS", &Configuration::listenAddress, isAddress, "one IP address"},
    {"SSHD", &Configuration::sshd, isPath, aPath},
    {"SPI_REVISION", &Configuration::revision, isRevision, "three numbers like 1.8.0"},
};

std::string allKeys() {
    std::string all;
    for (const Key& key : keys) {
        all += " " + key.name;
    }
    for (const DoorRow& door : doorRows) {
        all += std::string(" ") + door.setting;
    }
    return all;
}

/** The lines of the file, one by one, with what is needed to complain about them. */
class Reader {
public:
    Reader(const std::string& text, const std::string& file) : _text(text), _file(file) {
        _configuration.file = file;
    }

    Configuration read() {
        for (std::size_t at = 0; at < _text.size(); at = std::min(_text.find('\n', at), _text.size()) + 1) {
            ++_number;
            const std::string line = _text.substr(at, _text.find('\n', at) - at);
            if (!line.empty() && line[0] != '#') {
                const std::size_t sign = line.find('=');
                take(line.substr(0, sign), sign == std::string::npos ? line : line.substr(sign + 1));
            }
        }
        require("STATE_DIR", _configuration.stateDirectory);
        // Without it a door would be served with what is built into sshd: passwords, and root too.
        require("BASE_CONFIG", _configuration.baseConfig);
        std::string& store = _configuration.stateDirectory;
        store.erase(std::max<std::size_t>(store.find_last_not_of('/') + 1, 1));
        return _configuration;
    }

private:
    void take(const std::string& name, const std::string& value) {
        for (const Key& key : keys) {
            if (key.name == name) {
                check(name, value, key.isAllowed, key.allowed);
                _configuration.*key.value = value;
                return;
            }
        }
        for (std::size_t door = 0; door < doorCount; ++door) {
            if (name == doorRows[door].setting) {
                check(name, value, isPath, aPath);
                _configuration.doorConfigs[door] = value;
                return;
            }
        }
        refuseLine("'" + name.substr(0, longestShown) + "' is no setting; allowed are" + allKeys());
    }

    void check(const std::string& name, const std::string& value, bool (*isAllowed)(const std::string&),
               const char* allowed) const {
        if (!isAllowed(value)) {
            refuseLine(name + "='" + value.substr(0, longestShown) + "' must be " + allowed);
        }
    }

    [[noreturn]] void refuseLine(const std::string& why) const {
        throw Refusal(Exit::Settings, _file + " line " + std::to_string(_number) + ": " + why);
    }

    void require(const char* name, const std::string& value) const {
        if (value.empty()) {
            throw Refusal(Exit::Settings, _file + ": " + name + " is not set; it must be " + aPath);
        }
    }

    const std::string _text;
    const std::string _file;
    int _number = 0;
    Configuration _configuration;
};

std::string fromRoot(const std::string& path) {
    if (path.starts_with('/')) {
        return path;
    }
    char folder[PATH_MAX];
    if (getcwd(folder, sizeof folder) == nullptr) {
        throw Refusal(Exit::Settings, "the folder in which " + path + " is cannot be told: " + std::strerror(errno));
    }
    return std::string(folder) + "/" + path;
}

/** Complains about a file that a setting names, or that has the settings. */
template <class UseT>
auto usable(const std::string& what, UseT use) {
    try {
        return use();
    } catch (const std::system_error& error) {
        throw Refusal(Exit::Settings, what + " cannot be read: " + error.code().message());
    } catch (const Distrust& distrust) {
        throw Refusal(Exit::Settings, what + " is not used: " + distrust.what());
    }
}

}  // namespace

Revision Configuration::parsedRevision() const {
    Revision parsed{};
    parseRevision(revision, parsed);
    return parsed;
}

Configuration Configuration::besideProgram(const std::string& calledAs) {
    const std::size_t slash = calledAs.rfind('/');
    if (slash == std::string::npos) {
        // Somebody looked it up in PATH. An empty part there is the folder in which the caller happens to be.
        throw Refusal(Exit::Settings, "'" + calledAs.substr(0, longestShown) +
                                          "' was called without a path, so vorma.conf beside it cannot be found; "
                                          "call it by its path");
    }
    const std::string file = fromRoot(calledAs.substr(0, slash + 1) + "vorma.conf");
    return parse(usable(file, [&file] { return readTrusted(file, largestFile); }), file);
}

Configuration Configuration::parse(const std::string& text, const std::string& file) {
    return Reader(text, file).read();
}

void Configuration::checkFiles() const {
    if (access(sshd.c_str(), X_OK) != 0) {
        throw Refusal(Exit::Settings, file + ": SSHD=" + sshd + " cannot be run");
    }
    usable(file + ": " + sshd, [this] { return openTrusted(sshd, Kind::File); });
    usable(file + ": " + baseConfig, [this] { return openTrusted(baseConfig, Kind::File); });
    for (const std::string& config : doorConfigs) {
        if (!config.empty()) {
            usable(file + ": " + config, [&config] { return openTrusted(config, Kind::File); });
        }
    }
}

}  // namespace Vorma
