// How long doors take to open, close and change: by the least that can be done, by the adapter, and by an operator's
// command to the node. Each has a private place of demo/place.sh with ports of its own:
//
//     bench-doors (PLACE CLI-PORT NETCONF-PORT){3} [OPTION OF GOOGLE BENCHMARK...]

#include <Poco/Pipe.h>
#include <Poco/PipeStream.h>
#include <Poco/Process.h>
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <thread>

#include "Door.h"
#include "Script.h"

namespace {

using namespace TulBench;
namespace fs = std::filesystem;

/** Two lists that every sshd knows; a change goes from one to the other. */
const std::string lists[] = {"aes256-ctr,aes128-ctr", "aes128-ctr,aes256-ctr"};

constexpr int wordsOfPlace = 3;
/** Before each measured step: what was done before it leaves dying processes behind, which nobody can wait for. */
constexpr std::chrono::milliseconds calm(5);

/** A private place with its two doors, whose listeners leave their numbers in a folder of it. */
struct Place {
    Place(char** words, const std::string& pidFolder)
        : folder(words[0]),
          cli(std::stoi(words[1]), folder / pidFolder / "clissh.pid"),
          netconf(std::stoi(words[2]), folder / pidFolder / "netconfssh.pid") {
        fs::create_directory(folder / pidFolder);
    }

    void remember() {
        cli.remember();
        netconf.remember();
    }

    void awaitGreetings() const {
        cli.awaitGreeting();
        netconf.awaitGreeting();
    }

    void checkLists(const std::string& list) const {
        if (!cli.offers(list) || !netconf.offers(list)) {
            throw std::runtime_error("a door does not offer " + list);
        }
    }

    fs::path folder;
    Door cli;
    Door netconf;
};

/** What is done to a place; each returns as soon as a client could see it. finish() is not timed. */
class Means {
public:
    explicit Means(Place place) : at(std::move(place)) {}
    virtual ~Means() = default;

    virtual void unlock() = 0;
    virtual void lock() = 0;
    virtual void setCiphers(const std::string& list) = 0;
    virtual void finish() {}

    Place at;
};

/** One run of a program for each step. */
class Program : public Means {
public:
    explicit Program(Place place) : Means(std::move(place)) {}

    void unlock() override {
        at.cli.remember();
        run(unlocking("clissh", at.cli));
        at.cli.awaitGreeting();
    }

    void lock() override {
        const pid_t listener = at.cli.listener();
        run(locking("clissh", at.cli));
        at.cli.awaitRefusal(listener);
    }

    void setCiphers(const std::string& list) override {
        at.remember();
        run(setting(list));
        at.awaitGreetings();
    }

    void finish() override { await(_running, _command); }

    virtual Command unlocking(const std::string& name, const Door& door) const = 0;
    virtual Command locking(const std::string& name, const Door& door) const = 0;
    virtual Command setting(const std::string& list) const = 0;

private:
    void run(const Command& command) {
        _command = command;
        _running = start(_command);
    }

    Command _command;
    pid_t _running = 0;
};

/** No checks but sshd's own, no way back, nothing kept: what no adapter can do without. */
class Bare final : public Program {
public:
    explicit Bare(Place place) : Program(std::move(place)) { runBySpawn(unlocking("netconfssh", at.netconf)); }

    ~Bare() override { runBySpawn(locking("netconfssh", at.netconf)); }

    Command unlocking(const std::string& name, const Door& door) const override {
        return {TUL_BARE_PROGRAM, at.folder, "unlock", lists[1], name, door.port()};
    }

    Command locking(const std::string& name, const Door& door) const override {
        return {TUL_BARE_PROGRAM, at.folder, "lock", lists[1], name, door.port()};
    }

    Command setting(const std::string& list) const override {
        return {TUL_BARE_PROGRAM, at.folder,     "settings",   list,
                "clissh",         at.cli.port(), "netconfssh", at.netconf.port()};
    }
};

class Adapter final : public Program {
public:
    explicit Adapter(Place place) : Program(std::move(place)) {
        runBySpawn(unlocking("netconfssh", at.netconf));
        runBySpawn(setting(lists[1]));
    }

    ~Adapter() override { runBySpawn(locking("netconfssh", at.netconf)); }

    Command unlocking(const std::string& name, const Door& door) const override {
        return {vorma(), name, "unlock", "port", door.port()};
    }

    Command locking(const std::string& name, const Door&) const override { return {vorma(), name, "lock"}; }

    Command setting(const std::string& list) const override { return {vorma(), "ssh", "--ciphers", list}; }

private:
    std::string vorma() const { return at.folder / "scripts/vorma"; }
};

/** The node, with its commands from a pipe. */
class Node : public Means {
public:
    explicit Node(Place place) : Means(std::move(place)), _process(launch()), _said(_output) {
        finish();  // the runs of its start: two ports, the revision, and the settings
        finish();
        finish();
        finish();
        setCiphers(lists[1]);
        finish();
        lock();
        finish();
    }

    ~Node() override {
        _commands.close();
        _process.wait();
    }

    void unlock() override {
        at.cli.remember();
        say("unlock CliSsh");
        at.cli.awaitGreeting();
    }

    void lock() override {
        const pid_t listener = at.cli.listener();
        say("lock CliSsh");
        at.cli.awaitRefusal(listener);
    }

    void setCiphers(const std::string& list) override {
        at.remember();
        say("set Ssh selectedCiphers=" + list);
        at.awaitGreetings();
    }

    /** Each command makes one run of the adapter, and the node tells when it has ended. */
    void finish() override {
        std::string line;
        while (!line.starts_with("run: vorma ")) {
            if (!std::getline(_said, line)) {
                throw std::runtime_error("the node has ended");
            }
        }
        if (line.find(" -> ok") == std::string::npos) {
            throw std::runtime_error("the node says: " + line);
        }
    }

private:
    Poco::ProcessHandle launch() {
        return Poco::Process::launch(
            TUL_NODE_PROGRAM,
            {"--script-dir", at.folder / "scripts", "--cli-port", at.cli.port(), "--netconf-port", at.netconf.port()},
            &_input, &_output, nullptr);
    }

    void say(const std::string& command) { _commands << command << std::endl; }

    Poco::Pipe _input;
    Poco::Pipe _output;
    Poco::ProcessHandle _process;
    Poco::PipeOutputStream _commands{_input};
    Poco::PipeInputStream _said;
};

std::unique_ptr<Bare> bare;
std::unique_ptr<Adapter> adapter;
std::unique_ptr<Node> node;

double secondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/** Times the step until a client can see it; how long it takes to finish is shown besides. */
template <class Step>
void timed(benchmark::State& state, Means& means, const Step& step) {
    std::this_thread::sleep_for(calm);
    const auto begin = std::chrono::steady_clock::now();
    step();
    state.SetIterationTime(secondsSince(begin));
    means.finish();
    state.counters["finished"] = secondsSince(begin);
}

void unlock(benchmark::State& state, Means& means) {
    for ([[maybe_unused]] auto _ : state) {
        timed(state, means, [&] { means.unlock(); });
        means.lock();
        means.finish();
    }
}

void lock(benchmark::State& state, Means& means) {
    for ([[maybe_unused]] auto _ : state) {
        means.unlock();
        means.finish();
        timed(state, means, [&] { means.lock(); });
    }
}

/** Both doors are open, and both get the other list. */
void settings(benchmark::State& state, Means& means) {
    for ([[maybe_unused]] auto _ : state) {
        means.unlock();
        means.finish();
        timed(state, means, [&] { means.setCiphers(lists[0]); });
        means.at.checkLists(lists[0]);
        means.setCiphers(lists[1]);
        means.finish();
        means.lock();
        means.finish();
    }
}

BENCHMARK_CAPTURE(unlock, bare, *bare)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(unlock, adapter, *adapter)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(unlock, node, *node)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(lock, bare, *bare)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(lock, adapter, *adapter)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(lock, node, *node)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(settings, bare, *bare)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(settings, adapter, *adapter)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(settings, node, *node)->UseManualTime()->Iterations(1);

/** Until the run's output has ended, and it as well: as the component sees it. */
void wholeRun(benchmark::State& state, const Command& command) {
    for ([[maybe_unused]] auto _ : state) {
        std::this_thread::sleep_for(calm);
        const auto begin = std::chrono::steady_clock::now();
        runBySpawn(command);
        state.SetIterationTime(secondsSince(begin));
    }
}

BENCHMARK_CAPTURE(wholeRun, nothing, Command{TUL_NOTHING_PROGRAM})->UseManualTime()->Iterations(1);
// What holds already, asked for once more: the settings of both doors, a closed door, and an open one.
BENCHMARK_CAPTURE(wholeRun, sameSettings, adapter->setting(lists[1]))->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(wholeRun, sameClosed, adapter->locking("clissh", adapter->at.cli))->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(wholeRun, sameOpen, adapter->unlocking("netconfssh", adapter->at.netconf))
    ->UseManualTime()
    ->Iterations(1);

void memory(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        state.counters["resident"] =
            static_cast<double>(residentAtMost(adapter->unlocking("clissh", adapter->at.cli)));
        runBySpawn(adapter->locking("clissh", adapter->at.cli));
    }
}
BENCHMARK(memory)->Iterations(1);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc != 1 + 3 * wordsOfPlace) {
        std::cerr << "usage: bench-doors (PLACE CLI-PORT NETCONF-PORT){3} [OPTION OF GOOGLE BENCHMARK...]\n";
        return 2;
    }
    bare = std::make_unique<Bare>(Place(argv + 1, "bare"));
    adapter = std::make_unique<Adapter>(Place(argv + 1 + wordsOfPlace, "sshd"));
    node = std::make_unique<Node>(Place(argv + 1 + 2 * wordsOfPlace, "sshd"));
    benchmark::RunSpecifiedBenchmarks();
    node.reset();
    adapter.reset();
    bare.reset();
    return 0;
}
