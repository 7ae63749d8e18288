#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RecordingFramework.h"
#include "ScriptWrapper.h"
#include "SshComponent.h"

namespace {

using namespace TulTest;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using TulSshdManagement::SshdVormaWrapper;
using TulSshdManagement::TulSshdManagementComponent;

struct AdapterRun {
    const void* adapter;
    std::string words;
    int timeout;
};

std::vector<AdapterRun> runs;

}  // namespace

/** Stands before the platform's in the order of the linker. */
std::string Tul::ScriptWrapper::invoke(const std::vector<std::string>& args, int timeout) const {
    std::string words;
    for (const std::string& arg : args) {
        words += (words.empty() ? "" : " ") + arg;
    }
    runs.push_back({this, words, timeout});
    return words == "spi-revision" ? "1.8.0\n" : "";
}

namespace {

class AdapterCalls : public testing::Test {
public:
    AdapterCalls() {
        framework.givenEmptyNode();
        framework.givenMo(sshDn, {{"selectedMacs", strings({"m"})}});
        runs.clear();
    }

    /** Everything that leads to a run: start, each handler, stop. */
    void liveOnce(bool managed) {
        ASSERT_EQ(BRY_OK, component.lcmInit(framework.accessor(), configuration(managed).c_str()));
        ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
        if (managed) {
            for (const int state : {0, 1}) {
                CmNotification change;
                change.changed(nullptr).enumeration("administrativeState", state);
                framework.notify(cliSshPattern, change);
                framework.notify(netconfSshPattern, change);
            }
            framework.notify(serviceCategoryPattern, CmNotification().deleted(oamCmDn));
            framework.notify(sshPattern, CmNotification().changed(sshDn));
        }
        component.stop(BRY_REASON_NORMAL);
    }

    RecordingFramework framework;
    TulSshdManagementComponent component;
};

const std::vector<std::string> runsOfALife{"clissh unlock port 2022",
                                           "netconfssh unlock port 2830",
                                           "spi-revision",
                                           "ssh --removeIpQoS --renegotiationTime 3600 --macs m",
                                           "clissh lock",
                                           "netconfssh lock",
                                           "clissh unlock port 2022",
                                           "netconfssh unlock port 2830",
                                           "ssh --removeIpQoS",
                                           "ssh --macs m",
                                           "clissh lock",
                                           "netconfssh lock"};

TEST_F(AdapterCalls, HaveThirtySecondsAndTheRevisionQueryFive) {
    liveOnce(true);
    std::vector<std::string> words;
    for (const AdapterRun& run : runs) {
        words.push_back(run.words);
        EXPECT_EQ(run.words == "spi-revision" ? 5000 : 30000, run.timeout) << run.words;
    }
    EXPECT_EQ(runsOfALife, words);
}

TEST_F(AdapterCalls, HaveThirtySecondsWithManagementOff) {
    liveOnce(false);
    EXPECT_THAT(runs,
                ElementsAre(AllOf(Field(&AdapterRun::words, "clissh lock"), Field(&AdapterRun::timeout, 30000)),
                            AllOf(Field(&AdapterRun::words, "netconfssh lock"), Field(&AdapterRun::timeout, 30000))));
}

TEST_F(AdapterCalls, AllGoToTheAdapterThatWasSet) {
    SshdVormaWrapper other;
    component.setVorma(&other);
    liveOnce(true);
    EXPECT_THAT(runs, testing::SizeIs(runsOfALife.size()));
    EXPECT_THAT(runs, Each(Field(&AdapterRun::adapter, static_cast<const void*>(&other))));
    component.setVorma(nullptr);  // the component never owned it
}

TEST_F(AdapterCalls, AllGoToTheComponentsOwnAdapterOtherwise) {
    liveOnce(true);
    ASSERT_THAT(runs, testing::Not(IsEmpty()));
    EXPECT_THAT(runs, Each(Field(&AdapterRun::adapter, runs.front().adapter)));
}

}  // namespace
