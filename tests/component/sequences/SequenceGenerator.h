#ifndef TUL_TEST_SEQUENCES_SEQUENCE_GENERATOR_H
#define TUL_TEST_SEQUENCES_SEQUENCE_GENERATOR_H

#include <rapidcheck.h>

#include "Commands.h"

namespace Sequences {

/**
 * Sequences that begin with what mostly brings a component up, and go on with anything. They shrink by dropping
 * commands and towards the first alternative of each choice. Their length does not depend on the size.
 */
rc::Gen<Sequence> sequences();

}  // namespace Sequences

#endif
