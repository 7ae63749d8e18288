#ifndef TUL_NODE_LIBRARY_H
#define TUL_NODE_LIBRARY_H

#include <string>

namespace TulNode {

/** A shared library in this process. One thread at a time. */
class Library {
public:
    /** Resolves everything at once and shows its symbols to nobody else. std::runtime_error: the loader's words. */
    explicit Library(const std::string& file);

    /** Closes it. */
    ~Library();

    /** A symbol that the library itself defines; null when there is none, or only in a library that it needs. */
    void* ownSymbol(const char* name) const;

    /** False when it is still mapped afterwards: something pins it, and loading it again gives the old one. */
    bool close();

    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

private:
    void* _handle;
    std::string _mapping; /**< device and inode of the file, as the kernel lists it */
};

}  // namespace TulNode

#endif
