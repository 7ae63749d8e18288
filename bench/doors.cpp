// How long doors take to open, close and change: by the least that can be done, by the adapter, and by an operator's
// command to the node. Each has a private place of demo/place.sh with ports of its own:
//
//     bench-doors (PLACE CLI-PORT NETCONF-PORT){3} [OPTION OF GOOGLE BENCHMARK...]

#include <Poco/Pipe.h>
#include <Poco/PipeStream.h>
#include <Poco/Process.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
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

/** A private place with its two doors, and a script that does nothing. */
struct Place {
    Place(char** words, const std::string& pidFolder)
        : folder(words[0]),
          cli(std::stoi(words[1]), folder / pidFolder / "clissh.pid"),
          netconf(std::stoi(words[2]), folder / pidFolder / "netconfssh.pid") {
        std::ofstream(nothing()) << "#!/bin/sh\n";
        fs::permissions(nothing(), fs::perms::owner_all);
    }

    fs::path nothing() const { return folder / "scripts/nothing"; }

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

/** No checks but sshd's own, no way back, nothing kept: what no adapter can do without. */
class Bare : public Means {
public:
    explicit Bare(Place place) : Means(std::move(place)) {
        fs::create_directory(at.folder / "bare");
        open("netconfssh", at.netconf);
    }

    void unlock() override {
        runBySpawn({at.nothing()});
        open("clissh", at.cli);
    }

    void lock() override {
        runBySpawn({at.nothing()});
        writeFile("clissh", at.cli);
        const pid_t listener = at.cli.listener();
        kill(listener, SIGTERM);
        at.cli.awaitRefusal(listener);
    }

    void setCiphers(const std::string& list) override {
        _ciphers = list;
        runBySpawn({at.nothing()});
        change("clissh", at.cli);
        change("netconfssh", at.netconf);
    }

    ~Bare() override { kill(at.netconf.listener(), SIGTERM); }

private:
    static constexpr const char* sshd = "/usr/sbin/sshd";

    fs::path file(const std::string& name) const { return at.folder / "bare" / name; }

    void writeFile(const std::string& name, const Door& door) {
        const fs::path target = file(name + ".conf");
        const fs::path candidate = file("new");
        const std::string text = "Port " + door.port() + "\nListenAddress 127.0.0.1\nPidFile " +
                                 file(name + ".pid").string() + "\nCiphers " + _ciphers + "\nInclude " +
                                 (at.folder / "ssh/sshd_config").string() + "\n";
        const int descriptor = ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (write(descriptor, text.data(), text.size()) < 0 || fsync(descriptor) != 0) {
            throw std::runtime_error(candidate.string() + " cannot be written");
        }
        close(descriptor);
        fs::rename(candidate, target);
    }

    void writeAndTest(const std::string& name, const Door& door) {
        writeFile(name, door);
        runBySpawn({sshd, "-t", "-f", file(name + ".conf")});
    }

    void open(const std::string& name, Door& door) {
        door.remember();
        writeAndTest(name, door);
        runBySpawn({sshd, "-f", file(name + ".conf")});
        door.awaitGreeting();
    }

    void change(const std::string& name, Door& door) {
        writeAndTest(name, door);
        const pid_t listener = door.listener();
        door.remember();
        kill(listener, SIGHUP);
        door.awaitGreeting();
    }

    std::string _ciphers = lists[1];
};

class Adapter : public Means {
public:
    explicit Adapter(Place place) : Means(std::move(place)) {
        run({"netconfssh", "unlock", "port", at.netconf.port()});
        finish();
        run({"ssh", "--ciphers", lists[1]});
        finish();
    }

    ~Adapter() override {
        run({"netconfssh", "lock"});
        finish();
    }

    void unlock() override {
        at.cli.remember();
        run({"clissh", "unlock", "port", at.cli.port()});
        at.cli.awaitGreeting();
    }

    void lock() override {
        const pid_t listener = at.cli.listener();
        run({"clissh", "lock"});
        at.cli.awaitRefusal(listener);
    }

    void setCiphers(const std::string& list) override {
        at.remember();
        run({"ssh", "--ciphers", list});
        at.awaitGreetings();
    }

    void finish() override { await(_running, _command); }

    Command command(const Command& arguments) const {
        Command whole{(at.folder / "scripts/vorma").string()};
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        return whole;
    }

private:
    void run(const Command& arguments) {
        _command = command(arguments);
        _running = start(_command);
    }

    Command _command;
    pid_t _running = 0;
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

using Owned = std::unique_ptr<Means>;
Owned bare;
Owned adapter;
Owned node;

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

void unlock(benchmark::State& state, const Owned& means) {
    for ([[maybe_unused]] auto _ : state) {
        timed(state, *means, [&] { means->unlock(); });
        means->lock();
        means->finish();
    }
}

void lock(benchmark::State& state, const Owned& means) {
    for ([[maybe_unused]] auto _ : state) {
        means->unlock();
        means->finish();
        timed(state, *means, [&] { means->lock(); });
    }
}

/** Both doors are open, and both get the other list. */
void settings(benchmark::State& state, const Owned& means) {
    for ([[maybe_unused]] auto _ : state) {
        means->unlock();
        means->finish();
        timed(state, *means, [&] { means->setCiphers(lists[0]); });
        means->at.checkLists(lists[0]);
        means->setCiphers(lists[1]);
        means->finish();
        means->lock();
        means->finish();
    }
}

BENCHMARK_CAPTURE(unlock, bare, bare)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(unlock, adapter, adapter)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(unlock, node, node)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(lock, bare, bare)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(lock, adapter, adapter)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(lock, node, node)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(settings, bare, bare)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(settings, adapter, adapter)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(settings, node, node)->UseManualTime()->Iterations(1);

void shell(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        runBySpawn({bare->at.nothing()});
    }
}
BENCHMARK(shell)->UseRealTime()->Iterations(1);

/** What holds already, asked for once more: of the doors' settings, and of one door. */
void nothingToChange(benchmark::State& state, const Command& arguments) {
    for ([[maybe_unused]] auto _ : state) {
        runBySpawn(static_cast<const Adapter&>(*adapter).command(arguments));
    }
}
BENCHMARK_CAPTURE(nothingToChange, settings, {"ssh", "--ciphers", lists[1]})->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(nothingToChange, door, {"clissh", "lock"})->UseRealTime()->Iterations(1);

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
