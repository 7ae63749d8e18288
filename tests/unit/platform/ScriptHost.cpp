#include "ScriptHost.h"

#include <fstream>
#include <mutex>

#include "ScriptWrapper.h"
#include "TulException.h"

namespace TulTest {

namespace {

std::mutex runsMutex;
std::vector<RecordedRun> recordedRuns;

void record(const TulCommonScriptRun_1* run) {
    RecordedRun recorded{run->scriptName, {}, run->failure == nullptr ? "" : run->failure};
    for (const char* const* argument = run->arguments; *argument != nullptr; ++argument) {
        recorded.arguments.emplace_back(*argument);
    }
    const std::lock_guard lock(runsMutex);
    recordedRuns.push_back(recorded);
}

}  // namespace

ScriptHost::ScriptHost() {
    {
        const std::lock_guard lock(runsMutex);
        recordedRuns.clear();
    }
    std::filesystem::create_symlink(TUL_CHILD_PROBE, directory() / "probe");
    _framework.attach(directory().c_str(), record);
}

void ScriptHost::write(const std::string& name, const std::string& body, const std::string& shell) const {
    std::ofstream(directory() / name) << "#!" << shell << "\n" << body << "\n";
    std::filesystem::permissions(directory() / name, std::filesystem::perms::owner_all);
}

Outcome ScriptHost::invoke(const std::string& name, const std::vector<std::string>& args, int timeout) const {
    try {
        return {true, Tul::ScriptWrapper(name).invoke(args, timeout)};
    } catch (const Tul::TulException& failure) {
        return {false, failure.what()};
    }
}

Outcome ScriptHost::run(const std::string& body, int timeout) const {
    write("script", body);
    return invoke("script", {}, timeout);
}

std::vector<RecordedRun> ScriptHost::runs() const {
    const std::lock_guard lock(runsMutex);
    return recordedRuns;
}

}  // namespace TulTest
