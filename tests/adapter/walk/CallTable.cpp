#include "CallTable.h"

#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace TulTest {

namespace {

using Kind = Trait::Kind;

constexpr Trait process{true, {EAGAIN, ENOMEM}, false, false, Kind::Process};
constexpr Trait program{true, {ENOMEM, EACCES}};
constexpr Trait opening{false, {EMFILE, EACCES, EIO}, false, false, Kind::Open};
constexpr Trait copying{false, {EMFILE}};
constexpr Trait control{false, {EMFILE}, false, false, Kind::Duplicate};
constexpr Trait socketMaking{false, {EMFILE, ENOMEM}};
constexpr Trait connecting{true, {EAGAIN, ENOMEM}};
constexpr Trait writing{true, {ENOSPC, EIO}, true};
constexpr Trait renaming{true, {ENOSPC, EIO, EROFS}, false, false, Kind::Rename};
constexpr Trait linking{true, {ENOSPC}};
constexpr Trait syncing{true, {EIO, ENOSPC}, false, false, Kind::Sync};
constexpr Trait removing{true, {EIO, EROFS}};
constexpr Trait folderMaking{true, {ENOSPC, EROFS}};
constexpr Trait signalling{true, {EPERM}, false, true};
constexpr Trait handle{false, {EINVAL, EMFILE}, false, true};
constexpr Trait memory{false, {ENOMEM}};
constexpr Trait listening{true, {ENOMEM}};
constexpr Trait readingFile{false, {EIO}, true, true};
constexpr Trait reading{false, {EIO}, false, true};
constexpr Trait effect{true, {}};
constexpr Trait plain{};

#define TUL_CALL(name, trait) \
    { SYS_##name, #name, &(trait) }
constexpr NamedCall calls[] = {
    TUL_CALL(fork, process),       TUL_CALL(vfork, process),        TUL_CALL(clone, process),
    TUL_CALL(clone3, process),     TUL_CALL(execve, program),       TUL_CALL(execveat, program),
    TUL_CALL(open, opening),       TUL_CALL(openat, opening),       TUL_CALL(dup, copying),
    TUL_CALL(dup2, copying),       TUL_CALL(dup3, copying),         TUL_CALL(fcntl, control),
    TUL_CALL(pipe, copying),       TUL_CALL(pipe2, copying),        TUL_CALL(socket, socketMaking),
    TUL_CALL(connect, connecting), TUL_CALL(write, writing),        TUL_CALL(pwrite64, writing),
    TUL_CALL(writev, writing),     TUL_CALL(rename, renaming),      TUL_CALL(renameat, renaming),
    TUL_CALL(renameat2, renaming), TUL_CALL(link, linking),         TUL_CALL(linkat, linking),
    TUL_CALL(symlink, linking),    TUL_CALL(symlinkat, linking),    TUL_CALL(fsync, syncing),
    TUL_CALL(fdatasync, syncing),  TUL_CALL(sync, effect),          TUL_CALL(syncfs, syncing),
    TUL_CALL(unlink, removing),    TUL_CALL(unlinkat, removing),    TUL_CALL(rmdir, removing),
    TUL_CALL(mkdir, folderMaking), TUL_CALL(mkdirat, folderMaking), TUL_CALL(kill, signalling),
    TUL_CALL(tgkill, signalling),  TUL_CALL(pidfd_open, handle),    TUL_CALL(pidfd_send_signal, signalling),
    TUL_CALL(mmap, memory),        TUL_CALL(brk, memory),           TUL_CALL(bind, listening),
    TUL_CALL(listen, listening),   TUL_CALL(read, readingFile),     TUL_CALL(pread64, readingFile),
    TUL_CALL(getdents64, reading), TUL_CALL(readlink, reading),     TUL_CALL(readlinkat, reading),
    TUL_CALL(fstat, reading),      TUL_CALL(newfstatat, reading),   TUL_CALL(ftruncate, effect),
    TUL_CALL(flock, effect),       TUL_CALL(setsid, effect),        TUL_CALL(setpgid, effect),
    TUL_CALL(close, plain),        TUL_CALL(wait4, plain),          TUL_CALL(waitid, plain),
    TUL_CALL(poll, plain),         TUL_CALL(ppoll, plain),          TUL_CALL(recvfrom, plain),
    TUL_CALL(sendto, plain),       TUL_CALL(mprotect, plain),       TUL_CALL(munmap, plain),
    TUL_CALL(lseek, plain),        TUL_CALL(access, plain),         TUL_CALL(rt_sigaction, plain),
    TUL_CALL(getpid, plain),       TUL_CALL(getsockname, plain),    TUL_CALL(rt_sigprocmask, plain),
    TUL_CALL(exit_group, plain)};
#undef TUL_CALL

template <class IsItT>
const NamedCall* find(IsItT isIt) {
    const auto* call = std::find_if(std::begin(calls), std::end(calls), isIt);
    return call == std::end(calls) ? nullptr : call;
}

}  // namespace

const NamedCall* findCall(long code) {
    return find([code](const NamedCall& call) { return call.code == code; });
}

const NamedCall* findCall(const char* name) {
    return find([name](const NamedCall& call) { return std::strcmp(call.name, name) == 0; });
}

const Trait& traitOf(long code) {
    const NamedCall* call = findCall(code);
    return call == nullptr ? plain : *call->trait;
}

}  // namespace TulTest
