#ifndef TUL_TEST_PLACE_H
#define TUL_TEST_PLACE_H

#include <sys/stat.h>

#include <fstream>
#include <string>

#include "TemporaryDirectory.h"

namespace TulTest {

/** A folder on the disk in which a test puts what it needs, under names relative to it. */
class Place {
public:
    std::string pathOf(const std::string& name) const { return (_folder.path() / name).string(); }
    void folder(const std::string& name) const { std::filesystem::create_directories(pathOf(name)); }
    void file(const std::string& name, const std::string& text) const { std::ofstream(pathOf(name)) << text; }
    void pipe(const std::string& name) const { mkfifo(pathOf(name).c_str(), S_IRUSR | S_IWUSR); }
    void setMode(const std::string& name, mode_t mode) const { chmod(pathOf(name).c_str(), mode); }

    void link(const std::string& name, const std::string& target) const {
        std::filesystem::create_symlink(target, pathOf(name));
    }

private:
    TemporaryDirectory _folder;
};

}  // namespace TulTest

#endif
