#ifndef TUL_WALK_SCENARIO_H
#define TUL_WALK_SCENARIO_H

#include <string>
#include <vector>

namespace TulTest {

/** Somebody takes the port that a door is about to listen on; the tracer knows the moment. */
enum class Theft {
    None,
    Before,    ///< before the run
    AtRename,  ///< when the door's file has been put in place
    AtReload  ///< when the NETCONF listener has let go of the port to read its file again, until the old file is back
};

/** What has become of the pid file of the CLI's door before the run. */
enum class PidFile { Kept, Removed, NamesProcess, NamesSshd };

/**
 * One command, and what it meets. In command lines A and B stand for two ports of the CLI's door, N for the port of
 * the NETCONF door, OLD and NEW for two sets of settings.
 */
struct Scenario {
    std::string name;
    std::vector<std::string> given;  ///< makes the place, from an empty store on
    std::string walked;
    std::vector<std::string> back;  ///< what undoes it
    std::string next;               ///< a run with another aim, which changes nothing of what was asked for
    int code = 0;                   ///< with which the walked command ends when nobody disturbs it
    Theft theft = Theft::None;
    char stolen = 'B';
    PidFile pidFile = PidFile::Kept;
    std::string cut{};  ///< a run that is killed beforehand, when it has put the first door's file in place

    /** May the walked command touch the door? */
    bool names(std::size_t door) const;

    bool isRecovery() const { return !cut.empty(); }
    bool beginsWithoutStore() const { return given.empty(); }
};

constexpr const char* doorNames[] = {"clissh", "netconfssh"};

const std::vector<Scenario>& scenarios();

}  // namespace TulTest

#endif
