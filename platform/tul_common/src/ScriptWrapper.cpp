#include "ScriptWrapper.h"

#include <chrono>
#include <new>

#include "Attachment.h"
#include "ScriptRun.h"
#include "TulException.h"

namespace Tul {

namespace {

/** The words of a command line as the system takes them; they belong to the strings they were made of. */
std::vector<char*> commandLine(const std::string& path, const std::vector<std::string>& args) {
    std::vector<char*> words;
    words.reserve(args.size() + 2);
    words.push_back(const_cast<char*>(path.c_str()));
    for (const std::string& arg : args) {
        if (arg.find('\0') != std::string::npos) {
            throw TulException("Script %s cannot be run, an argument contains a NUL byte", path.c_str());
        }
        words.push_back(const_cast<char*>(arg.c_str()));
    }
    words.push_back(nullptr);
    return words;
}

/** Tells the framework of a run, with no lock held: many may end at the same time. */
class RunReport {
public:
    RunReport(const Attachment& framework, const std::string& scriptName, const std::vector<char*>& words)
        : _scriptRan(framework.scriptRan), _run{scriptName.c_str(), words.data() + 1, nullptr, 0} {}

    void send(const char* failure) {
        if (_scriptRan != nullptr) {
            const auto duration = std::chrono::steady_clock::now() - _start;
            _run.milliseconds =
                static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(duration).count());
            _run.failure = failure;
            _scriptRan(&_run);
        }
    }

private:
    void (*const _scriptRan)(const TulCommonScriptRun_1*);
    TulCommonScriptRun_1 _run;
    const std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

std::string runAndReport(const std::string& scriptName, const std::vector<std::string>& args,
                         std::chrono::milliseconds timeout) {
    const Attachment framework = Attachment::current();
    const std::string path = framework.scriptDirectory + "/" + scriptName;
    if (timeout.count() < 1) {
        throw TulException("Script %s cannot be run, its time limit is %d ms", path.c_str(),
                           static_cast<int>(timeout.count()));
    }
    const std::vector<char*> words = commandLine(path, args);
    RunReport report(framework, scriptName, words);
    std::string output;
    try {
        output = runScript(words.data(), timeout);
    } catch (const std::exception& failure) {
        report.send(failure.what());
        throw;
    }
    report.send(nullptr);
    return output;
}

}  // namespace

std::string ScriptWrapper::invoke(const std::vector<std::string>& args, int timeout) const {
    try {
        return runAndReport(_scriptName, args, std::chrono::milliseconds(timeout));
    } catch (const std::bad_alloc&) {
        throw TulException("out of memory");  // so short that it needs none
    }
}

}  // namespace Tul
