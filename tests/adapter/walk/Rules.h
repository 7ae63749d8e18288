#ifndef TUL_WALK_RULES_H
#define TUL_WALK_RULES_H

#include <stdexcept>
#include <string>

#include "AdapterRun.h"
#include "Place.h"

namespace TulTest {

/** A promise of the adapter was broken; the text says which and how. */
class Violation : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void require(bool holds, const std::string& otherwise);

/** The state's text without what differs from run to run: times, and the check sum at its end. */
std::string sansTimes(const std::string& state);

enum class Match {
    Meaning,  ///< times in the state may differ
    Bytes     ///< the state is the same byte for byte
};

/** The first thing in which a place is not as it should be; empty when there is none. One listener for an open door.
 */
std::string difference(const View& wanted, const View& found, Match match);

/** The door's file, listener and greeting are untouched. */
bool isUntouched(const DoorView& before, const DoorView& after);

/** 0 and nothing said, or 2 to 9 and one line of its own; it ends in time and nobody holds its output. */
void requireProperEnd(const Ending& ending);

/** True when a call that failed as the program started ended it before main(): the adapter has not begun. */
bool hasNotBegun(const Ending& ending, bool isHitAtStart);

}  // namespace TulTest

#endif
