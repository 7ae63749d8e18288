#ifndef TUL_TEST_STREAM_H
#define TUL_TEST_STREAM_H

#include <map>
#include <string>

#include "Recorder.h"

namespace TulTest {

/** The complete streams that are expected, by "operation/path"; StreamFiles.h says how they are written. */
const std::map<std::string, Lines>& expectedStreams();

/** The stream of that name; throws when there is none. */
const Lines& expectedStream(const std::string& name);

/** What of a complete stream is written at a level: records up to their severity, traces above 7. */
Lines atLevel(const Lines& calls, int level);

/** Empty when both are equal; else the first calls that differ, what stands before them, and all that was written. */
std::string difference(const Lines& expected, const Lines& actual);

/** "SEVERITY<tab>FORMAT" of a call, the format escaped as in the source. */
std::string textOf(const std::string& call);

}  // namespace TulTest

#endif
