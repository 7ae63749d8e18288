#ifndef TUL_FUZZ_NUMBER_SUBJECT_H
#define TUL_FUZZ_NUMBER_SUBJECT_H

#include <string>

namespace TulFuzz {

/** The conversion that is put to the test: the product's, or a naive one. */
bool convert(const std::string& text, unsigned int& value);

}  // namespace TulFuzz

#endif
