#ifndef VORMA_DIRECTORY_H
#define VORMA_DIRECTORY_H

#include <ctime>
#include <optional>
#include <string>

#include "Descriptor.h"

namespace Vorma {

/**
 * A folder of the store. Everything in it is reached from its descriptor, never through a path that could lead
 * elsewhere by now, and never through a link. A name that is not there is an answer; every other failure to look, and
 * every failure to do, is a std::system_error that names the file. A link, or what is no plain file, is a Refusal.
 */
class Directory {
public:
    /** `path` is only for messages and for programs that are told of files in it. */
    Directory(Tul::Descriptor folder, std::string path) : _folder(std::move(folder)), _path(std::move(path)) {}

    /** A folder in this one, made with mode 0700 when it is not there. */
    Directory subfolder(const std::string& name) const;

    bool hasFolder(const std::string& name) const;

    std::string pathOf(const std::string& name) const { return _path + "/" + name; }
    const Tul::Descriptor& descriptor() const { return _folder; }

    /** The text of a file, if there is one. */
    std::optional<std::string> read(const std::string& name) const;

    /** When a file was written last, if there is one. */
    std::optional<std::time_t> writtenAt(const std::string& name) const;

    bool has(const std::string& name) const { return writtenAt(name).has_value(); }

    /** A new file of mode 0600 in place of any that was there; not yet on the disk. */
    Tul::Descriptor write(const std::string& name, const std::string& text) const;

    /** Opens a file for reading and writing, and makes it when it is not there. Here a link is a std::system_error.
     */
    Tul::Descriptor openOrMake(const std::string& name) const;

    void rename(const std::string& name, const Directory& to, const std::string& newName) const;

    /** Gives a file another name, in place of any that was there. */
    void link(const std::string& name, const Directory& to, const std::string& newName) const;

    /** False when there was none. */
    bool remove(const std::string& name) const;

    /** What was renamed, linked and removed here is on the disk. */
    void sync() const;

private:
    std::string textOf(const Tul::Descriptor& file, const std::string& name) const;

    Tul::Descriptor _folder;
    std::string _path;
};

/** What was written to the file is on the disk. */
void sync(const Tul::Descriptor& file, const std::string& path);

}  // namespace Vorma

#endif
