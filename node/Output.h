#ifndef TUL_NODE_OUTPUT_H
#define TUL_NODE_OUTPUT_H

#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

namespace TulNode {

/** Where the lines of the node go: one at a time, each whole and at once. Any thread. */
class Output {
public:
    /** Takes a line instead of the stream when it returns true. */
    using Diversion = std::function<bool(const std::string& line)>;

    /** The stream stays the caller's. */
    explicit Output(std::FILE* stream) : _stream(stream) {}

    void line(const std::string& text) {
        const std::lock_guard lock(_mutex);
        if (!_diversion || !_diversion(text)) {
            std::fprintf(_stream, "%s\n", text.c_str());
            std::fflush(_stream);
        }
    }

    /** For a prompt, which must not be written over. It is called under a lock. */
    void divert(Diversion diversion) {
        const std::lock_guard lock(_mutex);
        _diversion = std::move(diversion);
    }

private:
    std::mutex _mutex;
    std::FILE* _stream;
    Diversion _diversion;
};

}  // namespace TulNode

#endif
