#include "CapturedStream.h"

#include <algorithm>

#include "SystemCall.h"

namespace Tul {

CapturedStream::CapturedStream(Descriptor readEnd, Keep keep, std::size_t limit)
    : _readEnd(std::move(readEnd)), _keep(keep), _limit(limit) {}

void CapturedStream::read() {
    char data[16 * 1024];
    const ssize_t size =
        succeeding("has output that cannot be read", [&] { return ::read(_readEnd.number(), data, sizeof(data)); });
    if (size == 0) {
        _readEnd.close();
    }
    keep(data, static_cast<std::size_t>(size));
}

void CapturedStream::keep(const char* data, std::size_t size) {
    if (_keep == Keep::First) {
        _text.append(data, std::min(size, _limit - _text.size()));
        return;
    }
    _text.append(data, size);
    _text.erase(0, _text.size() - std::min(_text.size(), _limit));
}

}  // namespace Tul
