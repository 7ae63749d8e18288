// A static of an inline function exists once per process: the library that has it must stay.

inline int& counter() {
    static int count = 0;
    return count;
}

extern "C" void use() {
    ++counter();
}
