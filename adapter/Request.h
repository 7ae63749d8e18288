#ifndef VORMA_REQUEST_H
#define VORMA_REQUEST_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "SshSetting.h"
#include "State.h"

namespace Vorma {

/** A command line, understood and checked. */
struct Request {
    enum class Kind { Help, Revision, Status, Settle, Door, Ssh };

    /** A setting, and the value that it gets; none: sshd's own choice. */
    struct Assignment {
        const char* option;
        Revision since;
        std::size_t setting;
        std::optional<std::string> value;
    };

    Kind kind = Kind::Help;
    bool json = false;
    std::size_t door = 0;
    std::optional<int> port; /**< of the door; none: locked */
    std::vector<Assignment> assignments;

    /** Refusal with Exit::Usage, naming the word and what is allowed. */
    static Request parse(const std::vector<std::string>& words);

    /** Refusal with Exit::Usage when an option is not known in a revision that is played. */
    void checkKnownIn(const Revision& revision) const;

    /** What the state becomes by it. */
    State applyTo(const State& state) const;

    /** The doors that it is about. */
    std::vector<std::size_t> doors() const;
};

std::string help();

}  // namespace Vorma

#endif
