#ifndef TUL_FUZZ_STATE_SUBJECT_H
#define TUL_FUZZ_STATE_SUBJECT_H

#include <optional>
#include <string>

#include "State.h"

namespace TulFuzz {

/** The reading of a state that is put to the test: the product's, or a naive one. */
std::optional<Vorma::State> readState(const std::string& text, const std::string& file);

}  // namespace TulFuzz

#endif
