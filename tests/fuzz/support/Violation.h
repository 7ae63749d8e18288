#ifndef TUL_FUZZ_VIOLATION_H
#define TUL_FUZZ_VIOLATION_H

#include <stdexcept>

namespace TulFuzz {

/** A rule that an input has broken. Nobody but the replay catches it: it ends a fuzzer, which keeps the input. */
class Violation : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

inline void require(bool holds, const char* rule) {
    if (!holds) {
        throw Violation(rule);
    }
}

}  // namespace TulFuzz

#endif
