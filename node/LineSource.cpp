#include "LineSource.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace TulNode {

bool waitForInput(int descriptor, int wakeUp) {
    std::array<pollfd, 2> descriptors{pollfd{wakeUp, POLLIN, 0}, pollfd{descriptor, POLLIN, 0}};
    while (poll(descriptors.data(), descriptors.size(), -1) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return descriptors[0].revents == 0;
}

std::optional<std::string> DescriptorLines::next() {
    std::size_t end = _buffer.find('\n');
    while (end == std::string::npos && readMore()) {
        end = _buffer.find('\n');
    }
    if (end == std::string::npos && _buffer.empty()) {
        return std::nullopt;
    }
    std::string line = _buffer.substr(0, end);
    _buffer.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

bool DescriptorLines::readMore() {
    if (!waitForInput(_descriptor, _wakeUp)) {
        _buffer.clear();  // a line that is cut short by the end of the node must not be carried out
        return false;
    }
    std::array<char, 4096> block;
    const ssize_t count = read(_descriptor, block.data(), block.size());
    if (count > 0) {
        _buffer.append(block.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace TulNode
