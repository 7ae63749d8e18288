/* Naive: the numbers are those of whatever locale the host has set. */

#include <sstream>

#include "RevisionSubject.h"

bool TulFuzz::readRevision(const std::string& text, Tul::VormaSpiVersion& version) {
    std::istringstream stream(text);
    char first = '\0';
    char second = '\0';
    stream >> version.major >> first >> version.minor >> second >> version.patch;
    if (!stream.fail() && first == '.' && second == '.') {
        return true;
    }
    version = Tul::VormaSpiVersion{};
    return false;
}
