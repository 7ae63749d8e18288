#include "TulException.h"

#include <cstdarg>
#include <cstdio>

namespace Tul {

namespace {

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    std::string text(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
    const int written = std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return written < 0 ? format : text;
}

}  // namespace

TulException::TulException(const char* format, ...) : _errorCode(-1) {
    va_list args;
    va_start(args, format);
    _message = formatted(format, args);
    va_end(args);
}

TulException::TulException(int errorCode, const char* format, ...) : _errorCode(errorCode) {
    va_list args;
    va_start(args, format);
    _message = formatted(format, args);
    va_end(args);
}

TulException::~TulException() = default;

const char* TulException::what() const noexcept {
    return _message.c_str();
}

int TulException::errorCode() const noexcept {
    return _errorCode;
}

}  // namespace Tul
