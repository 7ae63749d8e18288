#include "CapturedRun.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>

#include "Spawn.h"
#include "SystemCall.h"

namespace Tul {

namespace {

pid_t spawnInto(char* const* argv, const Pipe& output, const Pipe& errors) {
    const Descriptor nothing = aboveStandard(Descriptor(
        succeeding("cannot be run, no /dev/null", [] { return open("/dev/null", O_RDONLY | O_CLOEXEC); })));
    return spawn(argv, nothing.number(), output.writeEnd.number(), errors.writeEnd.number());
}

}  // namespace

CapturedRun::CapturedRun(char* const* argv, Limits limits) : CapturedRun(argv, limits, Pipe(), Pipe()) {}

CapturedRun::CapturedRun(char* const* argv, Limits limits, Pipe output, Pipe errors)
    : _output(std::move(output.readEnd), CapturedStream::Keep::First, limits.output),
      _errors(std::move(errors.readEnd), CapturedStream::Keep::Last, limits.errors),
      _child(spawnInto(argv, output, errors)) {}

std::optional<ProcessEnd> CapturedRun::await(const Deadline& deadline) {
    for (;;) {
        const int left = deadline.milliseconds();
        if (_child.descriptor() < 0 || readOnce(_child.descriptor(), left)) {
            if (const auto end = _child.reap()) {
                return end;
            }
            poll(nullptr, 0, 1);  // somebody traces it, and is told of its end before us
        }
        if (left == 0) {
            return std::nullopt;
        }
    }
}

void CapturedRun::drain(const Deadline& deadline) {
    int left = deadline.milliseconds();
    while (left > 0 && (_output.descriptor() >= 0 || _errors.descriptor() >= 0)) {
        readOnce(-1, left);
        left = deadline.milliseconds();
    }
}

bool CapturedRun::readOnce(int childDescriptor, int milliseconds) {
    pollfd watched[] = {
        {_output.descriptor(), POLLIN, 0}, {_errors.descriptor(), POLLIN, 0}, {childDescriptor, POLLIN, 0}};
    const int ready = poll(watched, std::size(watched), milliseconds);
    if (ready == -1) {
        if (errno == EINTR) {
            return false;
        }
        throw std::system_error(errno, std::generic_category(), "cannot be watched");
    }
    if (watched[0].revents != 0) {
        _output.read();
    }
    if (watched[1].revents != 0) {
        _errors.read();
    }
    return watched[2].revents != 0;
}

std::string CapturedRun::errorTail() {
    std::string tail = std::move(_errors.text());
    tail.erase(tail.find_last_not_of("\r\n") + 1);
    std::replace(tail.begin(), tail.end(), '\0', '?');
    return tail;
}

}  // namespace Tul
