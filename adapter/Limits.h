#ifndef VORMA_LIMITS_H
#define VORMA_LIMITS_H

#include <chrono>

namespace Vorma::Limits {

using std::chrono::milliseconds;
using std::chrono::seconds;

/** The caller kills at 30 s. */
inline constexpr seconds whole(25);

/** Of the above, for all but the way back. */
inline constexpr seconds forward(15);

inline constexpr seconds lock(10);

/** `sshd -T` takes 10 ms on a PC. */
inline constexpr seconds question(5);

/** What it leaves behind may hold its output for ever. */
inline constexpr milliseconds drain(100);

/** From the start or SIGHUP of a listener until it listens: 10 to 90 ms on a PC. */
inline constexpr seconds comingUp(5);

inline constexpr seconds greeting(3);

/** A listener that is told to end does so in 1 ms; one that hangs is killed after this. */
inline constexpr seconds ending(2);

/** A program that is being replaced has no words for some microseconds, or until it gets a processor. */
inline constexpr seconds withoutWords(1);

/** How often a look is taken when nothing tells of a change: a full disk takes the pid file, and with it the event.
 */
inline constexpr milliseconds withoutEvent(20);

}  // namespace Vorma::Limits

#endif
