#ifndef TUL_EXCEPTION_H
#define TUL_EXCEPTION_H

#include <exception>
#include <string>

#include "TulExport.h"

namespace Tul {

/**
 * What the platform reports its failures with: a message and a number.
 *
 * The texts are printf formats, checked by the compiler; the message may be of any length.
 */
class TUL_EXPORT TulException : public std::exception {
public:
    /** An exception with the error code -1. */
    explicit TulException(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /** An exception that carries the code of a framework operation. */
    TulException(int errorCode, const char* format, ...) __attribute__((format(printf, 3, 4)));

    ~TulException() override;

    const char* what() const noexcept override;
    int errorCode() const noexcept;

private:
    std::string _message;
    int _errorCode;
};

}  // namespace Tul

#endif
