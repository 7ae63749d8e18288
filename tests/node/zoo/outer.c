/* Has no entry points of its own: they are in a library that it needs. */
int zooOuter(void);
int zooOuter(void) {
    return 0;
}
