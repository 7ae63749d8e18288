// A library as it comes about when nobody looks: what it shows and needs is what the component must not.

#include <cstring>

extern "C" void tulCommonDetach();

inline int& counter() {
    static int count = 0;
    return count;
}

extern "C" int use(const char* text) {
    char copy[16];
    std::strcpy(copy, text);
    tulCommonDetach();
    return copy[0] + ++counter();
}

// An address in the text: it can only be filled in by writing there when the library is loaded.
#if __SIZEOF_POINTER__ == 8
asm(".text\n.balign 8\n.quad use\n");
#else
asm(".text\n.balign 4\n.word use\n");
#endif
