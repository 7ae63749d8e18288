/* Naive: of a keyword the first line counts, though of some sshd prints several. */

#include <set>

#include "Allowed.h"
#include "AnswerSubject.h"

Vorma::Effective TulFuzz::readAnswer(const std::string& printed) {
    std::set<std::string> seen;
    std::string first;
    for (const std::string& line : split(printed, '\n')) {
        if (seen.insert(line.substr(0, line.find(' '))).second) {
            first += line + "\n";
        }
    }
    return Vorma::Effective::parse(first);
}
