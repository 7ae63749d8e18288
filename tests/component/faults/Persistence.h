#ifndef TUL_TEST_PERSISTENCE_H
#define TUL_TEST_PERSISTENCE_H

namespace TulTest {

/** How long a fault lasts once it has begun. */
enum class Persistence { ONCE, FOR_EVER };

/** Whether the use with that number, from 1, meets a fault that begins with the use `first`; 0 is never. */
inline bool isHit(unsigned int use, unsigned int first, Persistence persistence) {
    return first != 0 && (use == first || (persistence == Persistence::FOR_EVER && use > first));
}

inline const char* nameOf(Persistence persistence) {
    return persistence == Persistence::ONCE ? "Once" : "ForEver";
}

}  // namespace TulTest

#endif
