#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "ScriptedRunner.h"
#include "SshdVormaWrapper.h"

namespace {

using namespace TulTest;

/** Not merely preempted: it waits for something. */
bool isAsleep(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t state = stat.rfind(") ");
    return state != std::string::npos && stat[state + 2] == 'S';
}

/**
 * Two users send a batch each, the second one while the adapter runs for the first.
 *
 * The first run goes on until the second has begun or its user has fallen asleep. Between being known and its run
 * that thread waits for nothing but a lock, so that this needs no time limit and no luck.
 */
class TwoUsers {
public:
    explicit TwoUsers(std::function<void()> send) : _send(std::move(send)) {}

    /** Whether the runs overlapped. */
    bool overlap() {
        _send();
        _second.join();
        return _overlapped;
    }

    /** The adapter. */
    void run() {
        if (++_runs == 1) {
            _second = std::thread([this] {
                _secondUser = gettid();
                _send();
                _secondIsOver = true;
            });
            waitForSecond();
            _overlapped = _runs > 1;
        }
    }

    unsigned int runs() const { return _runs; }

private:
    void waitForSecond() const {
        while (_runs == 1 && !_secondIsOver && !isAsleep(_secondUser)) {
            std::this_thread::yield();
        }
    }

    const std::function<void()> _send;
    std::thread _second;
    std::atomic<pid_t> _secondUser = 0;
    std::atomic<bool> _secondIsOver = false;
    std::atomic<unsigned int> _runs = 0;
    bool _overlapped = false;
};

TEST(BatchLock, KeepsASecondBatchFromRunningBeforeTheFirstHasEnded) {
    TulSshdManagement::SshdVormaWrapper wrapper;
    wrapper.getVormaSpiRevision();  // known from here on: the only runs are those of the batches
    TwoUsers users([&wrapper] {
        wrapper.setDscp("46");
        EXPECT_TRUE(wrapper.invokeVorma(30000));
    });
    const ScriptedRunner runner([&users](const AdapterRun& run) {
        EXPECT_EQ(std::vector<std::string>({"ssh", "--ipQos", "46"}), run.words);
        users.run();
        return std::string();
    });
    EXPECT_FALSE(users.overlap());
    EXPECT_EQ(2u, users.runs());
}

/** The control: users of an adapter without a lock. */
TEST(BatchLock, IsMissedWhereThereIsNone) {
    TwoUsers* adapter = nullptr;
    TwoUsers users([&adapter] { adapter->run(); });
    adapter = &users;
    EXPECT_TRUE(users.overlap());
    EXPECT_EQ(2u, users.runs());
}

}  // namespace
