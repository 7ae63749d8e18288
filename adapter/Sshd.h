#ifndef VORMA_SSHD_H
#define VORMA_SSHD_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "CapturedRun.h"
#include "Configuration.h"
#include "Deadline.h"
#include "Endpoint.h"
#include "State.h"

namespace Vorma {

/** What sshd makes of a file, as `sshd -T` prints it: of each keyword, in small letters, all values in order. */
class Effective {
public:
    static Effective parse(const std::string& printed);

    /** The values joined by blanks. */
    std::string of(const std::string& keyword) const;

    /** Where sshd will listen, apart from families that this machine does not have. */
    std::vector<Endpoint> endpoints() const;

private:
    std::map<std::string, std::vector<std::string>> _values;
};

/** A question to sshd that is under way: what would you make of this file? */
class Question {
public:
    /** Asked about a connection to the port: a Match block of the operator's would win over what stands above it. */
    Question(const std::string& sshd, const std::string& file, int port);

    /** Waits for the answer. Refusal with Exit::Refused when sshd refuses the file, or does not answer in time. */
    Effective answer(const Tul::Deadline& deadline);

private:
    Tul::CapturedRun _run;
};

/**
 * A file that sshd takes may still not mean what was asked for. Refusal with Exit::Refused when the port, the
 * addresses or a setting would be another one.
 */
void check(const Effective& effective, std::size_t door, int port, const State& state,
           const Configuration& configuration);

}  // namespace Vorma

#endif
