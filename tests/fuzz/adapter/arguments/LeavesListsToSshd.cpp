/* Naive: sshd will know which names it has; but it reads a line, and what is in the list may be two. */

#include "ArgumentsSubject.h"

Vorma::Request TulFuzz::readArguments(const std::vector<std::string>& words) {
    if (words.size() != 3 || words[0] != "ssh" || words[1] != "--ciphers") {
        return Vorma::Request::parse(words);
    }
    Vorma::Request request = Vorma::Request::parse({"ssh", "--ciphers", "any"});
    request.assignments[0].value = words[2];
    return request;
}
