#ifndef TUL_NODE_LINE_SOURCE_H
#define TUL_NODE_LINE_SOURCE_H

#include <optional>
#include <string>

namespace TulNode {

/** Where command lines come from. One thread. */
class LineSource {
public:
    LineSource() = default;
    virtual ~LineSource() = default;

    /** The next line without its end; nothing when there are no more, or the node is asked to end. */
    virtual std::optional<std::string> next() = 0;

    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;
};

/** Lines from a file or a pipe. */
class DescriptorLines : public LineSource {
public:
    /** Both descriptors stay the caller's; `wakeUp` gets readable when the node is asked to end. */
    DescriptorLines(int descriptor, int wakeUp) : _descriptor(descriptor), _wakeUp(wakeUp) {}

    std::optional<std::string> next() override;

private:
    bool readMore();

    int _descriptor;
    int _wakeUp;
    std::string _buffer;
};

/** Whether `descriptor` can be read; false: the other one got readable first, or the wait failed. Waits. */
bool waitForInput(int descriptor, int wakeUp);

}  // namespace TulNode

#endif
