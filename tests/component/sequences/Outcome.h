#ifndef TUL_TEST_SEQUENCES_OUTCOME_H
#define TUL_TEST_SEQUENCES_OUTCOME_H

#include <string>
#include <vector>

namespace Sequences {

/** What a command led to. */
struct Outcome {
    /** SPI calls, adapter runs ("run LIMIT [word]…") and log records ("log SEVERITY function: text"), in order. */
    std::vector<std::string> journal;
    std::string result; /**< the code, "done" when there is none, "threw …", "abort", "nobody is there" */

    bool operator==(const Outcome&) const = default;
};

}  // namespace Sequences

#endif
