#ifndef TUL_TEST_SCRIPT_HOST_H
#define TUL_TEST_SCRIPT_HOST_H

#include <string>
#include <vector>

#include "FakeFramework.h"
#include "TemporaryDirectory.h"

namespace TulTest {

/** What came of one invocation. */
struct Outcome {
    bool succeeded = false;
    std::string text; /**< what the script printed, or what the exception says */
};

struct RecordedRun {
    std::string scriptName;
    std::vector<std::string> arguments;
    std::string failure; /**< empty: none */
};

/** A time limit that no run comes near to. */
inline constexpr int ample = 60000;

/** A process that has libtul_common attached with a script folder of its own. */
class ScriptHost {
public:
    ScriptHost();

    const std::filesystem::path& directory() const { return _directory.path(); }
    std::string pathOf(const std::string& name) const { return (directory() / name).string(); }

    /** Puts a script there; without a shell under /bin/sh. */
    void write(const std::string& name, const std::string& body, const std::string& shell = "/bin/sh") const;

    /** Runs the script of that name with ScriptWrapper. */
    Outcome invoke(const std::string& name, const std::vector<std::string>& args = {}, int timeout = ample) const;

    /** Writes a script and runs it. */
    Outcome run(const std::string& body, int timeout = ample) const;

    /** Runs the probe (ChildProbe.cpp), which is there under the name "probe". */
    Outcome probe(const std::string& what) const { return invoke("probe", {what}); }

    /** What the framework was told of. */
    std::vector<RecordedRun> runs() const;

private:
    TemporaryDirectory _directory;
    FakeFramework _framework;
};

}  // namespace TulTest

#endif
