#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <fstream>
#include <sstream>

#include "ComponentLibrary.h"
#include "LeakCheck.h"
#include "RecordingFramework.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

/** One whole life of the component; what was recorded is forgotten. */
void liveOnce(RecordingFramework& framework) {
    ComponentLibrary library(framework);
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, library.start());
    framework.notify(cliSshPattern, CmNotification().changed(cliSshDn).enumeration("administrativeState", 0));
    ASSERT_EQ(BRY_OK, library.stop());
    library.terminate();
    library.unload();
    ASSERT_FALSE(ComponentLibrary::isMapped());
    ASSERT_THAT(framework.consumers, IsEmpty());
    ASSERT_EQ(nullptr, framework.component);
    // Fresh statics: the port is taken for locked no longer, and the adapter is asked for its revision again.
    ASSERT_THAT(framework.takeRuns(), ElementsAre("clissh unlock port 2022", "netconfssh unlock port 2830",
                                                  "spi-revision", "ssh --removeIpQoS --renegotiationTime 3600",
                                                  "clissh lock", "clissh lock", "netconfssh lock"));
    Lines().swap(framework.calls);
    std::vector<Record>().swap(framework.records);
}

/** The files that are mapped, once for each mapping. */
std::multiset<std::string> mappedFiles() {
    std::multiset<std::string> files;
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos) {
            files.insert(line.substr(path));
        }
    }
    return files;
}

TEST(Unload, TwoHundredLivesLeaveNothingBehind) {
    RecordingFramework framework;
    framework.givenEmptyNode();
    for (int i = 0; i < 20; ++i) {  // the platform's and the C library's own caches fill
        ASSERT_NO_FATAL_FAILURE(liveOnce(framework));
    }
    const ProcessState before = ProcessState::now();
    const std::multiset<std::string> filesBefore = mappedFiles();
    const std::size_t heapBefore = mallinfo2().uordblks;  // a sanitizer's heap is not seen here; it has its own check
    for (int i = 0; i < 180; ++i) {
        ASSERT_NO_FATAL_FAILURE(liveOnce(framework));
    }
    EXPECT_LE(mallinfo2().uordblks, heapBefore + 16384);
    EXPECT_EQ("", before.leftBehindIn(ProcessState::now()));
    EXPECT_EQ(filesBefore, mappedFiles());
}

TEST(Unload, WithoutTerminateLeavesNoMemoryOfTheInitializationInTheNextLife) {
    RecordingFramework framework;
    framework.givenEmptyNode();
    for (int i = 0; i < 2; ++i) {
        ComponentLibrary library(framework);
        EXPECT_EQ(BRY_OK, library.init(configuration(true)));
        EXPECT_EQ(-1, library.init(configuration(true)));
        library.unload();
        EXPECT_FALSE(ComponentLibrary::isMapped());
    }
}

TEST(Unload, WithoutStopLeavesNoMemoryOfTheStartInTheNextLife) {
    RecordingFramework framework;
    framework.givenEmptyNode();
    for (int i = 0; i < 2; ++i) {
        ComponentLibrary library(framework);
        ASSERT_EQ(BRY_OK, library.init(configuration(true)));
        EXPECT_EQ(BRY_OK, library.start());
        EXPECT_EQ(4u, framework.takeRuns().size());
        library.unload();
        EXPECT_FALSE(ComponentLibrary::isMapped());
    }
}

TEST(Unload, AnUntouchedLibraryGoesToo) {
    RecordingFramework framework;
    ComponentLibrary library(framework);
    EXPECT_TRUE(ComponentLibrary::isMapped());
    library.unload();
    EXPECT_FALSE(ComponentLibrary::isMapped());
}

// The same look at a library that does stay

Lines pinnedLibraries() {
    Lines files;
    std::istringstream list(TUL_PINNED_LIBRARIES);
    std::string file;
    while (std::getline(list, file, ':')) {
        files.push_back(file);
    }
    return files;
}

class UnloadPinned : public testing::TestWithParam<std::string> {};

TEST_P(UnloadPinned, LibraryIsSeenToStay) {
    void* const library = dlopen(GetParam().c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, library) << dlerror();
    reinterpret_cast<void (*)()>(dlsym(library, "use"))();
    ASSERT_EQ(0, dlclose(library));
    EXPECT_TRUE(ComponentLibrary::isMapped(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Control, UnloadPinned, testing::ValuesIn(pinnedLibraries()));

}  // namespace
