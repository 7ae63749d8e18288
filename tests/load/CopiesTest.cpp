#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/** Two copies of the library's file, loaded at the same time with a mode of dlopen. */
class Copies : public testing::TestWithParam<int> {
public:
    Copies() { framework.givenEmptyNode(); }

    /** Initialised on its own port; the record that it registered. */
    BryMgmtSpiComponent_2 given(ComponentLibrary& library, unsigned int cliPort) {
        EXPECT_EQ(BRY_OK, library.init(configuration(true, cliPort)));
        return *framework.component;
    }

    /** Delivers a new state of CliSsh to the consumer that was registered as the n-th. */
    void notify(std::size_t consumer, int state) {
        const RegisteredConsumer& target = framework.consumers.at(consumer);
        CmNotification notification;
        notification.changed(cliSshDn).enumeration("administrativeState", state);
        EXPECT_EQ(BRY_OK, target.record->notify(target.handle, target.eventType.c_str(), target.filter,
                                                notification.record()));
    }

    std::string copy(const char* name) {
        const std::filesystem::path file = _directory.path() / name;
        std::filesystem::copy_file(ComponentLibrary::path(), file);
        return file;
    }

    RecordingFramework framework;

private:
    TemporaryDirectory _directory;
};

TEST_P(Copies, DoNotCrossTalk) {
    ComponentLibrary first(framework, copy("first.so"), GetParam());
    ComponentLibrary second(framework, copy("second.so"), GetParam());
    const BryMgmtSpiComponent_2 firstRecord = given(first, 2022);
    const BryMgmtSpiComponent_2 secondRecord = given(second, 2122);
    ASSERT_EQ(BRY_OK, firstRecord.start(BRY_REASON_NORMAL));
    EXPECT_EQ("clissh unlock port 2022", framework.takeRuns().front());
    ASSERT_EQ(BRY_OK, secondRecord.start(BRY_REASON_NORMAL));
    EXPECT_EQ("clissh unlock port 2122", framework.takeRuns().front());
    ASSERT_THAT(framework.consumers, SizeIs(8));

    notify(0, 0);
    notify(4, 1);  // its own state is unlocked already
    notify(4, 2);
    EXPECT_THAT(framework.takeRuns(), ElementsAre("clissh lock", "clissh unlock port 2122"));
    ASSERT_EQ(BRY_OK, firstRecord.stop(BRY_REASON_NORMAL));
    EXPECT_THAT(framework.consumers, SizeIs(4));
    first.terminate();
    first.unload();
    framework.takeRuns();
    notify(0, 0);
    EXPECT_THAT(framework.takeRuns(), ElementsAre("clissh lock"));
    EXPECT_EQ(BRY_OK, secondRecord.stop(BRY_REASON_NORMAL));
    EXPECT_THAT(framework.consumers, IsEmpty());
}

TEST_P(Copies, AreUnloadedOneByOne) {
    const std::string firstFile = copy("first.so");
    const std::string secondFile = copy("second.so");
    ComponentLibrary first(framework, firstFile, GetParam());
    ComponentLibrary second(framework, secondFile, GetParam());
    given(first, 2022);
    given(second, 2122);
    first.unload();
    EXPECT_FALSE(ComponentLibrary::isMapped(firstFile));
    EXPECT_TRUE(ComponentLibrary::isMapped(secondFile));
    second.unload();
    EXPECT_FALSE(ComponentLibrary::isMapped(secondFile));
}

INSTANTIATE_TEST_SUITE_P(Loaded, Copies, testing::Values(RTLD_LOCAL, RTLD_GLOBAL),
                         [](const auto& row) { return row.param == RTLD_LOCAL ? "Locally" : "Globally"; });

/** A library that is loaded for everybody, until the end of the test. */
class LoadedGlobally {
public:
    explicit LoadedGlobally(const char* file) : _library(dlopen(file, RTLD_NOW | RTLD_GLOBAL)) {}
    ~LoadedGlobally() { dlclose(_library); }

    BryReturnT initializeItsOwn() const {
        return reinterpret_cast<BryReturnT (*)()>(dlsym(_library, "initializeItsOwn"))();
    }

    LoadedGlobally(const LoadedGlobally&) = delete;
    LoadedGlobally& operator=(const LoadedGlobally&) = delete;

private:
    void* const _library;
};

class StrangerWithTheSameNames : public Copies {};

TEST_P(StrangerWithTheSameNames, IsNeverCalledByTheComponent) {
    const LoadedGlobally stranger(TUL_STRANGER);
    ComponentLibrary library(framework, ComponentLibrary::path(), GetParam());
    ASSERT_EQ(BRY_OK, library.init(configuration(true)));
    ASSERT_EQ(BRY_OK, library.start());
    notify(0, 0);
    EXPECT_THAT(framework.takeRuns(), testing::Contains("clissh lock"));
    EXPECT_EQ(BRY_OK, library.stop());
    library.terminate();
}

INSTANTIATE_TEST_SUITE_P(Loaded, StrangerWithTheSameNames, testing::Values(RTLD_LOCAL, RTLD_GLOBAL),
                         [](const auto& row) { return row.param == RTLD_LOCAL ? "Locally" : "Globally"; });

/** The control: a library that hides none of its names calls whoever was loaded for everybody first. */
TEST(NaiveLibrary, CallsTheStrangerWithTheSameNames) {
    const LoadedGlobally stranger(TUL_STRANGER);
    EXPECT_EQ(2, LoadedGlobally(TUL_NAIVE).initializeItsOwn());
}

}  // namespace
