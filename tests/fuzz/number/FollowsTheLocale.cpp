/* Naive: takes what a stream takes, and with it the separators of whatever locale the host has set. */

#include <sstream>

#include "NumberSubject.h"
#include "StringConversion.h"

bool TulFuzz::convert(const std::string& text, unsigned int& value) {
    unsigned int number = 0;
    std::istringstream stream(text);
    const bool isNumber = !text.empty() && text.front() >= '0' && text.front() <= '9' && stream >> number;
    if (isNumber && stream.peek() == std::istringstream::traits_type::eof()) {
        value = number;
        return true;
    }
    return Tul::toInt<unsigned int>(text, value);
}
