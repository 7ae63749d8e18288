#ifndef TUL_NODE_REFUSAL_H
#define TUL_NODE_REFUSAL_H

#include <stdexcept>
#include <string>

#include "BryReturn.h"

namespace TulNode {

/** What the node does not do: its result code, and a text that names what was asked for and what is allowed. */
class Refusal : public std::runtime_error {
public:
    Refusal(BryReturnT code, const std::string& text) : std::runtime_error(text), _code(code) {}

    BryReturnT code() const { return _code; }

private:
    BryReturnT _code;
};

/** "-4 (NOT_FOUND)"; a code without a name is the number alone. */
std::string codeText(BryReturnT code);

}  // namespace TulNode

#endif
