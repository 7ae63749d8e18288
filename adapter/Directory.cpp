#include "Directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Refusal.h"
#include "SystemCall.h"
#include "Text.h"

namespace Vorma {

namespace {

using Tul::Descriptor;
using Tul::succeeding;
using Tul::uninterrupted;

/** Nothing of ours is nearly as large. */
constexpr std::size_t largestFile = std::size_t{64} * 1024;

constexpr mode_t ownFile = 0600;
constexpr mode_t ownFolder = 0700;

[[noreturn]] void fail(int error, const std::string& path) {
    throw std::system_error(error, std::generic_category(), path);
}

[[noreturn]] void refuseKind(const std::string& path, mode_t mode) {
    throw Refusal(Exit::Store,
                  path + " is " + (S_ISLNK(mode) ? "a link" : "no plain file") + "; nothing was changed");
}

}  // namespace

Directory Directory::subfolder(const std::string& name) const {
    const std::string path = pathOf(name);
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    int folder = openat(_folder.number(), name.c_str(), flags);
    if (folder < 0 && errno == ENOENT) {
        // Another run may have been quicker.
        const int made = mkdirat(_folder.number(), name.c_str(), ownFolder);
        succeeding(path.c_str(), [made] { return made != 0 && errno == EEXIST ? 0 : made; });
        folder = openat(_folder.number(), name.c_str(), flags);
    }
    if (folder < 0 && (errno == ELOOP || errno == ENOTDIR)) {
        throw Refusal(Exit::Store, path + " is a link or no folder; nothing was changed");
    }
    return {Descriptor(succeeding(path.c_str(), [folder] { return folder; })), path};
}

bool Directory::hasFolder(const std::string& name) const {
    struct stat status {};
    if (fstatat(_folder.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? false : (fail(errno, pathOf(name)), false);
    }
    return S_ISDIR(status.st_mode);
}

std::optional<std::string> Directory::read(const std::string& name) const {
    // Without O_NONBLOCK a pipe of that name would keep us for ever.
    const Descriptor file(uninterrupted(
        [&] { return openat(_folder.number(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    if (!file.isOpen() && errno == ENOENT) {
        return std::nullopt;
    }
    if (!file.isOpen() && errno == ELOOP) {
        refuseKind(pathOf(name), S_IFLNK);
    }
    if (!file.isOpen()) {
        fail(errno, pathOf(name));
    }
    return textOf(file, name);
}

std::string Directory::textOf(const Descriptor& file, const std::string& name) const {
    struct stat status {};
    succeeding(name.c_str(), [&] { return fstat(file.number(), &status); });
    if (!S_ISREG(status.st_mode)) {
        refuseKind(pathOf(name), status.st_mode);
    }
    return readAll(file, largestFile, pathOf(name));
}

std::optional<std::time_t> Directory::writtenAt(const std::string& name) const {
    struct stat status {};
    if (fstatat(_folder.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? std::nullopt : (fail(errno, pathOf(name)), std::nullopt);
    }
    if (!S_ISREG(status.st_mode)) {
        refuseKind(pathOf(name), status.st_mode);
    }
    return status.st_mtime;
}

Descriptor Directory::write(const std::string& name, const std::string& text) const {
    remove(name);
    const std::string path = pathOf(name);
    Descriptor file(succeeding(path.c_str(), [&] {
        return openat(_folder.number(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownFile);
    }));
    writeAll(file, text, path);
    return file;
}

Descriptor Directory::openOrMake(const std::string& name) const {
    return Descriptor(succeeding(pathOf(name).c_str(), [&] {
        return openat(_folder.number(), name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                      ownFile);
    }));
}

void Directory::rename(const std::string& name, const Directory& to, const std::string& newName) const {
    succeeding(to.pathOf(newName).c_str(),
               [&] { return renameat(_folder.number(), name.c_str(), to._folder.number(), newName.c_str()); });
}

void Directory::link(const std::string& name, const Directory& to, const std::string& newName) const {
    to.remove(newName);
    succeeding(to.pathOf(newName).c_str(),
               [&] { return linkat(_folder.number(), name.c_str(), to._folder.number(), newName.c_str(), 0); });
}

bool Directory::remove(const std::string& name) const {
    if (unlinkat(_folder.number(), name.c_str(), 0) == 0) {
        return true;
    }
    return errno == ENOENT ? false : (fail(errno, pathOf(name)), false);
}

void Directory::sync() const {
    Vorma::sync(_folder, _path);
}

void sync(const Descriptor& file, const std::string& path) {
    succeeding(path.c_str(), [&file] { return fsync(file.number()); });
}

}  // namespace Vorma
