#include "Text.h"

#include <unistd.h>

#include <string_view>
#include <system_error>

#include "SystemCall.h"

namespace Vorma {

using Tul::succeeding;

std::string readAll(const Tul::Descriptor& file, std::size_t most, const std::string& path) {
    std::string text;
    char block[4096];
    for (;;) {
        const ssize_t size = succeeding(path.c_str(), [&] { return read(file.number(), block, sizeof block); });
        if (size == 0) {
            return text;
        }
        text.append(block, static_cast<std::size_t>(size));
        if (text.size() > most) {
            throw std::system_error(EFBIG, std::generic_category(), path);
        }
    }
}

void writeAll(const Tul::Descriptor& file, const std::string& text, const std::string& path) {
    for (std::string_view left = text; !left.empty();) {
        const ssize_t size = succeeding(path.c_str(), [&] { return write(file.number(), left.data(), left.size()); });
        left.remove_prefix(static_cast<std::size_t>(size));
    }
}

std::vector<std::string_view> partsOf(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(separator));
        if (!part.empty()) {
            parts.push_back(part);
        }
        text.remove_prefix(part.size() + (part.size() < text.size() ? 1 : 0));
    }
    return parts;
}

}  // namespace Vorma
