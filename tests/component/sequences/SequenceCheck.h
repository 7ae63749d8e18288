#ifndef TUL_TEST_SEQUENCES_SEQUENCE_CHECK_H
#define TUL_TEST_SEQUENCES_SEQUENCE_CHECK_H

#include <string>

#include "Bend.h"
#include "Commands.h"

namespace Sequences {

/**
 * Carries a sequence out on the library and on a model, up to the first command that they do not agree on.
 *
 * Returns what the command led to on both sides; empty when they agree to the end.
 */
std::string differenceIn(const Sequence& sequence, Bend bend = Bend::NONE);

}  // namespace Sequences

#endif
