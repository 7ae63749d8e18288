/* Naive: of a key that comes twice the first value counts. */

#include <set>

#include "Allowed.h"
#include "SettingsSubject.h"

Vorma::Configuration TulFuzz::readSettings(const std::string& text, const std::string& file) {
    std::set<std::string> seen;
    std::string first;
    for (const std::string& line : split(text, '\n')) {
        if (seen.insert(line.substr(0, line.find('='))).second) {
            first += line + "\n";
        }
    }
    return Vorma::Configuration::parse(first, file);
}
