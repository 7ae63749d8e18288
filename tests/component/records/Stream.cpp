#include "Stream.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "StreamFiles.h"

namespace TulTest {

namespace {

constexpr int traceLevel = 14;
constexpr std::ptrdiff_t context = 3;

/** The severity of a record or of its copy; 14 for both forms of a trace. */
int levelOf(const std::string& call) {
    std::istringstream words(call);
    std::string name;
    std::string who;
    int level = traceLevel;
    words >> name >> who;
    if (name != "trace_printf") {
        words >> level;
    }
    return level;
}

/** Some lines of a stream from a place on, or a word for its end. */
std::string part(const Lines& lines, std::ptrdiff_t from, std::ptrdiff_t count, const char* mark) {
    std::string text;
    const auto size = static_cast<std::ptrdiff_t>(lines.size());
    for (std::ptrdiff_t i = from; i < std::min(from + count, size); ++i) {
        text += mark + lines[static_cast<std::size_t>(i)] + "\n";
    }
    return from + count > size ? text + mark + "(end)\n" : text;
}

}  // namespace

const std::map<std::string, Lines>& expectedStreams() {
    static const std::map<std::string, Lines> streams = readStreams(TUL_STREAMS);
    return streams;
}

const Lines& expectedStream(const std::string& name) {
    const auto stream = expectedStreams().find(name);
    if (stream == expectedStreams().end()) {
        throw std::logic_error("no stream has the name " + name);
    }
    return stream->second;
}

Lines atLevel(const Lines& calls, int level) {
    Lines written;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(written), [level](const std::string& call) {
        const int own = levelOf(call);
        return own == traceLevel ? level > 7 : level >= own;
    });
    return written;
}

std::string difference(const Lines& expected, const Lines& actual) {
    const auto [first, other] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    if (first == expected.end() && other == actual.end()) {
        return "";
    }
    const std::ptrdiff_t place = first - expected.begin();
    const std::ptrdiff_t before = std::min(place, context);
    return "call " + std::to_string(place + 1) + " differs (- expected, + written):\n" +
           part(expected, place - before, before, "  ") + part(expected, place, context, "- ") +
           part(actual, place, context, "+ ") + "all that was written:\n" +
           part(actual, 0, std::ssize(actual) + 1, "");
}

std::string textOf(const std::string& call) {
    static const std::map<int, std::string> severities{
        {3, "error"}, {4, "warning"}, {6, "info"}, {traceLevel, "trace"}};
    const std::size_t begin = call.find('"') + 1;
    std::size_t end = begin;
    while (call.at(end) != '"') {
        end += call.at(end) == '\\' ? 2 : 1;
    }
    return severities.at(levelOf(call)) + "\t" + call.substr(begin, end - begin);
}

}  // namespace TulTest
