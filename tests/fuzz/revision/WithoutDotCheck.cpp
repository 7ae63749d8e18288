/* Naive: any letter passes for a dot. */

#include <sstream>

#include "RevisionSubject.h"

bool TulFuzz::readRevision(const std::string& text, Tul::VormaSpiVersion& version) {
    std::istringstream stream(text);
    char dot = '\0';
    if (stream >> version.major >> dot >> version.minor >> dot >> version.patch) {
        return true;
    }
    version = Tul::VormaSpiVersion{};
    return false;
}
