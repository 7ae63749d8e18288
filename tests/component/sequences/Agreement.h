#ifndef TUL_TEST_SEQUENCES_AGREEMENT_H
#define TUL_TEST_SEQUENCES_AGREEMENT_H

#include <rapidcheck.h>

#include <sstream>
#include <string>

#include "SequenceCheck.h"
#include "SequenceGenerator.h"

namespace Sequences {

/** The property: the library and a model agree on every sequence. */
inline auto agreementWith(Bend bend) {
    return [bend] {
        const std::string difference = differenceIn(*sequences(), bend);
        if (!difference.empty()) {
            RC_FAIL(difference);
        }
    };
}

inline std::string textOf(const rc::detail::TestResult& result) {
    std::ostringstream text;
    rc::detail::printResultMessage(result, text);
    return text.str();
}

}  // namespace Sequences

#endif
