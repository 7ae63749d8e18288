#include "StateSubject.h"

std::optional<Vorma::State> TulFuzz::readState(const std::string& text, const std::string& file) {
    return Vorma::State::read(text, file);
}
