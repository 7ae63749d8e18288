#ifndef VORMA_STORE_H
#define VORMA_STORE_H

#include <optional>
#include <string>

#include "Configuration.h"
#include "Deadline.h"
#include "Descriptor.h"
#include "Directory.h"
#include "State.h"

namespace Vorma {

/** What was found written down. */
struct Found {
    State state;
    bool certain; /**< false: it comes from the copy, or from what was seen: look at everything */
};

/**
 * The folder STATE_DIR:
 *
 *     state, state.copy   the truth, and the same once more for the day on which the first is damaged
 *     DOOR.conf           what the door's listener reads; only there while the door is open
 *     DOOR.pid            written by the listener once it listens
 *     DOOR.failure        why the latest run did not get what it wanted of the door; as long as it will ever be, and
 *                         overwritten in place, so that it needs no room on the disk
 *     new/                candidates. new/state, the state to be, means that a change is under way or was cut short;
 *                         new/DOOR.old is then the very file that was in force before it. new/DOOR.owed means
 *                         that the door could not be brought in line
 *     lock
 */
class Store {
public:
    /** Makes what is missing of it. Refusal with Exit::Store when it is not safe or cannot be made. */
    explicit Store(const std::string& stateDirectory);

    /** Waits until no other run is under way; Refusal with Exit::Busy when the moment has come. */
    void lock(const Tul::Deadline& deadline);

    /** Nothing when nothing was ever written; Refusal with Exit::Store when state and copy are damaged or lost. */
    std::optional<Found> load() const;

    /** Writes down the first state of all. */
    void beginAnew(const State& first) const;

    /** Whether a change was cut short, and when it was begun. */
    std::optional<std::time_t> cutShortAt() const { return candidates.writtenAt(stateName); }

    /** Writes down what is about to become the state; from now on the change counts as begun. */
    void begin(const State& next) const;

    /** What was begun is in force. NotDurable when that may not last. */
    void commit() const;

    /** What was begun is given up, and the old state is in force. */
    void abandon() const;

    /** Takes away what runs that were cut short have left, but for what tells that a change was. */
    void tidy() const;

    /**
     * A door whose listener may not serve what its file says, because that could not be brought about: every run
     * tries it again. The mark needs no room but a name.
     */
    bool owes(std::size_t door) const;
    void owe(std::size_t door) const;
    void settleDebt(std::size_t door) const;

    /** The text of the failure, empty: none; nobody fails because it cannot be written. */
    void note(std::size_t door, const std::string& failure) const;

    Directory folder;
    Directory candidates;

    static std::string fileOf(std::size_t door) { return std::string(doorRows[door].name) + ".conf"; }
    static std::string oldFileOf(std::size_t door) { return std::string(doorRows[door].name) + ".old"; }
    static std::string owedFileOf(std::size_t door) { return std::string(doorRows[door].name) + ".owed"; }
    static std::string pidFileOf(std::size_t door) { return std::string(doorRows[door].name) + ".pid"; }
    static std::string failureFileOf(std::size_t door) { return std::string(doorRows[door].name) + ".failure"; }

    static constexpr const char* stateName = "state";
    static constexpr const char* copyName = "state.copy";

    /** What is found in a store that may not be there, for who only looks. */
    static std::optional<Directory> openForLooking(const std::string& stateDirectory);
    static std::optional<State> readState(const Directory& folder);

private:
    void refuseLinks() const;
    void discard(const std::string& name) const;
    void expectNothing() const;

    void placeCopy() const;

    /** A state.copy that differs from the state is written anew. No failure: the state is what counts. */
    void mendCopy(const std::string& text) const;

    Tul::Descriptor _lock;
};

}  // namespace Vorma

#endif
