#include <filesystem>
#include <fstream>
#include <latch>
#include <memory>
#include <thread>

#include "SshdVormaWrapperTest.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SshdVormaWrapperBatch : public SshdVormaWrapperTest {
protected:
    /** The adapter answers the revision query and fails with everything else. */
    void givenFailingBatches() {
        framework.givenAdapter("[ \"$1\" = spi-revision ] && { echo 1.8.0; exit; }; echo refused >&2; exit 4");
    }
};

TEST_F(SshdVormaWrapperBatch, IsNotRunWhenNothingIsPending) {
    framework.logLevel = 8;
    EXPECT_FALSE(wrapper.invokeVorma(ample));
    EXPECT_THAT(takeWords(), IsEmpty());
    EXPECT_EQ(framework.records,
              vormaSource.entry("invokeVorma", " >> Invoke Vorma") + vormaSource.exit("invokeVorma"));
}

TEST_F(SshdVormaWrapperBatch, SendsAllPendingWordsInTheOrderOfTheirAdditionInOneRun) {
    wrapper.setCiphers({{"selectedCiphers", "a,b"}});
    wrapper.setDscp("46");
    takeWords();
    EXPECT_TRUE(wrapper.invokeVorma(ample));
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("ssh", "--ciphers", "a,b", "--ipQos", "46")));
}

TEST_F(SshdVormaWrapperBatch, KeepsTheOrderOfTheCallsNotOfTheOptions) {
    wrapper.setRenegotiationtime(10);
    wrapper.setDscp("");
    wrapper.setCiphers({{"selectedMacs", "m"}});
    EXPECT_THAT(takePending(), ElementsAre("--renegotiationTime", "10", "--removeIpQoS", "--macs", "m"));
}

TEST_F(SshdVormaWrapperBatch, NeverMergesNorReplacesRepeatedSettings) {
    wrapper.setDscp("46");
    wrapper.setDscp("10");
    wrapper.setDscp("46");
    EXPECT_THAT(takePending(), ElementsAre("--ipQos", "46", "--ipQos", "10", "--ipQos", "46"));
}

TEST_F(SshdVormaWrapperBatch, SendsValuesVerbatimAsOneWordEach) {
    wrapper.setDscp("a b; $(c) 'd' \"e\" *");
    wrapper.setCiphers({{"selectedCiphers", ""}, {"selectedMacs", "-x --ciphers"}});
    EXPECT_THAT(takePending(),
                ElementsAre("--ipQos", "a b; $(c) 'd' \"e\" *", "--ciphers", "", "--macs", "-x --ciphers"));
}

TEST_F(SshdVormaWrapperBatch, IsSentOnce) {
    wrapper.setDscp("46");
    EXPECT_TRUE(wrapper.invokeVorma(ample));
    takeWords();
    EXPECT_FALSE(wrapper.invokeVorma(ample));
    EXPECT_THAT(takeWords(), IsEmpty());
}

TEST_F(SshdVormaWrapperBatch, IsTraced) {
    wrapper.setDscp("46");
    framework.logLevel = 8;
    EXPECT_TRUE(wrapper.invokeVorma(ample));
    EXPECT_EQ(framework.records,
              vormaSource.entry("invokeVorma", " >> Invoke Vorma") + vormaSource.entry("prepareArgs") +
                  vormaSource.exit("prepareArgs") +
                  vormaSource.exit("invokeVorma", " << Succeeded to set configuration data to vorma"));
}

TEST_F(SshdVormaWrapperBatch, IsLoggedAndDroppedWhenItFails) {
    givenFailingBatches();
    wrapper.setDscp("46");
    EXPECT_FALSE(wrapper.invokeVorma(ample));
    EXPECT_THAT(framework.logs(), ElementsAre(HasSubstr("failed with exit code 4: refused")));
    takeWords();
    EXPECT_FALSE(wrapper.invokeVorma(ample));
    EXPECT_THAT(takeWords(), IsEmpty());
}

TEST_F(SshdVormaWrapperBatch, CarriesJustWhatWasAddedAfterAFailedOne) {
    givenFailingBatches();
    wrapper.setDscp("46");
    EXPECT_FALSE(wrapper.invokeVorma(ample));
    framework.givenAdapterRevision("1.8.0");
    wrapper.setDscp("10");
    EXPECT_THAT(takePending(), ElementsAre("--ipQos", "10"));
}

TEST_F(SshdVormaWrapperBatch, LogsAndTracesTheTextOfAnyStandardException) {
    wrapper.setDscp("46");
    givenRunnerThat(std::runtime_error("100%s%n"));
    framework.logLevel = 8;
    EXPECT_FALSE(wrapper.invokeVorma(ample));
    EXPECT_EQ(framework.records, vormaSource.entry("invokeVorma", " >> Invoke Vorma") +
                                     vormaSource.entry("prepareArgs") + vormaSource.exit("prepareArgs") +
                                     vormaSource.error("invokeVorma", "%s", "100%s%n") +
                                     vormaSource.exit("invokeVorma", " << %s", " << 100%s%n"));
}

TEST_F(SshdVormaWrapperBatch, IsGivenTheTimeLimitOfTheCall) {
    framework.givenAdapter("[ \"$1\" = spi-revision ] && { echo 1.8.0; exit; }; sleep 30");
    wrapper.setDscp("46");
    EXPECT_FALSE(wrapper.invokeVorma(150));
    EXPECT_THAT(framework.logs(), ElementsAre(HasSubstr("still running after 150 ms")));
}

TEST_F(SshdVormaWrapperBatch, ReleasesItsLockAndItsWordsWhenAnotherExceptionPasses) {
    wrapper.setDscp("46");
    givenRunnerThat(5);
    EXPECT_THROW(wrapper.invokeVorma(ample), int);
    EXPECT_THAT(framework.records, IsEmpty());
    framework.onScriptRan = nullptr;
    wrapper.setDscp("10");
    Words pending;
    std::thread([&] { pending = takePending(); }).join();  // the lock lets its own thread in again and again
    EXPECT_THAT(pending, ElementsAre("--ipQos", "10"));
}

TEST_F(SshdVormaWrapperBatch, IsForgottenWithItsWrapper) {
    auto other = std::make_unique<TulSshdManagement::SshdVormaWrapper>();
    other->setDscp("46");
    takeWords();
    other.reset();
    EXPECT_THAT(takeWords(), IsEmpty());
    EXPECT_FALSE(wrapper.invokeVorma(ample));
}

/** Batches that say that they run and then wait until they may end; everything else is quick. */
class SshdVormaWrapperConcurrency : public SshdVormaWrapperTest {
protected:
    SshdVormaWrapperConcurrency() {
        framework.givenAdapter("cd '" + gate.path().string() +
                               "'\n"
                               "case $1 in\n"
                               "ssh) touch running; until [ -e go ]; do sleep 0.01; done ;;\n"
                               "spi-revision) echo 1.8.0 ;;\n"
                               "esac");
    }

    void awaitRunningBatch() const {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(ample);
        while (!std::filesystem::exists(gate.path() / "running") && std::chrono::steady_clock::now() < limit) {
            std::this_thread::yield();
        }
    }

    void letBatchesEnd() const { std::ofstream(gate.path() / "go") << "go\n"; }

    TemporaryDirectory gate;
};

TEST_F(SshdVormaWrapperConcurrency, MakesASecondBatchWaitForTheFirst) {
    wrapper.setDscp("46");
    takeWords();
    framework.onScriptRan = [this](const TulCommonScriptRun_1&) {
        framework.onScriptRan = nullptr;
        wrapper.setDscp("10");  // who waited finds it, who slipped past the first batch found nothing
    };
    std::latch entering(2);
    bool sent[2] = {};
    const auto send = [&](bool& result) {
        entering.count_down();
        result = wrapper.invokeVorma(ample);
    };
    std::thread first(send, std::ref(sent[0]));
    std::thread second(send, std::ref(sent[1]));
    entering.wait();
    awaitRunningBatch();
    letBatchesEnd();
    first.join();
    second.join();

    EXPECT_TRUE(sent[0] && sent[1]);
    EXPECT_THAT(framework.takeRuns(), ElementsAre("ssh --ipQos 46", "ssh --ipQos 10"));
}

TEST_F(SshdVormaWrapperConcurrency, LetsPortCallsThroughWhileABatchRuns) {
    wrapper.setDscp("46");
    takeWords();
    std::thread batch([this] { EXPECT_TRUE(wrapper.invokeVorma(ample)); });
    awaitRunningBatch();
    EXPECT_TRUE(wrapper.enablePorts("clissh", 22, ample));
    EXPECT_TRUE(wrapper.disablePorts("clissh", ample));
    EXPECT_THAT(framework.takeRuns(), ElementsAre("ssh --ipQos 46", "clissh unlock port 22", "clissh lock"));
    letBatchesEnd();
    batch.join();
}

}  // namespace
