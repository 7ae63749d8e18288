#include "Emulation.h"

#include <fstream>

namespace TulTest {

bool isEmulated() {
    // Most of what an emulated program reads about itself is made up for it, but not its name.
    static const bool emulated = [] {
        std::string name;
        return std::getline(std::ifstream("/proc/self/comm"), name) && name.starts_with("qemu-");
    }();
    return emulated;
}

testing::Matcher<const std::string&> lastWords(const testing::Matcher<const std::string&>& expected) {
    const auto withoutRemark = [](const std::string& text) {
        return isEmulated() ? text.substr(0, text.rfind("qemu: uncaught target signal")) : text;
    };
    return testing::ResultOf("last words", withoutRemark, expected);
}

}  // namespace TulTest
