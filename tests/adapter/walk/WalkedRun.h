#ifndef TUL_WALK_WALKED_RUN_H
#define TUL_WALK_WALKED_RUN_H

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Fault.h"
#include "Place.h"
#include "Scenario.h"
#include "Tracer.h"

namespace TulTest {

/** One traced run of the adapter in a place, with all that befalls it: a fault, a thief of ports, or nothing. */
class WalkedRun : private CallObserver {
public:
    WalkedRun(const Place& place, const Scenario& scenario);

    void setFault(const Fault& fault) { _fault = fault; }

    /** Writes down every call, which takes longer. */
    void record() { _isRecording = true; }

    /** The group is killed at the call with this number, from 1 on. */
    void killAt(int call) { _lastCall = call; }

    /** The group is killed when a door's file has been put in place. */
    void cutAtRename() { _isCutAtRename = true; }

    /** Runs the line to its end, at most once. */
    void perform(const std::string& line);

    const Ending& ending() const { return _ending; }
    int calls() const { return _calls; }
    const std::vector<RecordedCall>& recorded() const { return _recorded; }

    /** The number of the call that the fault met; 0: none. */
    int hit() const { return _hit; }

    /** The fault met the adapter before main(), which the C library may give up for. */
    bool isHitAtStart() const { return _isHitAtStart; }

    /** Names of state and doors' files that were renamed into the store without a sync of the store after it. */
    std::string unsynced() const;

    /** What was put in place by a rename: each text of each file. */
    const std::map<std::string, std::set<std::string>>& placed() const { return _placed; }

    /** Those of the run that are left, without listeners and their sessions. Waits for them to end. */
    std::vector<pid_t> leftovers() const;

private:
    int entering(const Call& call) override;
    void leaving(const Call& call, long result) override;
    void executed(const std::string& commandLine) override;

    int strike(const Call& call);
    void kill() const;
    void renamed(const std::string& target);
    void steal();

    const Place& _place;
    const Scenario& _scenario;
    std::optional<Fault> _fault;
    bool _isRecording = false;
    bool _isCutAtRename = false;
    int _lastCall = 0;

    pid_t _adapter = 0;
    Ending _ending;
    int _calls = 0;
    int _hit = 0;
    int _ownCalls = 0;  // the adapter's
    bool _isHitAtStart = false;
    std::optional<pid_t> _victim;  // the adapter is killed when this one comes back from its call
    std::map<std::pair<Maker, long>, int> _occurrences;
    std::vector<RecordedCall> _recorded;
    std::set<std::string> _unsynced;
    std::map<std::string, std::set<std::string>> _placed;
    std::vector<pid_t> _seen;
    std::unique_ptr<Occupation> _thief;
    bool _hasStolen = false;
};

}  // namespace TulTest

#endif
