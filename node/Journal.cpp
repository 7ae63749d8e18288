#include "Journal.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "Text.h"

namespace TulNode {

namespace {

std::string severityWord(std::int32_t severity) {
    switch (severity) {
        case Error:
            return "error";
        case Warning:
            return "warning";
        case Information:
            return "info";
        case TraceLevel:
            return "trace";
        default:
            return "severity-" + std::to_string(severity);
    }
}

}  // namespace

std::string Record::line() const {
    return severityWord(severity) + " " + function + ": " + text;
}

std::string Record::lineWithTime() const {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::string milliseconds = std::to_string(sinceEpoch.count() % 1000);
    milliseconds.insert(0, 3 - milliseconds.size(), '0');
    return std::string(date.data()) + "." + milliseconds + "Z " + line();
}

void Journal::log(std::int32_t severity, std::string_view function, std::string_view text) {
    if (severity <= level()) {
        const std::lock_guard lock(_mutex);
        keep(severity, function, std::string(text));
    }
}

void Journal::trace(std::string_view function, std::string_view text) {
    if (level() > 7) {
        const std::lock_guard lock(_mutex);
        keep(TraceLevel, function, std::string(text));
    }
}

void Journal::accuse(std::string_view text) {
    ++_accusations;
    const std::lock_guard lock(_mutex);
    keep(Error, "node", "component misbehaves: " + _component + " " + std::string(text));
}

void Journal::setComponent(const std::string& name) {
    const std::lock_guard lock(_mutex);
    _component = name;
}

void Journal::keep(std::int32_t severity, std::string_view function, const std::string& text) {
    _records.push_back({std::chrono::system_clock::now(), severity, escape(function), escape(text)});
    if (_records.size() > mostRecords) {
        _records.pop_front();
    }
    if (_listener) {
        _listener(_records.back());
    }
}

std::vector<Record> Journal::last(std::size_t most) const {
    const std::lock_guard lock(_mutex);
    const auto count = static_cast<std::ptrdiff_t>(std::min(most, _records.size()));
    return {_records.end() - count, _records.end()};
}

void Journal::listen(std::function<void(const Record&)> listener) {
    const std::lock_guard lock(_mutex);
    _listener = std::move(listener);
}

}  // namespace TulNode
