#ifndef TUL_FUZZ_ANSWER_SUBJECT_H
#define TUL_FUZZ_ANSWER_SUBJECT_H

#include <string>

#include "Sshd.h"

namespace TulFuzz {

/** The reading of what `sshd -T` prints that is put to the test: the product's, or a naive one. */
Vorma::Effective readAnswer(const std::string& printed);

}  // namespace TulFuzz

#endif
