#include "ReferenceRevision.h"

namespace TulFuzz {

namespace {

/** A place in the text that moves on with what is taken. */
class Letters {
public:
    explicit Letters(std::string_view text) : _text(text) {}

    void skipSpace() {
        while (!_text.empty() && std::string_view(" \t\n\v\f\r").find(_text.front()) != std::string_view::npos) {
            _text.remove_prefix(1);
        }
    }

    bool take(char letter) {
        const bool there = !_text.empty() && _text.front() == letter;
        _text.remove_prefix(there ? 1 : 0);
        return there;
    }

    /** The next digit, or -1. */
    int takeDigit() {
        for (char digit = '0'; digit <= '9'; ++digit) {
            if (take(digit)) {
                return digit - '0';
            }
        }
        return -1;
    }

private:
    std::string_view _text;
};

constexpr std::int64_t beyond = std::int64_t{1} << 40; /**< outside of 32 bits, and far from the end of 64 */

std::optional<std::int32_t> takeNumber(Letters& letters) {
    letters.skipSpace();
    const bool negative = letters.take('-');
    if (!negative) {
        letters.take('+');
    }
    int digit = letters.takeDigit();
    if (digit < 0) {
        return {};
    }
    std::int64_t number = 0;
    for (; digit >= 0; digit = letters.takeDigit()) {
        number = number > beyond ? number : number * 10 + digit;
    }
    number = negative ? -number : number;
    if (number < INT32_MIN || number > INT32_MAX) {
        return {};
    }
    return static_cast<std::int32_t>(number);
}

bool takeDot(Letters& letters) {
    letters.skipSpace();
    return letters.take('.');
}

}  // namespace

std::optional<std::array<std::int32_t, 3>> expectedRevision(std::string_view text) {
    Letters letters(text);
    std::array<std::int32_t, 3> revision{};
    for (std::size_t i = 0; i < revision.size(); ++i) {
        if (i > 0 && !takeDot(letters)) {
            return {};
        }
        const std::optional<std::int32_t> number = takeNumber(letters);
        if (!number) {
            return {};
        }
        revision[i] = *number;
    }
    return revision;
}

}  // namespace TulFuzz
