#include "Escape.h"

#include <cstring>

namespace Tul {

namespace {

unsigned char byteAt(const char* text) {
    return static_cast<unsigned char>(*text);
}

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

/**
 * First bytes of printable characters and the second bytes that may follow them. The bounds leave out DEL and the
 * control characters below U+00A0, overlong forms, surrogates and what is beyond Unicode.
 */
struct Utf8Lead {
    unsigned char first, last;
    unsigned char secondFirst, secondLast;
    std::size_t length;
};

constexpr Utf8Lead utf8Leads[] = {
    {0x20, 0x7E, 0x00, 0xFF, 1}, {0xC2, 0xC2, 0xA0, 0xBF, 2}, {0xC3, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
};

/** The length of the printable character at the front of a NUL-terminated text; 0 when there is none. */
std::size_t printableLength(const char* text) {
    for (const Utf8Lead& lead : utf8Leads) {
        if (byteAt(text) < lead.first || byteAt(text) > lead.last) {
            continue;
        }
        if (lead.length > 1 && (byteAt(text + 1) < lead.secondFirst || byteAt(text + 1) > lead.secondLast)) {
            return 0;
        }
        for (std::size_t i = 2; i < lead.length; ++i) {
            if (!isContinuation(byteAt(text + i))) {
                return 0;
            }
        }
        return lead.length;
    }
    return 0;
}

}  // namespace

std::size_t escape(const char* text, char* to, std::size_t size) noexcept {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::size_t written = 0;
    while (*text != '\0') {
        const std::size_t length = printableLength(text);
        const char code[] = {'\\', 'x', digits[byteAt(text) >> 4U], digits[byteAt(text) & 0xFU]};
        const std::size_t needed = length == 0 ? sizeof(code) : length;
        if (size - written < needed) {
            break;
        }
        std::memcpy(to + written, length == 0 ? code : text, needed);
        written += needed;
        text += length == 0 ? 1 : length;
    }
    return written;
}

}  // namespace Tul
