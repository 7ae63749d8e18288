#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>

#include "ComponentLibrary.h"
#include "ComponentLoader.h"
#include "Services.h"
#include "Spi.h"

namespace TulNode {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string animal(const std::string& name) {
    return std::string(TUL_ZOO_DIRECTORY "/") + name + ".so";
}

class Rungs : public testing::Test {
public:
    std::optional<LoadFailure> load(const std::string& name) {
        try {
            loader.load(animal(name), nullptr);
        } catch (const LoadFailure& failure) {
            return failure;
        }
        return std::nullopt;
    }

    std::vector<std::string> records(const std::string& containing) const {
        std::vector<std::string> lines;
        for (const Record& record : services.journal.last(Journal::mostRecords)) {
            if (record.line().find(containing) != std::string::npos) {
                lines.push_back(record.line());
            }
        }
        return lines;
    }

    std::vector<std::string> accusations() const { return records("component misbehaves: "); }

    void expectGone(const std::string& name) {
        EXPECT_EQ(ComponentLoader::State::Unloaded, loader.state());
        EXPECT_FALSE(TulTest::ComponentLibrary::isMapped(animal(name)));
        EXPECT_EQ(std::nullopt, load("faultless")) << "what failed must not stand in the way of the next";
    }

    Services services{""};
    Spi spi{services};
    ComponentLoader loader{services, Spi::accessor()};
};

struct BadComponent {
    const char* name;
    const char* rung;
    const char* why;

    friend std::ostream& operator<<(std::ostream& stream, const BadComponent& row) { return stream << row.name; }
};

class BadRungs : public Rungs, public testing::WithParamInterface<BadComponent> {};

TEST_P(BadRungs, EndTheClimbAndLeaveNothing) {
    const auto failure = load(GetParam().name);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(GetParam().rung, failure->rung());
    EXPECT_THAT(failure->what(), HasSubstr(GetParam().why));
    expectGone(GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Each, BadRungs,
                         testing::Values(BadComponent{"unresolved", "load", "undefined symbol: nobodyDefinesThis"},
                                         BadComponent{"no_init", "symbols", "does not define bryLCMinit"},
                                         BadComponent{"throws_in_init", "init", "bryLCMinit returned -1"},
                                         BadComponent{"registers_two", "record",
                                                      "2 component records were registered instead of 1"},
                                         BadComponent{"registers_null", "record", "the record is a null pointer"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Rungs, AccuseAComponentThatThrowsFromInit) {
    EXPECT_TRUE(load("throws_in_init").has_value());
    EXPECT_THAT(accusations(), ElementsAre(HasSubstr("Thrower throws from bryLCMinit: no init")));
}

TEST_F(Rungs, AccuseAComponentThatThrowsFromStopAndUnloadIt) {
    ASSERT_EQ(std::nullopt, load("throws_in_stop"));
    loader.start(BRY_REASON_NORMAL);
    EXPECT_EQ(BRY_FAILED, loader.unload(BRY_REASON_NORMAL));
    EXPECT_THAT(accusations(), ElementsAre(HasSubstr("Thrower throws from stop")));
    expectGone("throws_in_stop");
}

TEST_F(Rungs, ForgetTheSecondOfTwoRecordsThatOnlyTheFirstIsUnregisteredOf) {
    EXPECT_TRUE(load("registers_two").has_value());
    EXPECT_THAT(accusations(), ElementsAre(HasSubstr("leaves its record registered")));
}

TEST_F(Rungs, WriteDownASecondUnregistration) {
    ASSERT_EQ(std::nullopt, load("unregisters_twice"));
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(records("unregisterComponent"), Contains(HasSubstr("the component record is not registered")));
    expectGone("unregisters_twice");
}

TEST_F(Rungs, AccuseAComponentThatRegistersWhileItIsTerminated) {
    ASSERT_EQ(std::nullopt, load("registers_in_terminate"));
    loader.unload(BRY_REASON_NORMAL);
    EXPECT_THAT(accusations(), ElementsAre(HasSubstr("leaves its record registered")));
    expectGone("registers_in_terminate");
}

TEST_F(Rungs, LetAFaultlessComponentUpAndDown) {
    ASSERT_EQ(std::nullopt, load("faultless"));
    loader.start(BRY_REASON_NORMAL);
    EXPECT_EQ(BRY_OK, loader.unload(BRY_REASON_NORMAL));
    EXPECT_THAT(accusations(), IsEmpty());
    expectGone("faultless");
}

}  // namespace
}  // namespace TulNode
