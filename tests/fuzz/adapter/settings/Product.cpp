#include "SettingsSubject.h"

Vorma::Configuration TulFuzz::readSettings(const std::string& text, const std::string& file) {
    return Vorma::Configuration::parse(text, file);
}
