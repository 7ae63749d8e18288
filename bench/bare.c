/*
 * What nobody can do without who opens, closes or changes a door, and nothing else: no lock, no check of values, no
 * way back, nothing kept. One run is one step:
 *
 *     bench-bare PLACE unlock|lock|settings CIPHERS (DOOR PORT)...
 *
 * PLACE is a folder that demo/place.sh made, in which there is a folder "bare". Several doors have their turns one
 * after the other. Whatever fails, or takes longer than ten seconds, ends the program with another code than 0.
 */

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/pidfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

enum { longestSeconds = 10, pathSize = 512, textSize = 4 * pathSize };

static char sshd[] = "/usr/sbin/sshd";

struct Door {
    char folder[pathSize];
    char file[pathSize + 64];
    char pidFile[pathSize + 64];
    const char* base; /* of the place */
    const char* port;
    const char* ciphers;
};

/* The result of a system call that has to succeed. */
static int must(int result, const char* what) {
    if (result < 0) {
        perror(what);
        exit(1);
    }
    return result;
}

static void mustBe(int condition, const char* what) {
    if (!condition) {
        fprintf(stderr, "bench-bare: %s\n", what);
        exit(1);
    }
}

static struct Door doorOf(const char* place, const char* ciphers, const char* name, const char* port) {
    struct Door door = {.base = place, .port = port, .ciphers = ciphers};
    mustBe(strlen(place) + sizeof "/bare" <= sizeof door.folder, "PLACE is too long");
    snprintf(door.folder, sizeof door.folder, "%s/bare", place);
    snprintf(door.file, sizeof door.file, "%s/%.32s.conf", door.folder, name);
    snprintf(door.pidFile, sizeof door.pidFile, "%s/%.32s.pid", door.folder, name);
    return door;
}

/* --- its file --- */

static void writeFile(const struct Door* door) {
    char text[textSize];
    char candidate[pathSize + 64];
    const int size = snprintf(
        text, sizeof text, "Port %s\nListenAddress 127.0.0.1\nPidFile %s\nCiphers %s\nInclude %s/ssh/sshd_config\n",
        door->port, door->pidFile, door->ciphers, door->base);
    mustBe(size < textSize, "the file is too long");
    snprintf(candidate, sizeof candidate, "%s/new", door->folder);
    const int file = must(open(candidate, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), candidate);
    mustBe(write(file, text, (size_t)size) == size, "the file cannot be written");
    must(fsync(file), "fsync");
    close(file);
    must(rename(candidate, door->file), door->file);
}

static void readToEnd(int descriptor) {
    char block[16384];
    while (must((int)read(descriptor, block, sizeof block), "read") > 0) {
    }
}

static void askSshd(struct Door* door) {
    char* const command[] = {sshd, "-T", "-f", door->file, NULL};
    int ends[2];
    pid_t pid = 0;
    int status = 0;
    posix_spawn_file_actions_t actions;
    must(pipe2(ends, O_CLOEXEC), "pipe2");
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    mustBe(posix_spawn(&pid, sshd, &actions, NULL, command, environ) == 0, "sshd -T cannot be run");
    close(ends[1]);
    readToEnd(ends[0]);
    must(waitpid(pid, &status, 0), "waitpid");
    mustBe(status == 0, "sshd -T fails");
}

/* --- its listener --- */

static pid_t listenerOf(const struct Door* door) {
    char text[32] = "";
    const int file = open(door->pidFile, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return 0; /* the listener has not left its number yet */
    }
    must((int)read(file, text, sizeof text - 1), door->pidFile);
    close(file);
    return (pid_t)strtol(text, NULL, 10);
}

static sigset_t changeOfFolder(void) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGIO);
    return set;
}

/*
 * From now on a file of the folder that is written to gives a SIGIO, which stays until somebody waits for it. Not by
 * inotify: when a process that has used it ends, the kernel takes some 15 ms to tidy up.
 */
static void watchFolder(const char* folder) {
    const sigset_t change = changeOfFolder();
    sigprocmask(SIG_BLOCK, &change, NULL);
    const int watched = must(open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC), folder);
    must(fcntl(watched, F_NOTIFY, DN_MODIFY | DN_MULTISHOT), "F_NOTIFY");
}

/* It leaves its number as soon as it listens. */
static void awaitListener(const struct Door* door) {
    const sigset_t change = changeOfFolder();
    while (listenerOf(door) == 0) {
        must(sigwaitinfo(&change, NULL), "sigwaitinfo");
    }
}

static void startListener(struct Door* door) {
    char* const command[] = {sshd, "-D", "-f", door->file, NULL};
    pid_t pid = 0;
    sigset_t none;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
    mustBe(posix_spawn(&pid, sshd, &actions, &attributes, command, environ) == 0, "sshd cannot be run");
}

static void reloadListener(const struct Door* door) {
    const pid_t listener = listenerOf(door);
    mustBe(listener > 0, "the door has no listener");
    /* The listener does it too, but only some time after the signal: until then its old number would be taken for
     * the new one. */
    must(unlink(door->pidFile), door->pidFile);
    must(kill(listener, SIGHUP), "SIGHUP");
}

static void stopListener(const struct Door* door) {
    const pid_t listener = listenerOf(door);
    mustBe(listener > 0, "the door has no listener");
    const int process = must(pidfd_open(listener, 0), "pidfd_open");
    struct pollfd watched = {.fd = process, .events = POLLIN};
    must(kill(listener, SIGTERM), "SIGTERM");
    must(poll(&watched, 1, -1), "poll");
}

/* --- its port --- */

/* A connection to it, or negative. */
static int connectTo(const struct Door* door) {
    const struct sockaddr_in address = {
        .sin_family = AF_INET,
        .sin_port = htons((in_port_t)strtol(door->port, NULL, 10)),
        .sin_addr.s_addr = htonl(INADDR_LOOPBACK),
    };
    const int connection = must(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    if (connect(connection, (const struct sockaddr*)&address, sizeof address) != 0) {
        close(connection);
        return -1;
    }
    return connection;
}

/* A listener that has left its number listens: the first attempt succeeds. */
static void awaitBanner(const struct Door* door) {
    static const char banner[] = "SSH-2.0-";
    char text[256] = "";
    size_t size = 0;
    const int connection = must(connectTo(door), "connect");
    while (size < sizeof banner - 1) {
        const int more = must((int)read(connection, text + size, sizeof text - 1 - size), "the banner");
        mustBe(more > 0, "the port does not greet");
        size += (size_t)more;
    }
    mustBe(strncmp(text, banner, sizeof banner - 1) == 0, "the port greets otherwise");
    close(connection);
}

/* The end of the listener nearly always closes the port at once; only a session that is just being made may still
 * hold it for a moment. */
static void awaitRefusal(const struct Door* door) {
    int connection;
    while ((connection = connectTo(door)) >= 0) {
        close(connection);
    }
}

/* --- steps --- */

static void unlock(struct Door* door) {
    writeFile(door);
    askSshd(door);
    watchFolder(door->folder);
    startListener(door);
    awaitListener(door);
    awaitBanner(door);
}

static void lock(struct Door* door) {
    writeFile(door);
    stopListener(door);
    awaitRefusal(door);
}

static void changeSettings(struct Door* door) {
    writeFile(door);
    askSshd(door);
    watchFolder(door->folder);
    reloadListener(door);
    awaitListener(door);
    awaitBanner(door);
}

typedef void (*Step)(struct Door*);

static Step stepOf(const char* name) {
    static const struct {
        const char* name;
        Step step;
    } steps[] = {{"unlock", unlock}, {"lock", lock}, {"settings", changeSettings}};
    for (size_t i = 0; i < sizeof steps / sizeof *steps; ++i) {
        if (strcmp(name, steps[i].name) == 0) {
            return steps[i].step;
        }
    }
    return NULL;
}

int main(int argc, char** argv) {
    const Step step = argc >= 6 && argc % 2 == 0 ? stepOf(argv[2]) : NULL;
    mustBe(step != NULL, "usage: bench-bare PLACE unlock|lock|settings CIPHERS (DOOR PORT)...");
    alarm(longestSeconds);
    for (int word = 4; word < argc; word += 2) {
        struct Door door = doorOf(argv[1], argv[3], argv[word], argv[word + 1]);
        step(&door);
    }
    return 0;
}
