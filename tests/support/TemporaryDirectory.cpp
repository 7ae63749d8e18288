#include "TemporaryDirectory.h"

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace TulTest {

TemporaryDirectory::TemporaryDirectory() {
    std::string name = std::filesystem::temp_directory_path() / ("tul-test." + std::to_string(getpid()) + ".XXXXXX");
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder: " + name);
    }
    _path = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

std::filesystem::path TemporaryDirectory::writeScript(const std::string& name, const std::string& body) const {
    const std::filesystem::path file = _path / name;
    std::ofstream(file) << "#!/bin/sh\n" << body << "\n";
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
}

}  // namespace TulTest
