// Loading and unloading the component's library, each time in a process that has none of its libraries yet.

#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "Script.h"

namespace {

void load(benchmark::State& state, const std::string& library) {
    for ([[maybe_unused]] auto _ : state) {
        double nanoseconds = 0;
        double loaded = 0;
        double initialised = 0;
        std::istringstream(TulBench::runBySpawn({TUL_LOAD_HOST, library})) >> nanoseconds >> loaded >> initialised;
        state.SetIterationTime(nanoseconds / 1e9);
        state.counters["loaded"] = loaded * 1024;
        state.counters["initialised"] = initialised * 1024;
    }
}
BENCHMARK_CAPTURE(load, component, TUL_COMPONENT_LIBRARY)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(load, sameLibraries, TUL_SAME_LIBRARIES)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(load, pocoAlone, TUL_POCO_ALONE)->UseManualTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
