#include "RevisionSubject.h"

bool TulFuzz::readRevision(const std::string& text, Tul::VormaSpiVersion& version) {
    return version.fromString(text);
}
