#include "TrustedPath.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <deque>
#include <system_error>

#include "SystemCall.h"
#include "Text.h"

namespace Vorma {

namespace {

using Tul::Descriptor;
using Tul::succeeding;

/** As many as the kernel itself follows. */
constexpr int mostLinks = 40;

[[noreturn]] void fail(int error, const std::string& path) {
    throw std::system_error(error, std::generic_category(), path);
}

struct stat statusOf(const Descriptor& file) {
    struct stat status {};
    succeeding("fstat", [&] { return fstat(file.number(), &status); });
    return status;
}

void trust(const struct stat& status, const std::string& path) {
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        throw Distrust(path + " belongs to user " + std::to_string(status.st_uid) +
                       "; it must belong to root or to user " + std::to_string(geteuid()));
    }
    const bool sticky = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    if (!S_ISLNK(status.st_mode) && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 && !sticky) {
        throw Distrust(path + " may be written by others than its owner");
    }
}

/** Where on the way: the folder or file reached, how it is called, and the names that are left. */
class Walk {
public:
    explicit Walk(const std::string& path) : _left(namesOf(path)) { beginAtRoot(); }

    void finish() {
        while (!_left.empty()) {
            const std::string name = _left.front();
            _left.pop_front();
            step(name);
        }
    }

    Descriptor& at() { return _at; }

private:
    static std::deque<std::string> namesOf(const std::string& path) {
        std::deque<std::string> names;
        for (const std::string_view name : partsOf(path, '/')) {
            names.emplace_back(name);
        }
        return names;
    }

    void beginAtRoot() {
        _at = Descriptor(succeeding("/", [] { return open("/", O_PATH | O_DIRECTORY | O_CLOEXEC); }));
        _path.clear();
        trust(statusOf(_at), "/");
    }

    void step(const std::string& name) {
        const std::string path = _path + "/" + name;
        Descriptor next(succeeding(
            path.c_str(), [&] { return openat(_at.number(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
        const struct stat status = statusOf(next);
        trust(status, path);
        if (S_ISLNK(status.st_mode)) {
            follow(next, path);
            return;
        }
        _at = std::move(next);
        _path = path;
    }

    void follow(const Descriptor& link, const std::string& path) {
        char target[PATH_MAX];
        const ssize_t length = readlinkat(link.number(), "", target, sizeof target);
        if (length < 0 || ++_links > mostLinks) {
            fail(length < 0 ? errno : ELOOP, path);
        }
        const std::string text(target, static_cast<std::size_t>(length));
        const std::deque<std::string> names = namesOf(text);
        _left.insert(_left.begin(), names.begin(), names.end());
        if (text.starts_with('/')) {
            beginAtRoot();
        }
    }

    Descriptor _at;
    std::string _path;
    std::deque<std::string> _left;
    int _links = 0;
};

}  // namespace

Descriptor openTrusted(const std::string& path, Kind kind) {
    Walk walk(path);
    walk.finish();
    const mode_t type = statusOf(walk.at()).st_mode & S_IFMT;
    if (kind == Kind::Directory) {
        return type == S_IFDIR ? std::move(walk.at()) : (fail(ENOTDIR, path), Descriptor());
    }
    if (type != S_IFREG) {
        fail(type == S_IFDIR ? EISDIR : EINVAL, path);
    }
    // What was reached itself, whatever the path leads to by now.
    const std::string reached = "/proc/self/fd/" + std::to_string(walk.at().number());
    return Descriptor(succeeding(path.c_str(), [&] { return open(reached.c_str(), O_RDONLY | O_CLOEXEC); }));
}

std::string readTrusted(const std::string& path, std::size_t most) {
    return readAll(openTrusted(path, Kind::File), most, path);
}

}  // namespace Vorma
