#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "ScriptHost.h"

namespace TulTest {
namespace {

template <class ActionT>
void inThreads(int count, ActionT action) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(action, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ScriptStress, SixteenThreadsGetEachTheirOwnOutput) {
    const ScriptHost host;
    inThreads(16, [&](int thread) {
        for (int i = 0; i < 50; ++i) {
            const std::string word = std::to_string(thread) + "." + std::to_string(i);
            EXPECT_EQ(word + '\0', host.invoke("probe", {"arguments", word}).text);
        }
    });
    EXPECT_EQ(16U * 50U, host.runs().size());
}

TEST(ScriptStress, SixteenThreadsReachTheirTimeLimitsTogether) {
    const ScriptHost host;
    host.write("script", "sleep 60 | cat");
    inThreads(16, [&](int) {
        for (int i = 0; i < 4; ++i) {
            EXPECT_FALSE(host.invoke("script", {}, 20).succeeded);
        }
    });
}

}  // namespace
}  // namespace TulTest
