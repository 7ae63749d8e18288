#ifndef TUL_FUZZ_ANSWERS_H
#define TUL_FUZZ_ANSWERS_H

#include <deque>
#include <stdexcept>

#include "TulException.h"

namespace TulFuzz {

/** How the next calls of one kind turn out, a letter each; 'k' is as it should be, and what comes when none is left.
 */
class Answers {
public:
    void add(char letter) { _letters.push_back(letter); }
    void clear() { _letters.clear(); }

    /** The next letter, unless it stands for an exception: 'T' the platform's, 'x' any other, 'i' no exception class.
     */
    char next() {
        const char letter = _letters.empty() ? 'k' : _letters.front();
        if (!_letters.empty()) {
            _letters.pop_front();
        }
        switch (letter) {
            case 'T':
                throw Tul::TulException(-5, "an answer that %s", "failed");
            case 'x':
                throw std::runtime_error("an answer of another kind");
            case 'i':
                throw 7;
            default:
                return letter;
        }
    }

private:
    std::deque<char> _letters;
};

}  // namespace TulFuzz

#endif
