#include "Surroundings.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "Descriptor.h"

namespace Vorma {

namespace {

/** Whatever type the C library gives it. */
using Resource = decltype(RLIMIT_CPU);

struct Limit {
    Resource resource;
    rlim_t soft;
    rlim_t hard;
};

constexpr rlim_t mebibyte = rlim_t{1024} * 1024;

/** What the kernel gives to the first process, and what it gets from there. */
constexpr Limit limitsAtBoot[] = {
    {RLIMIT_CPU, RLIM_INFINITY, RLIM_INFINITY},
    {RLIMIT_FSIZE, RLIM_INFINITY, RLIM_INFINITY},
    {RLIMIT_DATA, RLIM_INFINITY, RLIM_INFINITY},
    {RLIMIT_STACK, 8 * mebibyte, RLIM_INFINITY},
    {RLIMIT_CORE, 0, RLIM_INFINITY},
    {RLIMIT_RSS, RLIM_INFINITY, RLIM_INFINITY},
    {RLIMIT_NOFILE, 1024, 4096},
    {RLIMIT_MEMLOCK, 8 * mebibyte, 8 * mebibyte},
    {RLIMIT_AS, RLIM_INFINITY, RLIM_INFINITY},
    {RLIMIT_LOCKS, RLIM_INFINITY, RLIM_INFINITY},
    {RLIMIT_MSGQUEUE, 819200, 819200},
    {RLIMIT_NICE, 0, 0},
    {RLIMIT_RTPRIO, 0, 0},
    {RLIMIT_RTTIME, RLIM_INFINITY, RLIM_INFINITY},
};

/** These the kernel makes of the size of the machine. */
constexpr Resource limitsOfMachine[] = {RLIMIT_NPROC, RLIMIT_SIGPENDING};

void set(const Limit& wanted) {
    rlimit limit{wanted.soft, wanted.hard};
    if (setrlimit(wanted.resource, &limit) == 0 || getrlimit(wanted.resource, &limit) != 0) {
        return;
    }
    limit.rlim_max = std::min(limit.rlim_max, wanted.hard);
    limit.rlim_cur = std::min(limit.rlim_max, wanted.soft);
    setrlimit(wanted.resource, &limit);
}

void setAsTheFirstProcess(Resource resource) {
    rlimit limit{};
    if (prlimit(1, resource, nullptr, &limit) == 0) {
        set({resource, limit.rlim_cur, limit.rlim_max});
    }
}

void resetScore() {
    const Tul::Descriptor file(open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    if (file.isOpen() && write(file.number(), "0", 1) != 1) {
        return;  // it was less, and must stay so
    }
}

void useAllProcessors() {
    cpu_set_t all;
    memset(&all, 0xFF, sizeof all);
    sched_setaffinity(0, sizeof all, &all);
}

}  // namespace

void holdStandardStreams() {
    int number = open("/dev/null", O_RDWR);
    while (number >= 0 && number <= STDERR_FILENO) {
        number = open("/dev/null", O_RDWR);
    }
    if (number > STDERR_FILENO) {
        close(number);
    }
}

void takeSignalsAfresh() {
    signal(SIGCHLD, SIG_DFL);  // ignored, the end of a child could not be waited for
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void shedTheCaller() {
    umask(S_IWGRP | S_IWOTH);
    if (chdir("/") != 0) {
        return;  // every path is absolute: nothing depends on it
    }
    const sched_param ordinary{};
    sched_setscheduler(0, SCHED_OTHER, &ordinary);
    setpriority(PRIO_PROCESS, 0, 0);
    useAllProcessors();
    resetScore();
    std::for_each(std::begin(limitsAtBoot), std::end(limitsAtBoot), set);
    std::for_each(std::begin(limitsOfMachine), std::end(limitsOfMachine), setAsTheFirstProcess);
}

}  // namespace Vorma
