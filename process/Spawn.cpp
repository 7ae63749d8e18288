#include "Spawn.h"

#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <cstring>
#include <system_error>

namespace Tul {

namespace {

/** These functions return their error. */
void check(int error) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "cannot be run");
    }
}

class Attributes {
public:
    Attributes() { check(posix_spawnattr_init(&_attributes)); }
    ~Attributes() { posix_spawnattr_destroy(&_attributes); }

    void startAfresh(Leads leads) {
        sigset_t none;
        sigemptyset(&none);
        // Not sigfillset: it leaves out the two signals of the threads' library, which the child would get ignored.
        sigset_t all;
        std::memset(&all, 0xFF, sizeof(all));
        check(posix_spawnattr_setsigmask(&_attributes, &none));
        check(posix_spawnattr_setsigdefault(&_attributes, &all));
        check(posix_spawnattr_setpgroup(&_attributes, 0));
        const int leader = leads == Leads::Group ? POSIX_SPAWN_SETPGROUP : POSIX_SPAWN_SETSID;
        check(posix_spawnattr_setflags(&_attributes,
                                       static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | leader)));
    }

    const posix_spawnattr_t* get() const { return &_attributes; }

    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

private:
    posix_spawnattr_t _attributes;
};

class FileActions {
public:
    FileActions() { check(posix_spawn_file_actions_init(&_actions)); }
    ~FileActions() { posix_spawn_file_actions_destroy(&_actions); }

    void redirect(int from, int to) { check(posix_spawn_file_actions_adddup2(&_actions, from, to)); }

    void closeFrom(int first) { check(posix_spawn_file_actions_addclosefrom_np(&_actions, first)); }

    const posix_spawn_file_actions_t* get() const { return &_actions; }

    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

private:
    posix_spawn_file_actions_t _actions;
};

[[noreturn]] void refuse(int error, const char* path) {
    // A script whose interpreter is missing, or ends in a carriage return, gives the error of a missing script.
    const bool interpreterMissing = error == ENOENT && access(path, F_OK) == 0;
    throw std::system_error(error, std::generic_category(),
                            interpreterMissing ? "cannot be run, its interpreter is missing" : "cannot be run");
}

}  // namespace

pid_t spawn(char* const* argv, int in, int out, int err, Leads leads) {
    static char path[] = "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
    static char* const environment[] = {path, nullptr};

    Attributes attributes;
    attributes.startAfresh(leads);
    FileActions actions;
    actions.redirect(in, STDIN_FILENO);
    actions.redirect(out, STDOUT_FILENO);
    actions.redirect(err, STDERR_FILENO);
    // Close-on-exec alone is not enough: other threads of the host make descriptors without it at any time.
    actions.closeFrom(STDERR_FILENO + 1);

    pid_t pid = -1;
    const int error = posix_spawn(&pid, argv[0], actions.get(), attributes.get(), argv, environment);
    if (error != 0) {
        refuse(error, argv[0]);
    }
    return pid;
}

}  // namespace Tul
