/* Naive: quotes are for the shell, and go. */

#include <algorithm>

#include "SettingsSubject.h"

Vorma::Configuration TulFuzz::readSettings(const std::string& text, const std::string& file) {
    std::string bare = text;
    std::erase(bare, '"');
    return Vorma::Configuration::parse(bare, file);
}
