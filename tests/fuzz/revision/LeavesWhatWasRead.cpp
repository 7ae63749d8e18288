/* Naive: a reading that fails leaves the numbers that were read before. */

#include <sstream>

#include "RevisionSubject.h"

bool TulFuzz::readRevision(const std::string& text, Tul::VormaSpiVersion& version) {
    std::istringstream stream(text);
    char first = '\0';
    char second = '\0';
    stream >> version.major >> first >> version.minor >> second >> version.patch;
    return !stream.fail() && first == '.' && second == '.';
}
