/* Naive: what follows the number is overlooked, as with every conversion that does not ask where it stopped. */

#include "NumberSubject.h"
#include "StringConversion.h"

bool TulFuzz::convert(const std::string& text, unsigned int& value) {
    try {
        return Tul::toInt<unsigned int>(text, value);
    } catch (const Tul::InvalidStringException&) {
        return !text.empty();
    }
}
