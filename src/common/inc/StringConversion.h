#ifndef TUL_STRING_CONVERSION_H
#define TUL_STRING_CONVERSION_H

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <limits>
#include <string>

namespace Tul {

/** The text is empty, begins with white space, or goes on after the number. */
class InvalidStringException : public std::exception {
public:
    const char* what() const noexcept override { return "Invalid string exception"; }
};

/** The text begins with a minus sign. */
class UnsignedIntExpectedException : public std::exception {
public:
    const char* what() const noexcept override { return "UnsignedInt Expected Exception"; }
};

/** The number does not fit. */
class ValueRangeException : public std::exception {
public:
    const char* what() const noexcept override { return "Value range exception"; }
};

/** Converts the whole of a decimal text; true, or one of the exceptions above. */
template <class T>
bool toInt(const std::string& text, T& value);

/**
 * Accepts 0 to 4294967295, also with a leading '+'.
 *
 * When something follows the number, `value` has been written before the exception is thrown. That order is
 * wanted: "22abc" leaves 22.
 */
template <>
inline bool toInt<unsigned int>(const std::string& text, unsigned int& value) {
    errno = 0;
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front())) != 0) {
        throw InvalidStringException();
    }
    if (text.front() == '-') {
        throw UnsignedIntExpectedException();
    }
    char* end = nullptr;
    const unsigned long long number = std::strtoull(text.c_str(), &end, 10);
    if (errno == ERANGE || number > std::numeric_limits<unsigned int>::max()) {
        throw ValueRangeException();
    }
    value = static_cast<unsigned int>(number);
    if (end != text.c_str() + text.size()) {
        throw InvalidStringException();
    }
    return true;
}

}  // namespace Tul

#endif
