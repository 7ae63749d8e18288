#include "Call.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <iterator>

#include "CallTable.h"

namespace TulTest {

namespace {

constexpr const char* makers[] = {"adapter", "helper", "listener"};
constexpr const char* nameless = "call-";

bool isA(const Call& call, Trait::Kind kind) {
    return traitOf(call.code).kind == kind;
}

bool creates(const Call& call) {
    const std::uint64_t flags = call.code == SYS_open ? call.arguments[1] : call.arguments[2];
    return isA(call, Trait::Kind::Open) && (flags & O_CREAT) != 0;
}

/** No pipe, socket or device: only a disk can be full or broken. */
bool isOnDisk(const Call& call) {
    const std::string file = fileBehind(call.pid, call.arguments[0]);
    return file.starts_with('/') && !file.starts_with("/dev/");
}

/** Of what fcntl does only this takes a descriptor. */
bool duplicates(const Call& call) {
    return call.arguments[1] == F_DUPFD || call.arguments[1] == F_DUPFD_CLOEXEC;
}

std::optional<long> codeOf(const std::string& name) {
    const NamedCall* call = findCall(name.c_str());
    long code = 0;
    if (call != nullptr) {
        return call->code;
    }
    const std::size_t at = std::char_traits<char>::length(nameless);
    const bool isNumber = name.starts_with(nameless) &&
                          std::from_chars(name.data() + at, name.data() + name.size(), code).ec == std::errc();
    return isNumber ? std::optional(code) : std::nullopt;
}

/** Up to the end of a page each time: what comes behind it need not be there. */
std::string textAt(pid_t pid, std::uint64_t address) {
    constexpr std::uint64_t page = 4096;
    const int memory = open(("/proc/" + std::to_string(pid) + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
    std::string text;
    while (text.find('\0') == std::string::npos && text.size() < page) {
        char data[page];
        const std::uint64_t at = address + text.size();
        const ssize_t size = pread(memory, data, page - at % page, static_cast<off_t>(at));
        if (size <= 0) {
            break;
        }
        text.append(data, static_cast<std::size_t>(size));
    }
    close(memory);
    return text.substr(0, text.find('\0'));
}

std::string linkOf(const std::string& link) {
    std::error_code none;
    return std::filesystem::read_symlink(link, none);
}

std::string pathOf(pid_t pid, std::uint64_t directory, std::uint64_t address) {
    const bool isHere = static_cast<int>(directory) == AT_FDCWD;
    const std::filesystem::path base =
        isHere ? linkOf("/proc/" + std::to_string(pid) + "/cwd") : fileBehind(pid, directory);
    return (base / textAt(pid, address)).lexically_normal();
}

}  // namespace

std::string nameOf(Maker maker) {
    return makers[static_cast<std::size_t>(maker)];
}

std::string nameOfCall(long code) {
    const NamedCall* call = findCall(code);
    return call == nullptr ? nameless + std::to_string(code) : call->name;
}

bool hasEffect(const Call& call) {
    return traitOf(call.code).hasEffect || creates(call);
}
bool makesProcess(const Call& call) {
    return isA(call, Trait::Kind::Process);
}
bool isRename(const Call& call) {
    return isA(call, Trait::Kind::Rename);
}
bool isSync(const Call& call) {
    return isA(call, Trait::Kind::Sync);
}

std::vector<int> failuresOf(const Call& call) {
    const Trait& trait = traitOf(call.code);
    const bool isSpared = (trait.ofAdapter && call.maker != Maker::Adapter) || (trait.onDisk && !isOnDisk(call)) ||
                          (trait.kind == Trait::Kind::Duplicate && !duplicates(call));
    if (isSpared) {
        return {};
    }
    std::vector<int> errors(trait.errors.begin(), std::find(trait.errors.begin(), trait.errors.end(), 0));
    if (creates(call)) {
        errors.insert(errors.end(), {ENOSPC, EROFS});
    }
    return errors;
}

std::string CallAddress::text() const {
    return nameOf(maker) + "." + nameOfCall(code) + "#" + std::to_string(occurrence);
}

std::optional<CallAddress> CallAddress::read(const std::string& text) {
    const std::size_t dot = text.find('.');
    const std::size_t hash = text.find('#');
    if (dot == std::string::npos || hash == std::string::npos || hash < dot) {
        return std::nullopt;
    }
    const auto* maker = std::find(std::begin(makers), std::end(makers), text.substr(0, dot));
    const std::optional<long> code = codeOf(text.substr(dot + 1, hash - dot - 1));
    CallAddress address{static_cast<Maker>(maker - std::begin(makers)), code.value_or(0), 0};
    std::from_chars(text.data() + hash + 1, text.data() + text.size(), address.occurrence);
    const bool isRead = maker != std::end(makers) && code && address.occurrence > 0;
    return isRead ? std::optional(address) : std::nullopt;
}

std::string fileBehind(pid_t pid, std::uint64_t descriptor) {
    return linkOf("/proc/" + std::to_string(pid) + "/fd/" + std::to_string(static_cast<int>(descriptor)));
}

std::string renameTarget(const Call& call) {
    return call.code == SYS_rename ? pathOf(call.pid, static_cast<std::uint64_t>(AT_FDCWD), call.arguments[1])
                                   : pathOf(call.pid, call.arguments[2], call.arguments[3]);
}

}  // namespace TulTest
