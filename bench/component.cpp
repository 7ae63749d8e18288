// What the component adds to what cannot be avoided, from a process that holds so many MiB:
//
//     bench-component [MIB] [OPTION OF GOOGLE BENCHMARK...]

#include <Poco/Mutex.h>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <stdlib.h>

#include <chrono>
#include <future>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

#include "Allocations.h"
#include "ComponentHost.h"
#include "Notification.h"

namespace {

using namespace TulBench;

constexpr std::size_t mebibyte = 1024 * 1024;
constexpr int million = 1'000'000;
constexpr int switches = 1000; /**< notifications that run the adapter; even, so that the state is as before */

std::unique_ptr<ComponentHost> host;

/** The unavoidable cost of a run: the same script, by various means. */
void run(benchmark::State& state, std::string (*means)(const Command&)) {
    const Command command = host->adapter({"clissh", "lock"});
    for ([[maybe_unused]] auto _ : state) {
        means(command);
    }
}
BENCHMARK_CAPTURE(run, posix_spawn, runBySpawn)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(run, fork, runByFork)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(run, poco, runByPoco)->UseRealTime()->Iterations(1);

/** From the router's call until the handler has returned; each closes or opens the port by one run. */
void notification(benchmark::State& state) {
    static std::int32_t administrativeState = 1;
    StateNotifications change;
    for ([[maybe_unused]] auto _ : state) {
        administrativeState = 1 - administrativeState;
        change.setState(administrativeState);
        host->deliver(change.first());
    }
}
BENCHMARK(notification)->UseRealTime()->Iterations(1);

/** The state that is in force anyway. */
void noChange(benchmark::State& state) {
    StateNotifications change;
    host->deliver(change.first());  // whatever was in force before
    const std::size_t before = allocations();
    for ([[maybe_unused]] auto _ : state) {
        host->deliver(change.first());
    }
    state.counters["allocations"] = static_cast<double>(allocations() - before);
}
BENCHMARK(noChange)->UseRealTime();

/** A million events, always the same, in notifications of several sizes: what the records cost is in all of them. */
void millionEvents(benchmark::State& state) {
    StateNotifications changes(million, static_cast<std::size_t>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        for (auto& record : changes.records()) {
            host->deliver(record);
        }
    }
}
BENCHMARK(millionEvents)->RangeMultiplier(10)->Range(1, million)->UseRealTime()->Iterations(1);

/** Not timed: what the heap holds for a component at rest, and how much more after many notifications. */
void heap(benchmark::State& state) {
    StateNotifications change;
    for ([[maybe_unused]] auto _ : state) {
        host.reset();
        const std::size_t without = mallinfo2().uordblks;
        host = std::make_unique<ComponentHost>(TUL_COMPONENT_LIBRARY);
        host->start();
        const std::size_t atRest = mallinfo2().uordblks;
        for (int i = 0; i < million; ++i) {
            host->deliver(change.first());
        }
        for (int i = 0; i < switches; ++i) {
            change.setState(i % 2);
            host->deliver(change.first());
        }
        const std::size_t after = mallinfo2().uordblks;
        state.counters["atRest"] = static_cast<double>(atRest) - static_cast<double>(without);
        state.counters["growth"] = static_cast<double>(after) - static_cast<double>(atRest);
    }
}
BENCHMARK(heap)->UseRealTime()->Iterations(1);

/** What the component's lock costs by itself. */
void lockAndUnlock(benchmark::State& state) {
    Poco::Mutex mutex;
    for ([[maybe_unused]] auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
BENCHMARK(lockAndUnlock)->UseRealTime();

double secondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/** Of a fresh component: one that was started before knows its adapter's revision already. */
void start(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        host.reset();
        host = std::make_unique<ComponentHost>(TUL_COMPONENT_LIBRARY);
        const auto begin = std::chrono::steady_clock::now();
        host->start();
        state.SetIterationTime(secondsSince(begin));
    }
}
BENCHMARK(start)->UseManualTime()->Iterations(1);

/** The four runs of a start on an empty node. */
void startRuns(benchmark::State& state) {
    const Command runs[] = {
        host->adapter({"clissh", "unlock", "port", "2022"}), host->adapter({"netconfssh", "unlock", "port", "2830"}),
        host->adapter({"spi-revision"}),
        host->adapter({"ssh", "--ipQos", "46", "--renegotiationTime", "3600", "--ciphers", "aes256-ctr"})};
    for ([[maybe_unused]] auto _ : state) {
        for (const Command& command : runs) {
            runBySpawn(command);
        }
    }
}
BENCHMARK(startRuns)->UseRealTime()->Iterations(1);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<char> resident(argc > 1 ? strtoul(argv[1], nullptr, 10) * mebibyte : 0, 'x');
    benchmark::DoNotOptimize(resident.data());
    // A framework has threads. In a process that has none the C library locks and counts without a locked bus.
    std::promise<void> end;
    std::thread idle([&end] { end.get_future().wait(); });
    host = std::make_unique<ComponentHost>(TUL_COMPONENT_LIBRARY);
    const std::size_t before = allocations();
    host->start();
    if (allocations() == before) {
        std::cerr << "bench-component: allocations are not counted, a start makes some\n";
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    host.reset();
    end.set_value();
    idle.join();
    return 0;
}
