#ifndef TUL_FUZZ_ARGUMENTS_SUBJECT_H
#define TUL_FUZZ_ARGUMENTS_SUBJECT_H

#include <string>
#include <vector>

#include "Request.h"

namespace TulFuzz {

/** The reading of a command line that is put to the test: the product's, or a naive one. */
Vorma::Request readArguments(const std::vector<std::string>& words);

}  // namespace TulFuzz

#endif
