#ifndef TUL_FUZZ_WORDS_H
#define TUL_FUZZ_WORDS_H

#include <string>
#include <vector>

namespace TulFuzz {

using Words = std::vector<std::string>;

inline constexpr unsigned int cliPort = 2022;
inline constexpr unsigned int netconfPort = 2830;
inline constexpr unsigned int renegotiationTime = 3600;

/** The run that opens a subsystem in a state other than 0, or closes it in the state 0. */
Words portRun(const std::string& subsystem, unsigned int port, int state);

/** True for "ssh" and at least one option, each known, each with a value of its kind. */
bool isBatch(const Words& words);

bool asksForRevision(const Words& words);

/** True for an option that a batch carries. */
bool has(const Words& words, const std::string& option);

}  // namespace TulFuzz

#endif
