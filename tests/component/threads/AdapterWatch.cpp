#include "AdapterWatch.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace TulTest {

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

using Words = std::vector<std::string>;

thread_local bool delivers = false;

std::size_t placeOf(const std::string& subsystem) {
    return subsystem == "clissh" ? 0 : 1;
}

/** What one handler queues and sends. Anything else is a mixture of two. */
bool isOneHandlersBatch(const Words& words) {
    static const Words batches[] = {
        {"ssh", "--ipQos", "46"}, {"ssh", "--removeIpQoS"}, {"ssh", "--ciphers", "aes256-ctr,aes128-ctr"}};
    return std::find(std::begin(batches), std::end(batches), words) != std::end(batches);
}

void countIf(bool condition, std::atomic<unsigned>& counter) {
    counter.fetch_add(condition ? 1 : 0, relaxed);
}

}  // namespace

AdapterWatch::AdapterWatch() : _runner([this](const AdapterRun& run) { return answer(run); }) {}

void AdapterWatch::thisThreadDelivers() {
    delivers = true;
}

bool AdapterWatch::isOpen(const std::string& subsystem) const {
    return _isOpen.at(placeOf(subsystem)).load(relaxed);
}

std::string AdapterWatch::answer(const AdapterRun& run) {
    const unsigned number = runs.fetch_add(1, relaxed);
    if (delivers) {
        countIf(_handlerRuns.exchange(true, relaxed), overlaps);
        if (number % 64 == 0) {
            std::this_thread::yield();  // leaves the door open for a handler that does not wait its turn
        }
    }
    watch(run, delivers);
    if (delivers) {
        _handlerRuns.store(false, relaxed);
    }
    return run.words.front() == "spi-revision" ? "1.8.0\n" : "";
}

void AdapterWatch::watch(const AdapterRun& run, bool byHandler) {
    if (run.words.front() == "ssh") {
        countIf(byHandler && !isOneHandlersBatch(run.words), malformed);
    } else if (run.words.size() > 1) {
        const bool opens = run.words[1] == "unlock";
        const bool wasOpen = _isOpen.at(placeOf(run.words[0])).exchange(opens, relaxed);
        countIf(byHandler && opens == wasOpen, repeated);
    }
}

}  // namespace TulTest
