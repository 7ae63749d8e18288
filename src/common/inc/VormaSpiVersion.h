#ifndef TUL_VORMA_SPI_VERSION_H
#define TUL_VORMA_SPI_VERSION_H

#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <tuple>

#include "Logging.h"

namespace Tul {

/** The revision of an adapter script's command line: major.minor.patch, compared as numbers. */
struct VormaSpiVersion {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    std::int32_t patch = 0;

    /**
     * Reads "major.minor.patch". White space before each item and anything after the third number are accepted.
     * Otherwise false, a warning, and all three are 0.
     */
    bool fromString(const std::string& text);

    bool operator<(const VormaSpiVersion& other) const {
        return std::tie(major, minor, patch) < std::tie(other.major, other.minor, other.patch);
    }
};

inline bool VormaSpiVersion::fromString(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());  // the host's locale may group digits
    char firstDot = '\0';
    char secondDot = '\0';
    stream >> major >> firstDot >> minor >> secondDot >> patch;
    if (!stream.fail() && firstDot == '.' && secondDot == '.') {
        return true;
    }
    TUL_WARNING(Trace::Common, "Failed to parse vorma spi-revision: '%s'", text.c_str());
    *this = VormaSpiVersion{};
    return false;
}

}  // namespace Tul

#endif
