#include "Place.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace TulTest {

namespace {

namespace fs = std::filesystem;

constexpr const char* sshd = "/usr/sbin/sshd";
constexpr std::chrono::seconds runLimit(25);
constexpr std::chrono::seconds greetingLimit(5);
constexpr const char* oldSettings =
    "--ciphers aes256-ctr,aes128-ctr --kexAlgorithms curve25519-sha256 --macs hmac-sha2-256 --ipQos 10 "
    "--renegotiationTime 60";
constexpr const char* newSettings =
    "--ciphers aes128-ctr --kexAlgorithms ecdh-sha2-nistp256 --macs hmac-sha2-512 --ipQos 46 --renegotiationTime "
    "3600";

std::string baseConfig(const fs::path& key) {
    const bool isRoot = geteuid() == 0;
    return "HostKey " + key.string() + "\nUsePAM " + (isRoot ? "no" : "yes") +
           "\nStrictModes no\nPasswordAuthentication no\nKbdInteractiveAuthentication no\nMaxStartups 1000\n";
}

void write(const fs::path& file, const std::string& text) {
    std::ofstream(file) << text;
}

std::vector<std::string> filesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(folder, none)) {
        names.push_back(folder.filename() / entry.path().filename());
    }
    return names;
}

}  // namespace

std::optional<std::string> contentOf(const fs::path& file) {
    std::ifstream stream(file);
    return stream ? std::optional(std::string(std::istreambuf_iterator<char>(stream), {})) : std::nullopt;
}

Ending runToEnd(const Words& command) {
    AdapterRun run(command);
    run.release();
    return run.await(Clock::now() + runLimit);
}

void makeKey(const fs::path& folder) {
    const Ending ending =
        runToEnd({"/usr/bin/ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / "host_key"});
    if (ending.code != 0) {
        throw std::runtime_error("ssh-keygen: " + ending.text());
    }
}

Place::Place(fs::path folder, const fs::path& adapter, PortSupply& ports)
    : _folder(std::move(folder)), _supply(ports) {
    for (int& port : _ports) {
        port = ports.take();
    }
    writeSettings(adapter);
}

Place::~Place() {
    std::error_code ignored;
    sweep(_folder.string() + "/");
    fs::remove_all(_folder, ignored);
    std::for_each(_ports.begin(), _ports.end(), [this](int port) { _supply.giveBack(port); });
}

void Place::writeSettings(const fs::path& adapter) const {
    fs::create_directories(_folder / "scripts");
    fs::create_symlink(adapter, _folder / "scripts/vorma");
    write(_folder / "base_config", baseConfig(_folder.parent_path().parent_path() / "host_key"));
    write(_folder / "scripts/vorma.conf", "STATE_DIR=" + store().string() + "\nBASE_CONFIG=" +
                                              (_folder / "base_config").string() + "\nLISTEN_ADDRESS=127.0.0.1\n");
}

int Place::port(char letter) const {
    return _ports.at(std::string("ABNO").find(letter));
}

Words Place::command(const std::string& line) const {
    Words words{_folder / "scripts/vorma"};
    std::istringstream stream(line);
    for (std::string word; stream >> word;) {
        if (word == "OLD" || word == "NEW") {
            std::istringstream settings(word == "OLD" ? oldSettings : newSettings);
            words.insert(words.end(), std::istream_iterator<std::string>(settings), {});
        } else {
            words.push_back(word.size() == 1 ? std::to_string(port(word[0])) : word);
        }
    }
    return words;
}

Ending Place::run(const std::string& line) const {
    return runToEnd(command(line));
}

DoorView Place::lookAt(std::size_t door) const {
    DoorView view;
    view.file = contentOf(file(door));
    view.listeners = listenersOf(file(door));
    for (const char letter : std::string(door == 0 ? "AB" : "N")) {
        const Answer answer = ask(port(letter), Clock::now() + greetingLimit);
        if (answer.kind == Answer::Greeting) {
            view.greeting.push_back(port(letter));
            view.offer = answer.offer;
        } else if (answer.kind == Answer::Silent) {
            view.silent.push_back(port(letter));
        }
    }
    return view;
}

View Place::look() const {
    View view{{lookAt(0), lookAt(1)}, contentOf(store() / "state"), filesIn(store() / "new")};
    const std::vector<std::string> old = filesIn(store() / "old");
    view.remains.insert(view.remains.end(), old.begin(), old.end());
    return view;
}

View Place::lookCalmly() const {
    await(Clock::now() + std::chrono::seconds(3),
          [this] { return listenersOf(file(0)).size() < 2 && listenersOf(file(1)).size() < 2; });
    return look();
}

void Place::startBystander(PidFile what) {
    const fs::path config = _folder / "other_config";
    write(config, *contentOf(_folder / "base_config") + "ListenAddress 127.0.0.1\nPidFile none\n");
    const std::string port = std::to_string(this->port('O'));
    _bystander = std::make_unique<AdapterRun>(what == PidFile::NamesSshd ? Words{sshd, "-D", "-f", config, "-p", port}
                                                                         : Words{"/usr/bin/tail", "-f", config});
    _bystander->release();
    await(Clock::now() + runLimit, [this] { return commandLine(_bystander->pid()).starts_with("/usr/"); });
}

bool Place::isBystanderAlive() const {
    return !_bystander || isAlive(_bystander->pid());
}

void Place::disturb(PidFile what) {
    const fs::path pidFile = store() / "clissh.pid";
    if (what == PidFile::Removed) {
        fs::remove(pidFile);
    } else if (what != PidFile::Kept) {
        if (!_bystander) {
            startBystander(what);
        }
        write(pidFile, std::to_string(_bystander->pid()) + "\n");
    }
}

std::string Place::effective(std::size_t door) const {
    const Ending ending = runToEnd({sshd, "-T", "-f", file(door)});
    return "\n" + ending.output + "exit " + std::to_string(ending.code);
}

}  // namespace TulTest
