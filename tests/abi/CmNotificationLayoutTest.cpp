#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;

/** Where the fields of a notification stand, in bytes, as a framework of this word size lays them out. */
struct Offsets {
    std::size_t events;
    std::size_t eventDn, eventType, attributes;
    std::size_t attributeName, attributeType, nrOfValues, values;
};

constexpr Offsets offsets =
    sizeof(void*) == 4 ? Offsets{20, 0, 4, 8, 0, 4, 8, 12} : Offsets{24, 0, 8, 16, 0, 8, 12, 16};

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

/** A notification of one event with one enumeration attribute "administrativeState". */
struct HandMade {
    HandMade(const HandMade&) = delete;
    HandMade& operator=(const HandMade&) = delete;

    HandMade(std::int32_t type, std::int32_t typeCode, std::uint32_t nrOfValues, std::int32_t state) {
        value.put(0, state);
        attribute.put(offsets.attributeName, "administrativeState")
            .put(offsets.attributeType, typeCode)
            .put(offsets.nrOfValues, nrOfValues)
            .put(offsets.values, value.data());
        event.put(offsets.eventDn, cliSshDn)
            .put(offsets.eventType, type)
            .put(offsets.attributes, static_cast<void*>(attributes.data()));
        notification.put(offsets.events, static_cast<void*>(events.data()));
    }

    Bytes value;
    Bytes attribute;
    Bytes event;
    Bytes notification;
    std::array<void*, 2> attributes{attribute.data(), nullptr};
    std::array<void*, 2> events{event.data(), nullptr};
};

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
