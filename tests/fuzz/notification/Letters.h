#ifndef TUL_FUZZ_LETTERS_H
#define TUL_FUZZ_LETTERS_H

#include <algorithm>
#include <string>
#include <string_view>

namespace TulFuzz {

/** An input, letter by letter. Behind its end there are NULs. */
class Letters {
public:
    explicit Letters(std::string_view text) : _text(text) {}

    bool atEnd() const { return _text.empty(); }

    char take() {
        const char letter = atEnd() ? '\0' : _text.front();
        _text.remove_prefix(atEnd() ? 0 : 1);
        return letter;
    }

    /** Everything up to a letter, which is dropped. */
    std::string takeUntil(char end) {
        const std::string taken(_text.substr(0, _text.find(end)));
        _text.remove_prefix(std::min(taken.size() + 1, _text.size()));
        return taken;
    }

private:
    std::string_view _text;
};

}  // namespace TulFuzz

#endif
