#include "Text.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TulNode {

namespace {

std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/** Overlong forms, surrogates and numbers past U+10FFFF show in the second byte. */
bool secondByteFits(unsigned char lead, unsigned char second) {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second < 0xA0;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second < 0x90;
        case 0xC2:
            return second >= 0xA0;  // below are the control characters U+0080 to U+009F
        default:
            return true;
    }
}

/** How many bytes at the front are one printable character; 0: the first byte must be escaped. */
std::size_t printableLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = sequenceLength(lead);
    if (length <= 1) {
        return lead >= 0x20 && lead != 0x7F ? length : 0;
    }
    if (text.size() < length || !secondByteFits(lead, static_cast<unsigned char>(text[1]))) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    return length;
}

}  // namespace

std::string escape(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = printableLength(text);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(text[0]);
            result += std::string{"\\x"} + digits[byte >> 4U] + digits[byte & 0xFU];
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

bool isPrintable(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = printableLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
    std::string result;
    for (const std::string& part : parts) {
        result += (&part == &parts.front() ? std::string_view{} : separator);
        result += part;
    }
    return result;
}

std::optional<long long> toNumber(std::string_view text) {
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

std::string readFile(const std::string& file) {
    if (std::filesystem::is_directory(file)) {
        throw std::runtime_error("cannot read " + file + ": it is a folder");
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open()) {
        throw std::runtime_error("cannot read " + file + ": " + std::strerror(errno));
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace TulNode
