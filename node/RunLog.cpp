#include "RunLog.h"

#include <utility>

#include "Text.h"

namespace TulNode {

namespace {

std::string word(const char* text) {
    const std::string escaped = escape(text);
    return escaped.empty() || escaped.find(' ') != std::string::npos ? "\"" + escaped + "\"" : escaped;
}

/** The node's own question, asked for an operator; it is none of the component's runs. */
bool isStatusQuery(const TulCommonScriptRun_1& run) {
    const char* const* arguments = run.arguments;
    return arguments[0] != nullptr && std::string(arguments[0]) == "status" && arguments[1] == nullptr;
}

}  // namespace

std::string AdapterRun::line() const {
    return command + " -> " + (failure.empty() ? "ok" : "failed: " + failure) + " (" + std::to_string(milliseconds) +
           " ms)";
}

void RunLog::add(const TulCommonScriptRun_1& run) {
    if (isStatusQuery(run)) {
        return;
    }
    std::string command = word(run.scriptName);
    for (const char* const* argument = run.arguments; *argument != nullptr; ++argument) {
        command += " " + word(*argument);
    }
    const std::string failure = run.failure == nullptr ? "" : escape(run.failure);
    const std::lock_guard lock(_mutex);
    _runs.push_back({++_count, std::move(command), failure, run.milliseconds});
    if (_runs.size() > mostRuns) {
        _runs.pop_front();
    }
    if (_listener) {
        _listener(_runs.back());
    }
}

std::vector<AdapterRun> RunLog::runs() const {
    const std::lock_guard lock(_mutex);
    return {_runs.begin(), _runs.end()};
}

void RunLog::listen(std::function<void(const AdapterRun&)> listener) {
    const std::lock_guard lock(_mutex);
    _listener = std::move(listener);
}

}  // namespace TulNode
