/* Naive: capital and small letters are taken for the same. */

#include <algorithm>

#include "AnswerSubject.h"

Vorma::Effective TulFuzz::readAnswer(const std::string& printed) {
    std::string small = printed;
    std::transform(small.begin(), small.end(), small.begin(), [](char letter) {
        return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
    });
    return Vorma::Effective::parse(small);
}
