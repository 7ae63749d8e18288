#ifndef VORMA_REFUSAL_H
#define VORMA_REFUSAL_H

#include <stdexcept>
#include <string>

namespace Vorma {

/** What the program ends with; docs/adapter-contract.md says what each promises. */
enum class Exit {
    Done = 0,
    Usage = 2,
    Settings = 3,
    Busy = 4,
    Store = 5,
    Refused = 6,
    Taken = 7,
    RolledBack = 8,
    Lost = 9,
};

/** Ends a run with a code and the one line that says why. */
class Refusal : public std::runtime_error {
public:
    Refusal(Exit code, const std::string& why) : std::runtime_error(why), _code(code) {}

    Exit code() const { return _code; }

private:
    Exit _code;
};

/** The change is in force, but a loss of power may take it back. */
class NotDurable : public Refusal {
public:
    explicit NotDurable(const std::string& why)
        : Refusal(Exit::Lost, "what was asked for is in force, but may be lost when the power fails: " + why) {}
};

}  // namespace Vorma

#endif
