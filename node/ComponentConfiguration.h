#ifndef TUL_NODE_COMPONENT_CONFIGURATION_H
#define TUL_NODE_COMPONENT_CONFIGURATION_H

#include <optional>
#include <string>
#include <vector>

namespace TulNode {

/** The XML text that the component gets when it is initialised: built from settings, or taken from a file. */
class ComponentConfiguration {
public:
    struct Setting {
        std::string name;
        std::string value;
        long long minimum; /**< of a number */
        long long maximum; /**< of a number; 0: the setting is true or false */
    };

    /** Refusal for an unknown name, a value that is not allowed, or when the text comes from a file. */
    void set(const std::string& name, const std::string& value);

    /** Reads the file now. std::runtime_error; Refusal for the name of a setting, which lacks its value then. */
    void useFile(const std::string& file);

    /** Makes the settings of now those that useDefaults goes back to: the node's options are its defaults. */
    void keepAsDefaults() { _defaults = _settings; }

    /** Drops the file and goes back to the default settings. */
    void useDefaults() {
        _settings = _defaults;
        _fileText.reset();
    }

    std::string xml() const;
    const std::vector<Setting>& settings() const { return _settings; }

private:
    static std::vector<Setting> builtIn();

    std::vector<Setting> _settings = builtIn();
    std::vector<Setting> _defaults = _settings;
    std::optional<std::string> _fileText;
    std::string _file;
};

}  // namespace TulNode

#endif
