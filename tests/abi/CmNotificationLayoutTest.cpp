#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"

namespace {

using namespace TulTest;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/** Where the fields of a notification stand, in bytes, as a framework of this word size lays them out. */
struct Offsets {
    std::size_t events;
    std::size_t eventDn, eventType, attributes;
    std::size_t attributeName, attributeType, nrOfValues, values;
    std::size_t value, nextValue;
};

constexpr Offsets offsets =
    sizeof(void*) == 4 ? Offsets{20, 0, 4, 8, 0, 4, 8, 12, 0, 8} : Offsets{24, 0, 8, 16, 0, 8, 12, 16, 0, 8};

constexpr const char* attributeName = "administrativeState";

/** A record made of bytes, without the headers' help. What is not put is filled with something hostile. */
class Bytes {
public:
    Bytes() { _bytes.fill(0xA5); }

    template <class T>
    Bytes& put(std::size_t offset, T value) {
        std::memcpy(_bytes.data() + offset, &value, sizeof(value));
        return *this;
    }

    void* data() { return _bytes.data(); }

private:
    alignas(16) std::array<unsigned char, 64> _bytes;
};

/** A notification of one event with one enumeration attribute: a value, and a second one behind it. */
struct HandMade {
    HandMade(const HandMade&) = delete;
    HandMade& operator=(const HandMade&) = delete;

    HandMade(std::int32_t type, std::int32_t typeCode, std::uint32_t nrOfValues, std::int32_t state,
             const Offsets& at = offsets) {
        value.put(at.value, state).put(at.nextValue, state + 1);
        attribute.put(at.attributeName, attributeName)
            .put(at.attributeType, typeCode)
            .put(at.nrOfValues, nrOfValues)
            .put(at.values, value.data());
        event.put(at.eventDn, cliSshDn)
            .put(at.eventType, type)
            .put(at.attributes, static_cast<void*>(attributes.data()));
        notification.put(at.events, static_cast<void*>(events.data()));
    }

    Bytes value;
    Bytes attribute;
    Bytes event;
    Bytes notification;
    std::array<void*, 2> attributes{attribute.data(), nullptr};
    std::array<void*, 2> events{event.data(), nullptr};
};

/** The fields that the header reads elsewhere than a framework puts them. */
std::vector<std::string> misread(const Offsets& at) {
    HandMade made(3, 12, 2, 1, at);
    const auto& notification = *static_cast<const BryOamSpiCmEvent_Notification_1T*>(made.notification.data());
    const auto& event = *static_cast<const BryOamSpiCmEvent_Event_1*>(made.event.data());
    const auto& attribute = *static_cast<const BryOamSpiCmEvent_Attribute_1*>(made.attribute.data());
    const auto* const values = static_cast<const TulMoAttributeValue_3*>(made.value.data());
    const std::vector<std::pair<const char*, bool>> fields{
        {"events", static_cast<void*>(notification.events) == made.events.data()},
        {"dn", event.dn == cliSshDn},
        {"eventType", event.eventType == ATTRIBUTES_CHANGED},
        {"attributes", static_cast<void*>(event.attributes) == made.attributes.data()},
        {"name", attribute.name == attributeName},
        {"type", attribute.type == TUL_MO_TYPE_ENUMERATION_3},
        {"nrOfValues", attribute.nrOfValues == 2},
        {"values", attribute.values == values},
        {"value", values[0].asEnum == 1},
        {"next value", values[1].asEnum == 2}};
    std::vector<std::string> wrong;
    for (const auto& [name, same] : fields) {
        if (!same) {
            wrong.emplace_back(name);
        }
    }
    return wrong;
}

TEST(CmNotificationHeader, ReadsEveryFieldWhereTheFrameworkPutsIt) {
    EXPECT_THAT(misread(offsets), IsEmpty());
}

TEST(CmNotificationHeader, MisreadsEachFieldThatIsAByteOrAWordOff) {
    const std::vector<std::pair<const char*, std::size_t Offsets::*>> fields{
        {"events", &Offsets::events},         {"dn", &Offsets::eventDn},         {"eventType", &Offsets::eventType},
        {"attributes", &Offsets::attributes}, {"name", &Offsets::attributeName}, {"type", &Offsets::attributeType},
        {"nrOfValues", &Offsets::nrOfValues}, {"values", &Offsets::values},      {"value", &Offsets::value},
        {"next value", &Offsets::nextValue}};
    for (const std::size_t distance : {1U, 4U}) {
        for (const auto& [name, field] : fields) {
            Offsets moved = offsets;
            moved.*field += distance;
            EXPECT_THAT(misread(moved), Contains(name)) << distance;
        }
    }
}

class CmNotificationLayout : public testing::Test {
public:
    CmNotificationLayout() {
        framework.givenEmptyNode();
        library.init(configuration(true));
        library.start();
        framework.takeRuns();
    }

    std::vector<std::string> runsAfter(HandMade&& record) {
        const RegisteredConsumer& consumer = framework.consumers.at(0);
        EXPECT_EQ(BRY_OK, consumer.record->notify(consumer.handle, consumer.eventType.c_str(), consumer.filter,
                                                  record.notification.data()));
        return framework.takeRuns();
    }

    RecordingFramework framework;
    ComponentLibrary library{framework};
};

TEST_F(CmNotificationLayout, HasEveryFieldWhereTheComponentReadsIt) {
    EXPECT_THAT(runsAfter(HandMade(3, 12, 1, 0)), ElementsAre("clissh lock"));
    EXPECT_THAT(runsAfter(HandMade(3, 12, 1, 1)), ElementsAre("clissh unlock port 2022"));
}

TEST_F(CmNotificationLayout, IsReadFieldByField) {
    EXPECT_THAT(runsAfter(HandMade(1, 12, 1, 0)), IsEmpty()) << "event type";
    EXPECT_THAT(runsAfter(HandMade(3, 11, 1, 0)), IsEmpty()) << "type code";
    EXPECT_THAT(runsAfter(HandMade(3, 12, 0, 0)), IsEmpty()) << "number of values";
    EXPECT_THAT(runsAfter(HandMade(3, 12, 1, 1)), IsEmpty()) << "value";
}

}  // namespace
