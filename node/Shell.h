#ifndef TUL_NODE_SHELL_H
#define TUL_NODE_SHELL_H

#include <string>
#include <vector>

#include "Command.h"
#include "Output.h"

namespace TulNode {

/** Carries out command lines. One thread. */
class Shell {
public:
    /** Adds help, echo and quit to the commands that it is given. */
    Shell(std::vector<Command> commands, Output& output);

    /**
     * Carries out one line; an empty one and a comment that begins with # are nothing to do. False when it failed:
     * then "error: " and the reason was printed, behind `place` ("line 7: ") when that is given.
     */
    bool execute(const std::string& line, const std::string& place = "");

    /** Whether quit was asked for. */
    bool isOver() const { return _over; }

    /** What the last word of the text, which may be empty, can be completed to: whole words, sorted. */
    Words completions(const std::string& text) const;

private:
    void run(const Words& words);
    void help(const Words& arguments) const;
    const Command& find(const std::string& name) const;
    Words names() const;

    std::vector<Command> _commands;
    Output& _output;
    bool _over = false;
};

}  // namespace TulNode

#endif
