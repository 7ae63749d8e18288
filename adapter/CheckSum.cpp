#include "CheckSum.h"

#include <zlib.h>

#include <cstdio>

namespace Vorma {

namespace {

std::string lastLine(std::string_view text, std::string_view mark) {
    const uLong sum = crc32_z(0, reinterpret_cast<const Bytef*>(text.data()), text.size());
    char digits[16];
    std::snprintf(digits, sizeof digits, "%08lx", sum);
    return std::string(mark) + " " + digits + "\n";
}

}  // namespace

std::string withCheckSum(const std::string& text, std::string_view mark) {
    return text + lastLine(text, mark);
}

std::optional<std::string_view> vouchedFor(std::string_view text, std::string_view mark) {
    const std::size_t length = lastLine("", mark).size();
    if (text.size() < length) {
        return std::nullopt;
    }
    const std::string_view body = text.substr(0, text.size() - length);
    return text.substr(body.size()) == lastLine(body, mark) ? std::optional(body) : std::nullopt;
}

}  // namespace Vorma
