#include "NumberSubject.h"
#include "StringConversion.h"

bool TulFuzz::convert(const std::string& text, unsigned int& value) {
    return Tul::toInt<unsigned int>(text, value);
}
