#ifndef VORMA_CHANGE_H
#define VORMA_CHANGE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Configuration.h"
#include "Deadline.h"
#include "Door.h"
#include "Sight.h"
#include "Sshd.h"
#include "State.h"
#include "Store.h"

namespace Vorma {

/**
 * One change of some doors, from the state that is in force to another one: everything is checked before anything is
 * touched, and what was touched is put back when a part of it fails.
 *
 * Until the new state is renamed into place the old one counts: whoever finds new/state there puts the old files
 * back. Nothing on the way back needs room on the disk.
 */
class Change {
public:
    /** What is seen is the old state: of a door with a complaint nobody may say that it is in force. */
    Change(const Store& store, const Configuration& configuration, Sight sight, const Tul::Deadline& forward,
           const Tul::Deadline& whole);

    /** Look: prove everything anew, also when nothing seems to differ. Refusal when it is not in force afterwards. */
    void make(const State& before, State after, const std::vector<std::size_t>& doors, bool look);

private:
    struct Step {
        Door door;
        std::optional<int> before;
        std::optional<int> after;
        std::string text; /**< what its file is to be; of a closed door what it would be */
        std::optional<std::string> inPlace;
        std::optional<Listener> listener = std::nullopt; /**< that holds the port of before */
        std::vector<Endpoint> held = {};                 /**< where its listener listens before the change */
        std::vector<Endpoint> asked = {};                /**< where it is to listen */
        std::unique_ptr<Question> question = nullptr;

        bool fileChanges() const { return after && inPlace != text; }
    };

    void plan(const State& before, const State& after, const std::vector<std::size_t>& doors);
    bool isDue(const State& before, const State& after) const;
    void carryOut(const State& before);
    bool isIdle(const Step& step) const;
    void prepare(const State& after);
    void refuseCommonPorts(const State& after) const;
    void ask(Step& step) const;
    void keepWhatIsInForce(Step& step);
    void expectNoStranger(const Step& step) const;
    void judge(Step& step, const State& after) const;
    void expectFree(const Step& step) const;
    void apply(Step& step) const;
    [[noreturn]] void refuse(const std::exception& failure, const State& before) const;
    [[noreturn]] void goBack(const State& before, const Step* failed, const std::string& failure) const;
    static bool isTaken(const Step& step);
    void noteAll(const std::string& failure) const;

    const Store& _store;
    const Configuration& _configuration;
    Sight _sight;
    const Tul::Deadline& _forward;
    const Tul::Deadline& _whole;
    std::vector<Step> _steps;
    bool _look = false;
    bool _newSettings = false;
};

}  // namespace Vorma

#endif
