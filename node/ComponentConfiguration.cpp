#include "ComponentConfiguration.h"

#include "Defaults.h"
#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

std::string allowed(const ComponentConfiguration::Setting& setting) {
    return setting.maximum == 0
               ? "true or false"
               : "a number from " + std::to_string(setting.minimum) + " to " + std::to_string(setting.maximum);
}

bool isAllowed(const ComponentConfiguration::Setting& setting, const std::string& value) {
    if (setting.maximum == 0) {
        return value == "true" || value == "false";
    }
    const auto number = toNumber(value);
    return number && *number >= setting.minimum && *number <= setting.maximum;
}

std::string byDefault(const std::string& name) {
    const std::string_view text = defaultConfiguration;
    const std::string tag = "<" + name + ">";
    const std::size_t begin = text.find(tag) + tag.size();
    return std::string(text.substr(begin, text.find('<', begin) - begin));
}

}  // namespace

std::vector<ComponentConfiguration::Setting> ComponentConfiguration::builtIn() {
    std::vector<Setting> settings = {
        {"sshdManagement", "", 0, 0},
        {"cliPort", "", 1, 65535},
        {"netconfPort", "", 1, 65535},
        {"renegotiationTime", "", 0, 2147483647},  // sshd takes no more
    };
    for (Setting& setting : settings) {
        setting.value = byDefault(setting.name);
    }
    return settings;
}

void ComponentConfiguration::set(const std::string& name, const std::string& value) {
    if (_fileText) {
        throw Refusal(BRY_INVALID_ARGUMENT,
                      "the configuration comes from " + _file + "; \"configure default\" first");
    }
    std::vector<std::string> names;
    for (Setting& setting : _settings) {
        names.push_back(setting.name);
        if (setting.name != name) {
            continue;
        }
        if (!isAllowed(setting, value)) {
            throw Refusal(BRY_OUT_OF_RANGE, name + " is \"" + escape(value) + "\"; allowed: " + allowed(setting));
        }
        setting.value = value;
        return;
    }
    throw Refusal(BRY_NOT_FOUND, "there is no setting \"" + escape(name) + "\"; there are: " + join(names, ", "));
}

void ComponentConfiguration::useFile(const std::string& file) {
    for (const Setting& setting : _settings) {
        if (file == setting.name) {
            throw Refusal(BRY_INVALID_ARGUMENT,
                          "\"" + file + "\" needs a value after a \"=\"; allowed: " + allowed(setting));
        }
    }
    _fileText = readFile(file);
    _file = file;
}

std::string ComponentConfiguration::xml() const {
    if (_fileText) {
        return *_fileText;
    }
    std::string text = "<TulConfiguration>\n  <TulSshdManager>\n";
    for (const Setting& setting : _settings) {
        text += "    <" + setting.name + ">" + setting.value + "</" + setting.name + ">\n";
    }
    return text + "  </TulSshdManager>\n</TulConfiguration>\n";
}

}  // namespace TulNode
