#ifndef TUL_TEST_TEMPORARY_DIRECTORY_H
#define TUL_TEST_TEMPORARY_DIRECTORY_H

#include <filesystem>
#include <string>

namespace TulTest {

/** A folder of its own for one test, removed with everything in it. */
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();

    const std::filesystem::path& path() const { return _path; }

    /** Writes an executable sh script (the interpreter line is put in front) and returns its path. */
    std::filesystem::path writeScript(const std::string& name, const std::string& body) const;

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

private:
    std::filesystem::path _path;
};

}  // namespace TulTest

#endif
