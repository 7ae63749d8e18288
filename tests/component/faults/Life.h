#ifndef TUL_TEST_LIFE_H
#define TUL_TEST_LIFE_H

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "AllocationFaults.h"
#include "FaultyAdapter.h"
#include "FaultySpi.h"
#include "RecordingFramework.h"
#include "Scenario.h"
#include "SshComponent.h"

namespace TulTest {

using Lines = std::vector<std::string>;

/** How a call ended: with a result, or with what it threw. */
struct Outcome {
    std::optional<BryReturnT> result = BRY_OK; /**< none: it threw */
    std::string thrown{}; /**< "bad_alloc", "integer", or the text of another exception; empty: nothing */

    static Outcome of(BryReturnT result) { return {result, {}}; }
    static Outcome ofThrown(const std::string& text) { return {std::nullopt, text}; }

    bool operator==(const Outcome&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
        return outcome.result ? stream << *outcome.result : stream << "threw " << outcome.thrown;
    }
};

/** A component between a framework and an adapter that fail on demand, brought to where a scenario begins. */
class Life {
public:
    explicit Life(const Scenario& scenario);

    /** Makes the call of the scenario; nothing of the test allocates meanwhile. */
    Outcome act();
    Outcome act(AllocationFaults& faults);

    /**
     * Ends all faults and lives on: whatever was begun is finished, a whole life follows, and it leaves nothing
     * behind. Expects that no lock is held. Not for a life that has left consumers registered without being started.
     */
    void expectUsable();

    /** Delivers what follows the scenario's notification, on another thread, and expects the one run it leads to. */
    void expectNextNotification();

    /** Delivers one notification to each consumer that is subscribed, on another thread; each leads to a run. */
    void expectNotificationsWork();

    /** What a framework does with consumers and a component that could not be unregistered: it forgets them. */
    void takeAwayWhatIsLeft();

    /** Starts once more, after all faults. */
    void startAgain();

    /** Every line of the journal is also printed, for what ends the process. */
    void printJournal() { _printing = true; }

    /** The component is inside an operation that turns every failure into a result: a search, or the read of a state.
     */
    bool isInGuardedOperation() const { return _guarded; }

    Lines runs() const; /**< of the adapter, so far */
    std::size_t subscribed() const;

    RecordingFramework framework;
    FaultySpi spi{framework};

    /** What happened, in order: log records as "3 start: text", telling traces as "trace: text", runs as "run:
     * words". */
    Lines journal;
    FaultyAdapter adapter{[this](const std::string& words) { note("run: " + words); }};
    TulSshdManagement::TulSshdManagementComponent component;

private:
    void givenFullNode();
    BryReturnT init(bool managed);
    void deliverElsewhere(const char* pattern, void (*build)(CmNotification&));
    void deliverElsewhere(const char* pattern, void (*build)(CmNotification&), const char* expectedRun);
    BryReturnT perform();
    void note(const std::string& line);
    void noteRecord(const Record& record);
    void forget();

    const Scenario& _scenario;
    const std::string _configuration;
    CmNotification _notification;
    BryOamSpiCmEvent_Notification_1T* _record = nullptr;
    const RegisteredConsumer* _consumer = nullptr;
    bool _printing = false;
    bool _guarded = false;
};

}  // namespace TulTest

#endif
