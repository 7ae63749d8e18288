#ifndef TUL_DESCRIPTOR_H
#define TUL_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace Tul {

/** Owns one file descriptor; negative: none. */
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : _number(number) {}
    Descriptor(Descriptor&& other) noexcept : _number(std::exchange(other._number, -1)) {}

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(_number, other._number);
        return *this;
    }

    ~Descriptor() { close(); }

    int number() const { return _number; }
    bool isOpen() const { return _number >= 0; }

    void close() {
        if (_number >= 0) {
            // Never again after EINTR: the number is free by then and may be somebody else's.
            ::close(std::exchange(_number, -1));
        }
    }

private:
    int _number = -1;
};

/**
 * The same file under a number above 2, closed on exec; std::system_error when there is none left. In a host that
 * has closed 0, 1 or 2 a new file gets such a number, and whatever the host prints would end up in it.
 */
Descriptor aboveStandard(Descriptor descriptor);

/** The two ends of a pipe, both above 2 and closed on exec. std::system_error when it cannot be made. */
struct Pipe {
    Pipe();

    Descriptor readEnd;
    Descriptor writeEnd;
};

}  // namespace Tul

#endif
