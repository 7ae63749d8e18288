#include "LeakCheck.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace TulTest {

namespace {

std::set<std::string> entries(const std::string& directory, const std::string& prefix = "") {
    std::set<std::string> names;
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator(directory, gone)) {
        const std::string name = entry.path().filename();
        if (name.starts_with(prefix)) {
            names.insert(name);
        }
    }
    return names;
}

std::set<std::string> openDescriptors() {
    std::set<std::string> result;
    DIR* directory = opendir("/proc/self/fd");
    const std::string own = std::to_string(dirfd(directory));
    while (const dirent* entry = readdir(directory)) {
        const std::string name = entry->d_name;
        if (name != own && name[0] != '.') {
            std::error_code gone;
            result.insert(name + " " + std::filesystem::read_symlink("/proc/self/fd/" + name, gone).string());
        }
    }
    closedir(directory);
    return result;
}

std::set<std::string> childProcesses() {
    std::set<std::string> result;
    for (const std::string& thread : entries("/proc/self/task")) {
        std::ifstream file("/proc/self/task/" + thread + "/children");
        std::string child;
        while (file >> child) {
            result.insert(child);
        }
    }
    return result;
}

std::string missing(const char* what, const std::set<std::string>& before, const std::set<std::string>& after) {
    std::string lines;
    for (const std::string& name : after) {
        if (!before.contains(name)) {
            lines += std::string("left behind: ") + what + " " + name + "\n";
        }
    }
    return lines;
}

/** Compares the state before and after every test of the program. */
class LeakListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override { _before = ProcessState::now(); }

    void OnTestEnd(const testing::TestInfo& /*test*/) override {
        // A joined thread leaves /proc a moment after join() has returned.
        std::string left = _before.leftBehindIn(ProcessState::now());
        for (int i = 0; i < 200 && !left.empty(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            left = _before.leftBehindIn(ProcessState::now());
        }
        if (!left.empty()) {
            ADD_FAILURE() << left;
        }
    }

    ProcessState _before;
};

}  // namespace

ProcessState ProcessState::now() {
    return {openDescriptors(), entries("/proc/self/task"), childProcesses(),
            entries(std::filesystem::temp_directory_path(), "tul-test." + std::to_string(getpid()) + ".")};
}

std::string ProcessState::leftBehindIn(const ProcessState& later) const {
    return missing("descriptor", descriptors, later.descriptors) + missing("thread", threads, later.threads) +
           missing("child", children, later.children) +
           missing("temporary file", temporaryFiles, later.temporaryFiles);
}

}  // namespace TulTest

int main(int argc, char** argv) {
    // The thread sanitizer starts a thread of its own together with the first one; let it be there beforehand.
    std::thread([] {}).join();
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new TulTest::LeakListener);
    return RUN_ALL_TESTS();
}
