#ifndef TUL_FUZZ_REVISION_SUBJECT_H
#define TUL_FUZZ_REVISION_SUBJECT_H

#include <string>

#include "VormaSpiVersion.h"

namespace TulFuzz {

/** The reading that is put to the test: the product's, or a naive one. */
bool readRevision(const std::string& text, Tul::VormaSpiVersion& version);

}  // namespace TulFuzz

#endif
