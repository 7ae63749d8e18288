/* Naive: a port is whatever number stands at the beginning of a word. */

#include <cstdlib>

#include "ArgumentsSubject.h"

Vorma::Request TulFuzz::readArguments(const std::vector<std::string>& words) {
    std::vector<std::string> read = words;
    if (read.size() == 4) {
        read[3] = std::to_string(std::atoi(read[3].c_str()));
    }
    return Vorma::Request::parse(read);
}
