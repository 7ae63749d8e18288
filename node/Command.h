#ifndef TUL_NODE_COMMAND_H
#define TUL_NODE_COMMAND_H

#include <functional>
#include <string>
#include <vector>

namespace TulNode {

using Words = std::vector<std::string>;

/** One command of the prompt. */
struct Command {
    std::string name;
    std::string arguments; /**< for the help: "DN attribute=value ..." */
    std::string help;      /**< one sentence */
    std::size_t least;     /**< how many arguments it takes */
    std::size_t most;

    /** Gets the arguments; throws a std::exception with a telling text when it cannot do it, and changes nothing. */
    std::function<void(const Words& arguments)> run;

    /** What the next word may be, behind the arguments given so far; null: nothing to offer. */
    std::function<Words(const Words& arguments)> candidates;
};

/** For commands without an upper limit of their arguments. */
inline constexpr std::size_t anyNumber = static_cast<std::size_t>(-1);

}  // namespace TulNode

#endif
