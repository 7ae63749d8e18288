#include "FuzzedNode.h"

#include <future>

#include "Violation.h"

namespace TulFuzz {

namespace {

using TulSshdManagement::TulSshdManagementComponent;

/** The component's lock, which is nobody else's business: an explicit instantiation may name what is private. */
template <Poco::Mutex TulSshdManagementComponent::*member>
struct Lock {
    friend Poco::Mutex& lockOf(TulSshdManagementComponent& component) { return component.*member; }
};
Poco::Mutex& lockOf(TulSshdManagementComponent& component);
template struct Lock<&TulSshdManagementComponent::_mutex>;

/** Asks from another thread: the lock lets its own thread in again and again. */
bool isFree(Poco::Mutex& lock) {
    const auto tried = [&lock] {
        const bool taken = lock.tryLock();
        if (taken) {
            lock.unlock();
        }
        return taken;
    };
    return std::async(std::launch::async, tried).get();
}

/** Otherwise isFree would prove nothing. */
bool isSeenHeld(Poco::Mutex& lock) {
    const Poco::ScopedLock<Poco::Mutex> held(lock);
    return !isFree(lock);
}

const std::string configuration = "<TulSshdManager><sshdManagement>true</sshdManagement><cliPort>" +
                                  std::to_string(cliPort) + "</cliPort><netconfPort>" + std::to_string(netconfPort) +
                                  "</netconfPort><renegotiationTime>" + std::to_string(renegotiationTime) +
                                  "</renegotiationTime></TulSshdManager>";

/** What a start makes of a letter of Model: a missing MO is created unlocked, an unreadable one counts as locked. */
int stateAtStart(char letter) {
    return letter == 'n' || letter == '1' ? 1 : 0;
}

std::string revisionOf(char letter) {
    switch (letter) {
        case '6':
            return "1.6.9\n";
        case '7':
            return "1.7.0\n";
        case 'g':
            return "%n%s, not a revision\n";
        case 'z':
            return "";
        case 'T':
            throw Tul::TulException("no revision");
        default:
            return "1.8.0\n";
    }
}

bool knowsSettings(char revision) {
    return std::string("6gzT").find(revision) == std::string::npos;
}

bool knowsRenegotiation(char revision) {
    return knowsSettings(revision) && revision != '7';
}

}  // namespace

Setup Setup::take(Letters& letters) {
    Setup setup{};
    setup.logLevel = letters.take() - '0';
    setup.cliState = letters.take();
    setup.netconfState = letters.take();
    setup.revision = letters.take();
    return setup;
}

FuzzedNode::FuzzedNode(const Setup& setup)
    : _setup(setup),
      _model(_framework, setup.cliState, setup.netconfState),
      _cli{"clissh", cliPort, stateAtStart(setup.cliState)},
      _netconf{"netconfssh", netconfPort, stateAtStart(setup.netconfState)},
      _runner([this](const TulTest::AdapterRun& run) { return this->run(run); }),
      _otherAdapter(adapterFor(lockOf(_component))) {
    _framework.logLevel = setup.logLevel;
    if (_otherAdapter != nullptr) {
        _component.setVorma(_otherAdapter.get());
    }
}

std::string FuzzedNode::run(const TulTest::AdapterRun& run) {
    _runs.push_back(run);
    if (asksForRevision(run.words)) {
        return revisionOf(_setup.revision);
    }
    _adapterAnswers.next();
    return "what a script prints";
}

std::vector<Words> FuzzedNode::takeRuns() {
    std::vector<Words> all;
    for (const TulTest::AdapterRun& run : _runs) {
        const int expected = asksForRevision(run.words) ? 5000 : 30000;
        require(run.timeout == expected, "each run has the time limit of its kind");
        all.push_back(run.words);
    }
    _runs.clear();
    return all;
}

void FuzzedNode::start() {
    static const bool lockIsSeenHeld = isSeenHeld(lockOf(_component));
    require(lockIsSeenHeld, "a lock that is held is seen held");
    require(_component.lcmInit(_framework.accessor(), configuration.c_str()) == BRY_OK, "it can be initialised");
    require(_component.start(BRY_REASON_NORMAL) == BRY_OK, "it can be started");
    require(_framework.consumerCount() == 4, "it has four consumers");

    const std::vector<Words> runs = takeRuns();
    require(runs.size() == (knowsSettings(_setup.revision) ? 4 : 3), "two ports, the revision, and the settings");
    require(runs[0] == _cli.run() && runs[1] == _netconf.run(), "each port is opened or closed by its MO");
    require(asksForRevision(runs[2]), "the revision is asked once, before the first setting");
    require(runs.size() == 3 || isBatch(runs[3]), "the settings go out in one batch");
    require(has(runs.back(), "--renegotiationTime") == knowsRenegotiation(_setup.revision),
            "a time is only sent to who knows of it");
}

void FuzzedNode::deliver(std::size_t consumer, Draft& draft) {
    require(_framework.notify(consumer, draft.record()) == BRY_OK, "the router gets 0, whatever happened");
    if (consumer == 0) {
        checkPortRuns(_cli, draft);
    } else if (consumer == 1) {
        checkPortRuns(_netconf, draft);
    } else {
        checkBatches();
    }
}

void FuzzedNode::checkPortRuns(Port& port, const Draft& draft) {
    const int newest = draft.newestState().value_or(port.state);
    const std::vector<Words> runs = takeRuns();
    const bool changed = newest != port.state;
    port.state = newest;
    require(runs == (changed ? std::vector<Words>{port.run()} : std::vector<Words>{}),
            "one run for a state that is new at the end, else none");
}

void FuzzedNode::checkBatches() {
    const std::vector<Words> runs = takeRuns();
    require(runs.size() <= 1, "at most one batch for a notification");
    require(runs.empty() || knowsSettings(_setup.revision), "no batch for an adapter that is too old for it");
    require(runs.empty() || isBatch(runs[0]), "a batch has known options with values of their kind");
    require(runs.empty() || !has(runs[0], "--renegotiationTime"), "a notification never changes the time");
}

void FuzzedNode::stop() {
    require(isFree(lockOf(_component)), "no notification leaves the lock held");
    _adapterAnswers.clear();
    require(_component.stop(BRY_REASON_NORMAL) == BRY_OK, "it can be stopped");
    const std::vector<Words> closed{{"clissh", "lock"}, {"netconfssh", "lock"}};
    require(takeRuns() == closed, "a stop closes both ports and does nothing else");
    require(_framework.consumerCount() == 0, "a stop takes every consumer back");
    require(_model.outstanding() == 0, "every container is given back");
    _component.lcmTerminate();
}

}  // namespace TulFuzz
