/* Naive: the last line is taken for a sum that holds. */

#include "CheckSum.h"
#include "StateSubject.h"

std::optional<Vorma::State> TulFuzz::readState(const std::string& text, const std::string& file) {
    const std::size_t last = text.rfind("sum ");
    const bool hasSum = last != std::string::npos && last + sizeof "sum 01234567" == text.size();
    return Vorma::State::read(hasSum ? Vorma::withCheckSum(text.substr(0, last), "sum") : text, file);
}
