/* Nothing: as a program what any program costs, as a library what the libraries that it links cost. */
int main(void) {
    return 0;
}
