#ifndef TUL_TEST_STREAM_FILES_H
#define TUL_TEST_STREAM_FILES_H

#include <filesystem>
#include <map>
#include <string>

#include "Recorder.h"

namespace TulTest {

/**
 * Reads streams/OPERATION.txt, and makes of each record its older and its newer call:
 *
 *     @ HANDLE FILE FUNCTION      who writes the records that name nobody else
 *     >> "FORMAT" ARGUMENTS       the record with which the operation's paths begin, if it is always the same
 *     << "FORMAT" ARGUMENTS       the record with which they end
 *
 *     == PATH ARGUMENTS  # what happens
 *     KIND "FORMAT" ARGUMENTS     >>, << or -- (traces of entry, of exit, and others), error, warning or info
 *     WHO: KIND ...               the same of another operation, or of another function of this file
 *     -> OPERATION/PATH ARGUMENTS all records of another stream; it has its own arguments where none are given
 *     nothing                     no record but the first and the last
 *
 * $1 stands for the first argument of the path. Several paths that stand together have the same records; "==!" does
 * without the operation's first and last record. A name that begins with a small letter is a part that others use.
 */
std::map<std::string, Lines> readStreams(const std::filesystem::path& folder);

}  // namespace TulTest

#endif
