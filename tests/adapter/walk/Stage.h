#ifndef TUL_WALK_STAGE_H
#define TUL_WALK_STAGE_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Place.h"
#include "Rules.h"
#include "Scenario.h"
#include "WalkedRun.h"

namespace TulTest {

/** What is walked, and how. */
struct Journey {
    std::filesystem::path adapter;
    double patience = 1;  ///< by how much the machine may be slower than an idle one
    bool isTwice = false;
    unsigned seed = 1;
};

/**
 * A scenario in a place of its own, where it is played again and again: brought to its beginning, walked, judged, and
 * brought back. Whatever is not as promised is thrown as a Violation; the stage is no good after it.
 */
class Stage {
public:
    /** Sets the place up and plays the scenario once undisturbed, to know how it ends. */
    Stage(const Journey& journey, const Scenario& scenario, const std::filesystem::path& folder, PortSupply& ports);

    /** All calls of the undisturbed run. */
    const std::vector<RecordedCall>& calls() const { return _calls; }

    /** What the undisturbed run left undone that shows only after a power cut; empty when there is nothing. */
    const std::string& flaw() const { return _flaw; }

    /** What has come of one point. */
    struct Visit {
        int call = 0;      ///< the number of the call that was hit; 0: none
        std::string lost;  ///< what the adapter said, when it ended with 9
    };
    Visit visit(const Fault& fault, unsigned seed);

private:
    void mustRun(const std::string& line) const;
    View look() const;
    void learnBegunState();
    void arrange();
    void cut();
    void rehearse();
    void learn(const WalkedRun& run);
    void requireAsked() const;
    void requireSettings(std::size_t door) const;
    void goBack();

    void judgeKill(const WalkedRun& run) const;
    void requireKnownTexts(const View& found) const;
    void requireOtherDoor(const View& found) const;
    void judgeEnd(const WalkedRun& run, Maker struck) const;
    void judgeRefusal(const Ending& ending, const View& found, Maker struck) const;
    void killNext(unsigned seed) const;
    void runNext(bool isMeasured) const;
    bool mustServe(std::size_t door) const;
    bool greets(std::size_t door, Moment end) const;
    void requireOldOrNew() const;
    void runAgain() const;

    const Journey& _journey;
    const Scenario& _scenario;
    Place _place;
    std::string _begun;  ///< the state of a store in which nothing was done yet
    std::vector<RecordedCall> _calls;
    int _length = 0;
    std::string _flaw;
    View _origin;  ///< before all else
    View _before;  ///< before the walked run: not the same when another was cut short
    View _after;
    std::map<std::string, std::set<std::string>> _texts;  ///< of each file: what may be found in it
};

}  // namespace TulTest

#endif
