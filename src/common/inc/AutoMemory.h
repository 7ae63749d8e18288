#ifndef TUL_AUTO_MEMORY_H
#define TUL_AUTO_MEMORY_H

#include <cstdlib>
#include <list>

namespace Tul {

/**
 * Owns the C arrays and objects that are handed to the framework, until free() or destruction.
 *
 * Everything is released from the newest to the oldest, blocks before objects. One thread at a time.
 */
class AutoMemory {
public:
    AutoMemory() = default;
    virtual ~AutoMemory() { free(); }

    /** A zero-filled array of `count` elements, or null when there is no memory. The caller tests for null. */
    template <class T>
    T* malloc(unsigned int count) {
        // The entry comes first: a block that cannot be entered would be lost.
        _blocks.push_back(nullptr);
        _blocks.back() = std::calloc(count, sizeof(T));
        return static_cast<T*>(_blocks.back());
    }

    /** A default-constructed object. Throws what the construction throws. */
    template <class T>
    T* newObj() {
        _objects.push_back(nullptr);
        auto* object = new OwnedObj<T>;
        _objects.back() = object;
        return object;
    }

    /** Releases everything; the owner stays usable. */
    void free() {
        for (auto block = _blocks.rbegin(); block != _blocks.rend(); ++block) {
            std::free(*block);
        }
        _blocks.clear();
        for (auto object = _objects.rbegin(); object != _objects.rend(); ++object) {
            delete *object;
        }
        _objects.clear();
    }

    AutoMemory(const AutoMemory&) = delete;
    AutoMemory& operator=(const AutoMemory&) = delete;

private:
    struct OwnedObjBase {
        virtual ~OwnedObjBase() = default;
    };

    template <class T>
    struct OwnedObj : public OwnedObjBase, public T {};

    std::list<void*> _blocks;
    std::list<OwnedObjBase*> _objects;
};

}  // namespace Tul

#endif
