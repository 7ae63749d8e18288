// vorma: opens and closes this node's management doors over SSH, and sets how sshd serves them.
// docs/adapter-contract.md tells the command lines, the settings and what is promised.

#include <unistd.h>

#include <new>

#include "Change.h"
#include "Limits.h"
#include "Refusal.h"
#include "Request.h"
#include "Restoring.h"
#include "Status.h"
#include "Store.h"
#include "Surroundings.h"
#include "SystemCall.h"

namespace {

using namespace Vorma;
using Tul::Deadline;

constexpr std::size_t longestComplaint = 600;

/** One line of plain text, whatever was passed to us. */
void complain(const std::string& why) {
    std::string line = "vorma: " + why;
    for (char& letter : line) {
        letter = letter < ' ' || letter > '~' ? '?' : letter;
    }
    line = line.substr(0, longestComplaint - 1) + "\n";
    // Whoever does not listen has the exit code.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

void print(const std::string& text) {
    for (std::string_view left = text; !left.empty();) {
        const ssize_t size =
            Tul::succeeding("standard output", [&left] { return write(STDOUT_FILENO, left.data(), left.size()); });
        left.remove_prefix(static_cast<std::size_t>(size));
    }
}

void carryOut(const Request& request, const Configuration& configuration) {
    const Deadline whole(Limits::whole);
    const Deadline forward = whole.within(Limits::forward);
    configuration.checkFiles();
    Store store(configuration.stateDirectory);
    store.lock(forward.within(Limits::lock));
    std::optional<Found> found = store.load();
    if (!found) {
        found = Found{adopted(store), false};
        store.beginAnew(found->state);
    }
    // Of a state that may be old only the doors that are named are brought in line, but for what was cut short.
    const bool restores = found->certain || store.cutShortAt();
    Sight sight = restores ? restoreAll(store, configuration, found->state, forward) : Sight();
    const bool look = !found->certain || request.kind == Request::Kind::Settle;
    Change(store, configuration, std::move(sight), forward, whole)
        .make(found->state, request.applyTo(found->state), request.doors(), look);
}

void run(const Request& request, const char* calledAs) {
    if (request.kind == Request::Kind::Help) {
        print(help());
        return;
    }
    const Configuration configuration = Configuration::besideProgram(calledAs);
    request.checkKnownIn(configuration.parsedRevision());
    switch (request.kind) {
        case Request::Kind::Revision:
            print(configuration.revision + "\n");
            break;
        case Request::Kind::Status:
            print(status(configuration, request.json));
            break;
        default:
            carryOut(request, configuration);
    }
}

int end(Exit code, const std::string& why) {
    complain(why);
    return static_cast<int>(code);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        holdStandardStreams();
        takeSignalsAfresh();
        run(Request::parse({argv + std::min(argc, 1), argv + argc}), argc > 0 ? argv[0] : "");
        return 0;
    } catch (const Refusal& refusal) {
        return end(refusal.code(), refusal.what());
    } catch (const std::bad_alloc&) {
        return end(Exit::Store, "out of memory; nothing was changed");
    } catch (const std::exception& failure) {
        return end(Exit::Store, std::string(failure.what()) + "; nothing was changed");
    }
}
