#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <optional>

#include "ComponentLoader.h"
#include "ModelFixture.h"
#include "Services.h"
#include "Spi.h"
#include "TemporaryDirectory.h"

namespace TulNode {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using State = ComponentLoader::State;

std::string animal(const std::string& name) {
    return std::string(TUL_ZOO_DIRECTORY) + "/" + name + ".so";
}

class Loader : public testing::Test {
protected:
    Loader() { applyModel(services.transactions, defaultModel, "default"); }

    std::optional<LoadFailure> load(const std::string& file) {
        try {
            loader.load(file, "<configuration/>");
        } catch (const LoadFailure& failure) {
            return failure;
        }
        return std::nullopt;
    }

    std::vector<std::string> records(const std::string& containing = "") {
        std::vector<std::string> lines;
        for (const Record& record : services.journal.last(Journal::mostRecords)) {
            const std::string line = record.line();
            if (line.find(containing) != std::string::npos) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    std::vector<std::string> accusations() { return records("component misbehaves: "); }

    /** Brings an animal up and down, and expects to find it accused of one thing. */
    void expectAccused(const std::string& name, const std::string& of) {
        ASSERT_EQ(load(animal(name)), std::nullopt);
        loader.start(BRY_REASON_NORMAL);
        loader.unload(BRY_REASON_NORMAL);
        EXPECT_THAT(accusations(), ElementsAre(HasSubstr("component misbehaves: Zoo " + of)));
        EXPECT_FALSE(isMapped(name));
    }

    static bool isMapped(const std::string& name) {
        std::ifstream maps("/proc/self/maps");
        const std::string text(std::istreambuf_iterator<char>(maps), {});
        return text.find("/" + name + ".so") != std::string::npos;
    }

    void changeModel(const std::string& dn) {
        const auto handle = services.transactions.open(TUL_LOCK_POLICY_SHARED, 60, "test");
        services.transactions.create(handle, dn, {});
        services.transactions.commit(handle);
    }

    Services services{""};
    Spi spi{services};
    ComponentLoader loader{services, Spi::accessor()};
};

TEST_F(Loader, TakesAGoodComponentUpAndDownAndLeavesNothing) {
    ASSERT_EQ(load(animal("good")), std::nullopt);
    EXPECT_EQ(loader.state(), State::Loaded);
    EXPECT_EQ(loader.name(), "Zoo");
    loader.start(BRY_REASON_NORMAL);
    EXPECT_EQ(loader.state(), State::Started);
    changeModel(category);
    EXPECT_TRUE(services.router.waitUntilIdle(std::chrono::seconds(20)));
    EXPECT_EQ(loader.stop(BRY_REASON_NORMAL), BRY_OK);
    changeModel(transport + ",DiffServCategory=2");
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(records(), ElementsAre("info init: <configuration/>", "info start: starts",
                                       "info notify: " + category, "info stop: stops", "info terminate: terminates"));
    EXPECT_FALSE(isMapped("good"));
    EXPECT_EQ(loader.state(), State::Unloaded);
}

TEST_F(Loader, LoadsAgainAndAgain) {
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(load(animal("good")), std::nullopt);
        loader.start(BRY_REASON_NORMAL);
        loader.unload(BRY_REASON_RELOAD);
        ASSERT_FALSE(isMapped("good"));
    }
    EXPECT_THAT(accusations(), IsEmpty());
}

TEST_F(Loader, ItsDestructorTakesTheComponentDown) {
    {
        ComponentLoader other(services, Spi::accessor());
        other.load(animal("good"), nullptr);
        other.start(BRY_REASON_NORMAL);
    }
    EXPECT_THAT(records(), Contains("info init: no configuration"));
    EXPECT_THAT(records(), Contains("info terminate: terminates"));
    EXPECT_FALSE(isMapped("good"));
}

struct BadComponent {
    const char* name;
    const char* rung;
    const char* why;
    const char* accusedOf = nullptr;
};

class BadComponents : public Loader, public testing::WithParamInterface<BadComponent> {};

TEST_P(BadComponents, FailOnTheirRungAndAreGone) {
    const auto failure = load(animal(GetParam().name));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->rung(), GetParam().rung);
    EXPECT_THAT(failure->what(), HasSubstr(GetParam().why));
    EXPECT_THAT(failure->what(), HasSubstr(animal(GetParam().name)));
    EXPECT_EQ(loader.state(), State::Unloaded);
    EXPECT_FALSE(isMapped(GetParam().name));
    if (GetParam().accusedOf != nullptr) {
        EXPECT_THAT(accusations(), Contains(HasSubstr(GetParam().accusedOf)));
    } else {
        EXPECT_THAT(accusations(), IsEmpty());
    }
    EXPECT_EQ(load(animal("good")), std::nullopt) << "what failed must not stand in the way of the next";
}

INSTANTIATE_TEST_SUITE_P(
    Each, BadComponents,
    testing::Values(BadComponent{"no_such_file", "file", "No such file"},
                    BadComponent{"no_terminate", "symbols", "bryLCMterminate"},
                    BadComponent{"through_dependency", "symbols", "bryLCMinit"},
                    BadComponent{"init_fails", "init", "-3 (INVALID_ARGUMENT)"},
                    BadComponent{"registers_nothing", "record", "0 component records"},
                    BadComponent{"wrong_version", "record", "interfaceVersion of the record is \"3\"; allowed: 2"},
                    BadComponent{"null_start", "record", "start or stop of the record is a null pointer"},
                    BadComponent{"null_array", "record", "interfaceArray of the record is a null pointer"},
                    BadComponent{"endless_array", "record", "dependencyArray of the record does not end"},
                    BadComponent{"registers_twice", "record", "registered already",
                                 "Zoo registers the name Zoo twice"},
                    BadComponent{"missing_dependency", "dependencies", "TulMissing version 7 of any component"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(Loader, TellsWhatIsNotALibrary) {
    const TulTest::TemporaryDirectory directory;
    const std::string text = directory.path() / "text.so";
    std::ofstream(text) << std::string(4096, 'x');
    EXPECT_EQ(load(text)->rung(), "load");
    EXPECT_THAT(load(text)->what(), HasSubstr("invalid ELF header"));
    EXPECT_EQ(load(directory.path())->rung(), "file");
    EXPECT_THAT(load(directory.path())->what(), HasSubstr("folder"));
}

TEST_F(Loader, AcceptsADependencyThatAnotherComponentOffers) {
    EXPECT_EQ(load(animal("needs_offered"))->rung(), "dependencies");
    ComponentLoader other(services, Spi::accessor());
    other.load(animal("offers"), nullptr);
    EXPECT_EQ(load(animal("needs_offered")), std::nullopt);
}

TEST_F(Loader, RefusesWhatIsOutOfOrder) {
    EXPECT_EQ(codeOf([&] { loader.start(BRY_REASON_NORMAL); }), BRY_FAILED);
    EXPECT_EQ(codeOf([&] { loader.stop(BRY_REASON_NORMAL); }), BRY_FAILED);
    loader.unload(BRY_REASON_NORMAL);
    ASSERT_EQ(load(animal("good")), std::nullopt);
    EXPECT_EQ(codeOf([&] { load(animal("good")); }), BRY_ALREADY_EXISTS);
    loader.start(BRY_REASON_NORMAL);
    EXPECT_EQ(codeOf([&] { loader.start(BRY_REASON_NORMAL); }), BRY_FAILED);
}

TEST_F(Loader, AComponentThatCannotStartStaysLoadedAndHearsNothing) {
    ASSERT_EQ(load(animal("start_fails")), std::nullopt);
    EXPECT_THROW(loader.start(BRY_REASON_NORMAL), LoadFailure);
    EXPECT_EQ(loader.state(), State::Loaded);
    changeModel(category);
    EXPECT_TRUE(services.router.waitUntilIdle(std::chrono::seconds(20)));
    EXPECT_THAT(records("notify"), IsEmpty());
}

TEST_F(Loader, HoldsNotificationsBackUntilStartHasReturned) {
    ASSERT_EQ(load(animal("changes_in_start")), std::nullopt);
    loader.start(BRY_REASON_NORMAL);
    EXPECT_TRUE(services.router.waitUntilIdle(std::chrono::seconds(20)));
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(records(), ElementsAre(HasSubstr("init"), "info start: starts", "info start: returns",
                                       HasSubstr("notify: "), HasSubstr("stop"), HasSubstr("terminate")));
}

TEST_F(Loader, SaysThatAComponentDidNotStopCleanlyAndGoesOn) {
    ASSERT_EQ(load(animal("stop_fails")), std::nullopt);
    loader.start(BRY_REASON_NORMAL);
    EXPECT_EQ(loader.unload(BRY_REASON_NORMAL), BRY_FAILED);
    EXPECT_THAT(records(), Contains(HasSubstr("did not stop cleanly: -1")));
    EXPECT_FALSE(isMapped("stop_fails"));
}

TEST_F(Loader, AccusesALeakedConsumer) {
    expectAccused("leaks_consumer", "leaves consumer 1 with 1 subscriptions");
}
TEST_F(Loader, AccusesARecordThatStays) {
    expectAccused("stays_registered", "leaves its record registered");
}
TEST_F(Loader, AccusesADeadTransaction) {
    expectAccused("dead_transaction", "calls commit with a dead handle");
}
TEST_F(Loader, AccusesAKeptValue) {
    expectAccused("keeps_value", "does not give 1 value containers back");
}
TEST_F(Loader, AccusesASecondRelease) {
    expectAccused("releases_twice", "gives a value container back");
}
TEST_F(Loader, AccusesACallFromTheWrongPlace) {
    expectAccused("registers_in_start", "calls registerComponent");
}

TEST_F(Loader, AccusesALibraryThatDoesNotUnload) {
    ASSERT_EQ(load(animal("pinned")), std::nullopt);
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(accusations(), ElementsAre(HasSubstr("component misbehaves: Zoo is still mapped")));
}

TEST_F(Loader, ReportsAnOpenTransactionWithoutAccusing) {
    ASSERT_EQ(load(animal("open_transaction")), std::nullopt);
    loader.start(BRY_REASON_NORMAL);
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(accusations(), IsEmpty());
    EXPECT_THAT(records("info node"), ElementsAre(HasSubstr("is left open")));
}

TEST_F(Loader, AccusesWhatAComponentThrowsAndGoesOn) {
    ASSERT_EQ(load(animal("throws")), std::nullopt);
    EXPECT_THROW(loader.start(BRY_REASON_NORMAL), LoadFailure);
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(accusations(), ElementsAre(HasSubstr("Thrower throws from start: no start"),
                                           HasSubstr("Thrower throws from bryLCMterminate")));
}

TEST_F(Loader, WaitsForACallbackUnderWayBeforeItUnloads) {
    const TulTest::TemporaryDirectory directory;
    const std::string gate = directory.path() / "gate";
    setenv("ZOO_GATE", gate.c_str(), 1);
    std::promise<void> begun;
    ASSERT_EQ(load(animal("slow_leaker")), std::nullopt);
    loader.start(BRY_REASON_NORMAL);
    services.journal.listen([&](const Record& record) {
        if (record.function == "notify" && record.text == category) {
            begun.set_value();
        }
    });
    changeModel(category);
    ASSERT_EQ(begun.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    auto unloaded = std::async(std::launch::async, [&] { loader.unload(BRY_REASON_NORMAL); });
    EXPECT_EQ(unloaded.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    std::ofstream{gate};
    unloaded.get();
    EXPECT_THAT(records(), Contains("info notify: the slow callback ends"));
    EXPECT_FALSE(isMapped("slow_leaker"));
    services.journal.listen(nullptr);
}

}  // namespace
}  // namespace TulNode
