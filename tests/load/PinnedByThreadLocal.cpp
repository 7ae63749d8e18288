// A destructor that a thread still has to run keeps the library loaded.

namespace {

struct Local {
    ~Local() { touched = false; }
    volatile bool touched = false;
};

thread_local Local local;

}  // namespace

extern "C" void use() {
    local.touched = true;
}
