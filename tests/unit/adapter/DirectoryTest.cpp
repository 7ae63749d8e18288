#include <functional>

#include "Directory.h"
#include "Place.h"
#include "Refused.h"
#include "TrustedPath.h"

namespace TulTest {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using Vorma::Directory;
using Vorma::Exit;

class DirectoryTest : public testing::Test {
protected:
    void expectFailure(int error, const std::function<void()>& call) const {
        try {
            call();
            ADD_FAILURE() << "nothing has failed";
        } catch (const std::system_error& failure) {
            EXPECT_EQ(error, failure.code().value()) << failure.what();
            EXPECT_THAT(failure.what(), HasSubstr(_directory.pathOf("")));
        }
    }

    const Place _place{};
    const Directory _directory{Vorma::openTrusted(_place.pathOf("."), Vorma::Kind::Directory), _place.pathOf(".")};
};

// A file that cannot be looked at is not one that is not there: a state would be begun anew.
TEST_F(DirectoryTest, TellsWhatIsNotThereFromWhatCannotBeLookedAt) {
    EXPECT_EQ(std::nullopt, _directory.read("absent"));
    EXPECT_EQ(std::nullopt, _directory.writtenAt("absent"));
    EXPECT_FALSE(_directory.hasFolder("absent"));
    EXPECT_FALSE(_directory.remove("absent"));
    _place.file("file", "text");
    expectFailure(ENOTDIR, [&] { _directory.read("file/below"); });
    expectFailure(ENOTDIR, [&] { _directory.writtenAt("file/below"); });
    expectFailure(ENOTDIR, [&] { _directory.hasFolder("file/below"); });
    expectFailure(ENOTDIR, [&] { _directory.remove("file/below"); });
}

TEST_F(DirectoryTest, FailsToReadWhatTheUserMayNotRead) {
    _place.file("file", "text");
    _place.setMode("file", 0);
    _place.setMode(".", 0755);
    const bool isRoot = geteuid() == 0;
    ASSERT_EQ(0, isRoot ? seteuid(65534) : 0);
    expectFailure(EACCES, [&] { _directory.read("file"); });
    ASSERT_EQ(0, isRoot ? seteuid(0) : 0);
}

TEST_F(DirectoryTest, RefusesLinksAndWhatIsNoPlainFile) {
    _place.file("file", "text");
    _place.link("link", "file");
    _place.link("loop", "loop");
    _place.folder("folder");
    _place.pipe("pipe");
    for (const std::string name : {"link", "loop", "folder", "pipe"}) {
        const bool isLink = name == "link" || name == "loop";
        const auto words = AllOf(HasSubstr(_directory.pathOf(name)), HasSubstr(isLink ? "a link" : "no plain file"));
        expectRefusal(Exit::Store, words, [&] { _directory.read(name); });
        expectRefusal(Exit::Store, words, [&] { _directory.has(name); });
    }
}

TEST_F(DirectoryTest, ReadsUpTo64KiB) {
    const std::string most(65536, 'x');
    _place.file("file", most);
    EXPECT_EQ(most, _directory.read("file"));
    _place.file("file", most + "x");
    expectFailure(EFBIG, [&] { _directory.read("file"); });
}

TEST_F(DirectoryTest, MakesFilesAndFoldersForTheUserAlone) {
    _directory.write("file", "text");
    _directory.openOrMake("opened");
    _directory.subfolder("folder");
    for (const auto& [name, mode] : {std::pair("file", 0600U), {"opened", 0600U}, {"folder", 0700U}}) {
        struct stat status {};
        ASSERT_EQ(0, stat(_place.pathOf(name).c_str(), &status));
        EXPECT_EQ(mode, status.st_mode & 0777U) << name;
    }
}

// Of two names of a file one is kept as it was while the other gets a new file.
TEST_F(DirectoryTest, WritesANewFileAndLeavesTheOldOneToItsOtherName) {
    const Directory kept = _directory.subfolder("old");
    _place.file("file", "old");
    _place.file("old/file", "older");
    _directory.link("file", kept, "file");
    EXPECT_EQ("old", kept.read("file"));
    _directory.write("file", "new");
    EXPECT_EQ("new", _directory.read("file"));
    EXPECT_EQ("old", kept.read("file"));
    kept.rename("file", _directory, "file");
    EXPECT_EQ("old", _directory.read("file"));
    EXPECT_FALSE(kept.has("file"));
}

TEST_F(DirectoryTest, MakesNothingWhereALinkLeads) {
    _place.link("link", "elsewhere");
    expectFailure(ELOOP, [&] { _directory.openOrMake("link"); });
    _directory.write("link", "text");
    EXPECT_EQ("text", _directory.read("link"));
    EXPECT_FALSE(_directory.has("elsewhere"));
}

TEST_F(DirectoryTest, TakesNoLinkAndNoFileForAFolder) {
    _place.folder("folder");
    _place.link("link", "folder");
    _place.file("file", "text");
    EXPECT_TRUE(_directory.hasFolder("folder"));
    for (const std::string name : {"link", "file"}) {
        EXPECT_FALSE(_directory.hasFolder(name));
        expectRefusal(Exit::Store, HasSubstr(_directory.pathOf(name)), [&] { _directory.subfolder(name); });
    }
}

TEST_F(DirectoryTest, FailsToRemoveAFolder) {
    _place.folder("folder");
    expectFailure(EISDIR, [&] { _directory.remove("folder"); });
    expectFailure(EISDIR, [&] { _directory.write("folder", "text"); });
}

// Whoever could rename a folder on the way would else decide what is written where.
TEST_F(DirectoryTest, StaysTheFolderThatItWasWhenAnotherGetsItsPath) {
    const Directory store = _directory.subfolder("store");
    _directory.rename("store", _directory, "moved");
    _place.folder("store");
    store.write("file", "text");
    EXPECT_FALSE(_directory.subfolder("store").has("file"));
    EXPECT_EQ("text", _directory.subfolder("moved").read("file"));
}

}  // namespace
}  // namespace TulTest
