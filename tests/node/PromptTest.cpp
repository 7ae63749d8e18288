#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "TemporaryDirectory.h"

namespace TulNode {
namespace {

/** The program at a terminal of its own. */
class Terminal : public testing::Test {
protected:
    Terminal() {
        _directory.writeScript("vorma", "exit 0");
        _child = forkpty(&_terminal, nullptr, nullptr, nullptr);
        if (_child == 0) {
            setenv("TERM", "xterm", 1);
            execl(TUL_NODE_PROGRAM, "tul-node", "--script-dir", _directory.path().c_str(), "--component",
                  TUL_ZOO_DIRECTORY "/good.so", static_cast<char*>(nullptr));
            _exit(127);
        }
    }

    ~Terminal() override {
        if (_child > 0) {
            kill(_child, SIGKILL);
            waitpid(_child, nullptr, 0);
        }
        close(_terminal);
    }

    void type(const std::string& keys) {
        ASSERT_EQ(write(_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    /** Reads on until the text appears, and forgets everything up to its end. */
    void expectShown(const std::string& text) {
        pollfd source{_terminal, POLLIN, 0};
        while (_shown.find(text) == std::string::npos) {
            char block[1024];
            ssize_t count = 0;
            if (poll(&source, 1, 20'000) != 1 || (count = read(_terminal, block, sizeof block)) <= 0) {
                FAIL() << "\"" << text << "\" was not shown, but: " << _shown;
            }
            _shown.append(block, static_cast<std::size_t>(count));
        }
        _shown.erase(0, _shown.find(text) + text.size());
    }

    bool showsSomething(int milliseconds) const {
        pollfd source{_terminal, POLLIN, 0};
        return poll(&source, 1, milliseconds) == 1;
    }

    int exitCode() {
        int status = 0;
        waitpid(_child, &status, 0);
        _child = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    TulTest::TemporaryDirectory _directory;
    int _terminal = -1;
    pid_t _child = -1;
    std::string _shown;
};

TEST_F(Terminal, GivesAPromptWithCompletionAndHistoryAndShowsWhatHappensMeanwhile) {
    expectShown("component: started\r\n");
    expectShown("tul-node> ");
    type("ech\thel\bxyz\n");
    expectShown("hexyz\r\n");
    type("\033[A\n");
    expectShown("hexyz\r\n");
    type("show Ss\t\n");
    expectShown("selectedCiphers=");
    type("set Tr\t");
    expectShown("ansport ");
    type("\025create ManagedElement=1,Transport=2\n");
    expectShown("notify: ManagedElement=1,Transport=2\r\n");
    type("nonsense\n");
    expectShown("error: there is no command \"nonsense\"");
    type("quit\n");
    expectShown("component: unloaded\r\n");
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(Terminal, EndsInOrderWhenTheOperatorInterruptsOrEndsTheInput) {
    expectShown("tul-node> ");
    // The prompt is shown before the editor has set up the terminal; what is typed in between may be lost.
    do {
        type("\003");
    } while (!showsSomething(5'000));
    expectShown("component: stopped\r\n");
    EXPECT_EQ(exitCode(), 0);
}

}  // namespace
}  // namespace TulNode
