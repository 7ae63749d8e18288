#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <thread>

#include "NaiveRunner.h"
#include "ScriptHost.h"
#include "SystemCallFaults.h"

namespace TulTest {
namespace {

constexpr const char* nothingIgnoredOrBlocked = "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n";

TEST(ScriptChild, HasPathAloneInItsEnvironment) {
    EXPECT_EQ("PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin\n",
              ScriptHost().probe("environment").text);
}

TEST(ScriptChild, LeadsItsOwnProcessGroup) {
    EXPECT_EQ("leader", ScriptHost().probe("group").text);
}

/** A host that ignores what it can and blocks everything. */
class HostThatTakesNoSignal {
public:
    HostThatTakesNoSignal() {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            _before[i] = signal(signals[i], SIG_IGN);
        }
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &_maskBefore);
    }

    ~HostThatTakesNoSignal() {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            signal(signals[i], _before[i]);
        }
        pthread_sigmask(SIG_SETMASK, &_maskBefore, nullptr);
    }

    HostThatTakesNoSignal(const HostThatTakesNoSignal&) = delete;
    HostThatTakesNoSignal& operator=(const HostThatTakesNoSignal&) = delete;

private:
    static constexpr std::array signals = {SIGPIPE, SIGTERM, SIGHUP};
    std::array<sighandler_t, signals.size()> _before{};
    sigset_t _maskBefore{};
};

TEST(ScriptChild, HasNoSignalIgnoredOrBlocked) {
    const ScriptHost host;
    const HostThatTakesNoSignal deaf;
    EXPECT_EQ(nothingIgnoredOrBlocked, host.probe("signals").text);
}

TEST(ScriptChildControl, InheritsSignalStateFromANaiveRunner) {
    const ScriptHost host;
    const HostThatTakesNoSignal deaf;
    EXPECT_NE(nothingIgnoredOrBlocked, runNaively(host.pathOf("probe"), {"signals"}, ample));
}

/** A host without some of the descriptors 0, 1 and 2: one bit of the mask for each that is closed. */
class HostWithClosedDescriptors {
public:
    explicit HostWithClosedDescriptors(int mask) {
        for (int number = 0; number <= 2; ++number) {
            if ((mask & (1 << number)) != 0) {
                _saved[static_cast<std::size_t>(number)] = fcntl(number, F_DUPFD_CLOEXEC, 100);
                close(number);
            }
        }
    }

    ~HostWithClosedDescriptors() {
        for (int number = 0; number <= 2; ++number) {
            const int saved = _saved[static_cast<std::size_t>(number)];
            if (saved != -1) {
                dup2(saved, number);
                close(saved);
            }
        }
    }

    HostWithClosedDescriptors(const HostWithClosedDescriptors&) = delete;
    HostWithClosedDescriptors& operator=(const HostWithClosedDescriptors&) = delete;

private:
    std::array<int, 3> _saved{-1, -1, -1};
};

class ClosedDescriptors : public testing::TestWithParam<int> {};

TEST_P(ClosedDescriptors, OfTheHostDoNotDisturbTheScript) {
    const ScriptHost host;
    Outcome standard;
    Outcome failed;
    bool leftClosed = true;
    {
        const HostWithClosedDescriptors closed(GetParam());
        standard = host.probe("standard");
        failed = host.run("echo to stderr >&2; exit 1");
        for (int number = 0; number <= 2; ++number) {
            leftClosed = leftClosed && (fcntl(number, F_GETFD) == -1) == ((GetParam() & (1 << number)) != 0);
        }
    }
    EXPECT_EQ("rww empty", standard.text);
    EXPECT_THAT(failed.text, testing::EndsWith(": to stderr"));
    EXPECT_TRUE(leftClosed);
}

INSTANTIATE_TEST_SUITE_P(All, ClosedDescriptors, testing::Range(0, 8));

TEST(ClosedDescriptorsOfTheHost, GiveADefinedErrorWhenNoOtherNumberIsLeft) {
    const ScriptHost host;
    host.write("script", "echo hello");
    Outcome outcome;
    {
        const HostWithClosedDescriptors closed(7);
        const SystemCallFault fault("fcntl", EMFILE, SystemCallFault::forEver);
        outcome = host.invoke("script");
    }
    EXPECT_EQ("Script " + host.pathOf("script") + " cannot be run, no descriptor left: Too many open files",
              outcome.text);
}

/** Threads of the host that open and close files and pipes all the time, and think nothing of close-on-exec. */
class CarelessThreads {
public:
    CarelessThreads() {
        for (std::thread& thread : _threads) {
            thread = std::thread([this] { openAndClose(); });
        }
    }

    ~CarelessThreads() {
        _done = true;
        for (std::thread& thread : _threads) {
            thread.join();
        }
    }

    CarelessThreads(const CarelessThreads&) = delete;
    CarelessThreads& operator=(const CarelessThreads&) = delete;

private:
    void openAndClose() const {
        while (!_done) {
            int ends[2];
            if (pipe(ends) == 0) {
                const int file = open("/dev/zero", O_RDONLY);
                std::this_thread::yield();
                close(file);
                close(ends[0]);
                close(ends[1]);
            }
        }
    }

    std::atomic<bool> _done = false;
    std::array<std::thread, 2> _threads;
};

/** What a child of a naive runner sees that this program was itself started with. */
std::string inheritedFromOutside(const ScriptHost& host) {
    return runNaively(host.pathOf("probe"), {"descriptors"}, ample);
}

/** What children see above descriptor 2, in `runs` runs in each of two threads or until something unexpected. */
template <class RunT>
std::string seenBesides(const std::string& expected, int runs, RunT run) {
    const CarelessThreads careless;
    std::array<std::string, 2> seen;
    std::array<std::thread, 2> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&, i] {
            seen[i] = expected;
            for (int left = runs; left > 0 && seen[i] == expected; --left) {
                seen[i] = run();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return seen[0] == expected ? seen[1] : seen[0];
}

constexpr int manyRuns = 1000;

TEST(ScriptChild, SeesNoDescriptorAboveTwoWhateverOtherThreadsDo) {
    const ScriptHost host;
    EXPECT_EQ("", seenBesides("", manyRuns, [&] { return host.probe("descriptors").text; }));
}

TEST(ScriptChildControl, SeesDescriptorsOfOtherThreadsUnderANaiveRunner) {
    const ScriptHost host;
    const std::string expected = inheritedFromOutside(host);
    EXPECT_NE(expected, seenBesides(expected, manyRuns, [&] { return inheritedFromOutside(host); }));
}

TEST(ScriptChild, IsNotSeenByChildrenThatOthersStartMeanwhile) {
    const ScriptHost host;
    const std::string expected = inheritedFromOutside(host);
    std::atomic<bool> done = false;
    std::thread runner([&] {
        while (!done) {
            host.probe("group");
        }
    });
    std::string seen = expected;
    for (int i = 0; i < manyRuns && seen == expected; ++i) {
        seen = inheritedFromOutside(host);
    }
    done = true;
    runner.join();
    EXPECT_EQ(expected, seen);
}

}  // namespace
}  // namespace TulTest
