#include "AnswerSubject.h"

Vorma::Effective TulFuzz::readAnswer(const std::string& printed) {
    return Vorma::Effective::parse(printed);
}
