#include "ArgumentsSubject.h"

Vorma::Request TulFuzz::readArguments(const std::vector<std::string>& words) {
    return Vorma::Request::parse(words);
}
