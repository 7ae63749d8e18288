#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "ComponentLibrary.h"
#include "Gate.h"
#include "ModelFixture.h"
#include "Node.h"
#include "Sanitizers.h"

namespace TulNode {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TulTest::ComponentLibrary;

void setState(Node& node, const std::string& dn, int state) {
    const auto handle = node.services.transactions.open(TUL_LOCK_POLICY_SHARED, 60, "test");
    node.services.transactions.set(handle, dn, {{"administrativeState", enumeration(state)}});
    node.services.transactions.commit(handle);
}

/** The node with the real component; the first run that a handler makes stands still. */
class UnloadUnderWay : public testing::Test {
public:
    UnloadUnderWay() {
        node.applyInitialModel(defaultModel, "default");
        node.services.journal.setLevel(TraceLevel);
        node.services.runs.listen([this](const AdapterRun& run) { happened(run.command); });
        node.services.journal.listen([this](const Record& record) {
            if (record.function == "stop" && record.text.find(">> ") != std::string::npos) {
                stopping.set_value();
            }
        });
        node.load();
        node.loader.start(BRY_REASON_NORMAL);
        events.clear();
    }

    ~UnloadUnderWay() override {
        node.services.journal.listen(nullptr);
        node.services.runs.listen(nullptr);
    }

    void happened(const std::string& event) {
        const std::lock_guard lock(mutex);
        events.push_back(event);
    }

    std::vector<std::string> happenings() {
        const std::lock_guard lock(mutex);
        return events;
    }

    /** Commits a lock, whose handler's run stands still at the gate. */
    void lock(const std::string& dn) {
        setState(node, dn, 0);
        gate.waitUntilHeld();
    }

    std::future<void> unloadElsewhere() {
        return std::async(std::launch::async, [this] {
            node.loader.unload(BRY_REASON_NORMAL);
            happened("unloaded");
        });
    }

    TulTest::Gate gate{"*' lock'"};
    std::mutex mutex;
    std::vector<std::string> events;
    std::promise<void> stopping;
    Node node{{"", ComponentLibrary::path(), gate.folder()}};
};

TEST_F(UnloadUnderWay, WaitsForTheAdapterRunOfAHandler) {
    lock(cliSsh);
    auto unloaded = unloadElsewhere();
    stopping.get_future().wait();
    EXPECT_TRUE(ComponentLibrary::isMapped());
    EXPECT_THAT(happenings(), IsEmpty());
    gate.open();
    unloaded.get();
    EXPECT_FALSE(ComponentLibrary::isMapped());
    EXPECT_THAT(happenings(),
                ElementsAre("vorma clissh lock", "vorma clissh lock", "vorma netconfssh lock", "unloaded"));
    EXPECT_EQ(0u, node.services.journal.accusations());
}

TEST_F(UnloadUnderWay, DropsWhatWaitsBehindTheHandler) {
    lock(netconfSsh);
    for (int i = 0; i < 100; ++i) {
        setState(node, netconfSsh, (i + 1) % 2);
    }
    auto unloaded = unloadElsewhere();
    stopping.get_future().wait();
    gate.open();
    unloaded.get();
    EXPECT_THAT(happenings(),
                ElementsAre("vorma netconfssh lock", "vorma clissh lock", "vorma netconfssh lock", "unloaded"));
    EXPECT_FALSE(ComponentLibrary::isMapped());
}

/** What the node must not do: let go of the library while the handler is still in it. */
void closeWithoutWaiting(const TulTest::Gate& gate) {
    Node node({"", ComponentLibrary::path(), gate.folder()});
    node.applyInitialModel(defaultModel, "default");
    node.load();
    node.loader.start(BRY_REASON_NORMAL);
    setState(node, cliSsh, 0);
    gate.waitUntilHeld();
    void* const library = dlopen(ComponentLibrary::path().c_str(), RTLD_NOW | RTLD_NOLOAD);
    dlclose(library);
    dlclose(library);
    gate.open();
    node.services.router.waitUntilIdle(std::chrono::seconds(20));
}

TEST(UnloadUnderWayDeathTest, ThatDoesNotWaitIsACrash) {
    const TulTest::Gate gate("*' lock'");
    const auto crashed = [](int status) {  // a sanitizer takes the signal and exits
        return TulTest::hasSanitizer ? status != 0 : WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
    };
    EXPECT_EXIT(closeWithoutWaiting(gate), crashed, "");
}

}  // namespace
}  // namespace TulNode
