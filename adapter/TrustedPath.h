#ifndef VORMA_TRUSTED_PATH_H
#define VORMA_TRUSTED_PATH_H

#include <cstddef>
#include <stdexcept>
#include <string>

#include "Descriptor.h"

namespace Vorma {

/** Somebody else may write a file, or a folder on the way to it. */
class Distrust : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Kind { File, Directory };

/**
 * Opens an absolute path, a file for reading and a folder to reach what is in it, name by name from the root down.
 * Each folder on the way, each link and what it leads to must belong to root or to the user, and nobody else may
 * write it: so nobody else can put something else there, neither before nor while it is used. A folder in which
 * nobody can touch what is not his own (the sticky bit, as of /tmp) counts as one that others do not write.
 *
 * Distrust names the folder or file; std::system_error when there is none, or it is of another kind.
 */
Tul::Descriptor openTrusted(const std::string& path, Kind kind);

/** The text of such a file; std::system_error (EFBIG) beyond so many bytes. */
std::string readTrusted(const std::string& path, std::size_t most);

}  // namespace Vorma

#endif
