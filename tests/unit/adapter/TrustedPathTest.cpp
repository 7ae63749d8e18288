#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <system_error>

#include "Place.h"
#include "TrustedPath.h"

namespace TulTest {
namespace {

using Vorma::Kind;
using Vorma::openTrusted;

constexpr uid_t somebody = 65534;

/** The folder a/b with a file, and links to them. */
class TrustedPath : public testing::Test {
protected:
    TrustedPath() {
        _place.folder("a/b");
        _place.folder("c");
        _place.file("a/b/file", "text");
        _place.setMode("a/b/file", 0644);
        _place.link("c/absolute", _place.pathOf("a/b/file"));
        _place.link("c/relative", "../a/b/file");
        _place.link("c/again", "./relative");
        _place.link("folder", "a/b");
        _place.link("c/through", "../folder/../b/file");
    }

    std::string read(const std::string& name) const { return Vorma::readTrusted(_place.pathOf(name), 100); }

    void expectDistrust(const std::string& of, const std::string& name) const {
        try {
            read(name);
            ADD_FAILURE() << name << " is trusted in spite of " << of;
        } catch (const Vorma::Distrust& distrust) {
            const std::string words = distrust.what();
            EXPECT_EQ(_place.pathOf(of), std::filesystem::path(words.substr(0, words.find(' '))).lexically_normal());
        }
    }

    int errorOf(const std::string& name, Kind kind) const {
        try {
            openTrusted(_place.pathOf(name), kind);
            return 0;
        } catch (const std::system_error& failure) {
            return failure.code().value();
        }
    }

    const Place _place{};
};

constexpr const char* waysToTheFile[] = {"a/b/file",   "a//b/./file", "a/../a/b/file", "folder/file",
                                         "c/absolute", "c/relative",  "c/again",       "c/through"};

TEST_F(TrustedPath, LeadsThroughFoldersAndLinks) {
    for (const char* name : waysToTheFile) {
        EXPECT_EQ("text", read(name)) << name;
    }
}

TEST_F(TrustedPath, IsNoneWhenOthersMayWriteTheFileOrAFolderOnTheWay) {
    for (const char* name : waysToTheFile) {
        for (const char* of : {"a", "a/b", "a/b/file"}) {
            for (const mode_t mode : {0775U, 0757U}) {
                _place.setMode(of, mode);
                expectDistrust(of, name);
            }
            _place.setMode(of, 0755);
        }
    }
    _place.setMode("c", 0775);
    expectDistrust("c", "c/absolute");
}

// As /tmp: nobody can touch there what is not his own. Of a file that bit says nothing.
TEST_F(TrustedPath, MayLeadThroughAStickyFolder) {
    _place.setMode("a", 01777);
    EXPECT_EQ("text", read("a/b/file"));
    _place.setMode("a/b/file", 01666);
    expectDistrust("a/b/file", "a/b/file");
}

TEST_F(TrustedPath, IsNoneWhenAFileAFolderOrALinkOnTheWayBelongsToAnother) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give away files";
    }
    for (const char* of : {"folder", "a", "a/b", "a/b/file"}) {
        ASSERT_EQ(0, lchown(_place.pathOf(of).c_str(), somebody, somebody));
        expectDistrust(of, "folder/file");
        ASSERT_EQ(0, lchown(_place.pathOf(of).c_str(), 0, 0));
    }
    EXPECT_EQ("text", read("folder/file"));
}

TEST_F(TrustedPath, FailsWhereTheSystemFails) {
    _place.link("loop", "loop");
    _place.link("nowhere", "absent");
    _place.pipe("pipe");
    EXPECT_EQ(ENOENT, errorOf("absent", Kind::File));
    EXPECT_EQ(ENOENT, errorOf("nowhere", Kind::File));
    EXPECT_EQ(ENOENT, errorOf("absent/file", Kind::Directory));
    EXPECT_EQ(ENOTDIR, errorOf("a/b/file/below", Kind::File));
    EXPECT_EQ(ENOTDIR, errorOf("a/b/file", Kind::Directory));
    EXPECT_EQ(EISDIR, errorOf("folder", Kind::File));
    EXPECT_EQ(EINVAL, errorOf("pipe", Kind::File));
    EXPECT_EQ(ELOOP, errorOf("loop", Kind::File));
}

TEST_F(TrustedPath, HasAsManyLinksAsTheKernelFollows) {
    _place.link("link0", "a/b/file");
    for (int i = 1; i < 45; ++i) {
        const std::string name = "link" + std::to_string(i);
        _place.link(name, "link" + std::to_string(i - 1));
        const Tul::Descriptor file(open(_place.pathOf(name).c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_EQ(file.isOpen() ? 0 : ELOOP, errorOf(name, Kind::File)) << i;
    }
}

TEST_F(TrustedPath, IsReadOnlyUpToALimit) {
    EXPECT_EQ("text", Vorma::readTrusted(_place.pathOf("a/b/file"), 4));
    EXPECT_THROW(Vorma::readTrusted(_place.pathOf("a/b/file"), 3), std::system_error);
}

}  // namespace
}  // namespace TulTest
