#ifndef TUL_WALK_PLACE_H
#define TUL_WALK_PLACE_H

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AdapterRun.h"
#include "Port.h"
#include "Processes.h"
#include "Scenario.h"

namespace TulTest {

/** What a door looks like from outside. */
struct DoorView {
    std::optional<std::string> file;
    std::vector<Process> listeners;
    std::vector<int> greeting;  ///< its ports that greet
    std::vector<int> silent;    ///< its ports that take connections and say nothing
    std::string offer;
};

/** What the whole place looks like from outside. */
struct View {
    std::array<DoorView, std::size(doorNames)> doors;
    std::optional<std::string> state;
    std::vector<std::string> remains;  ///< files in new/ and old/
};

/** A private store with two doors, and the adapter before it. Everything goes with it. */
class Place {
public:
    /** The adapter is linked into the folder, which is made; keys lie in the folder above. */
    Place(std::filesystem::path folder, const std::filesystem::path& adapter, PortSupply& ports);
    ~Place();

    /** The words of a scenario's line, with the program. */
    Words command(const std::string& line) const;
    Ending run(const std::string& line) const;

    std::filesystem::path store() const { return _folder / "state"; }
    std::string file(std::size_t door) const { return store() / (std::string(doorNames[door]) + ".conf"); }
    int port(char letter) const;

    View look() const;

    /** Waits for those that are just coming or going, until each door has at most one listener. */
    View lookCalmly() const;

    /** Does what the scenario's PidFile says; who is named must be alive afterwards. */
    void disturb(PidFile what);
    bool isBystanderAlive() const;

    /** What sshd makes of a door's file, or says against it; the answer has "exit 0" at its end when it takes it. */
    std::string effective(std::size_t door) const;

    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

private:
    DoorView lookAt(std::size_t door) const;
    void writeSettings(const std::filesystem::path& adapter) const;
    void startBystander(PidFile what);

    const std::filesystem::path _folder;
    PortSupply& _supply;
    std::array<int, 4> _ports{};  // A, B, N, and the other sshd's
    std::unique_ptr<AdapterRun> _bystander;
};

/** Makes the host key that all places share. */
void makeKey(const std::filesystem::path& folder);

/** Runs a program to its end, as the adapter would be run. */
Ending runToEnd(const Words& command);

std::optional<std::string> contentOf(const std::filesystem::path& file);

}  // namespace TulTest

#endif
