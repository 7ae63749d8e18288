/* Naive: a number that does not fit is cut to 32 bits. */

#include <cctype>
#include <cstdlib>

#include "NumberSubject.h"
#include "StringConversion.h"

bool TulFuzz::convert(const std::string& text, unsigned int& value) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front())) != 0) {
        throw Tul::InvalidStringException();
    }
    if (text.front() == '-') {
        throw Tul::UnsignedIntExpectedException();
    }
    char* end = nullptr;
    value = static_cast<unsigned int>(std::strtoull(text.c_str(), &end, 10));
    if (end != text.c_str() + text.size()) {
        throw Tul::InvalidStringException();
    }
    return true;
}
