#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "ExpectedRecords.h"
#include "MoAccessor.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;
using Tul::TulException;
using Enum = Tul::MoAccessor::Enum;

const RecordSource source{"Common", "src/common/inc/MoAccessor"};
const char* const readFormat = "MoAccessor::getAttr<> dName :%s attrName :%s";
const char* const readText = "MoAccessor::getAttr<> dName :Mo=1 attrName :attribute";

/** Reads the attribute "attribute" of the MO "Mo=1". */
class MoReading : public testing::Test {
protected:
    void givenValues(const AttributeValues& values) { framework.givenMo("Mo=1", {{"attribute", values}}); }
    void givenNoValue() { framework.givenMo("Mo=1"); }

    template <class T>
    T read() {
        return Tul::MoAccessor(true, TUL_LOCK_POLICY_SHARED, 60).getAttr<T>("Mo=1", "attribute");
    }
    std::vector<std::string> readAll() {
        return Tul::MoAccessor(true, TUL_LOCK_POLICY_SHARED, 60).getSeqAttr<std::string>("Mo=1", "attribute");
    }

    RecordingFramework framework;
};

using GetAttr = MoReading;
using GetSeqAttr = MoReading;

TEST_F(GetAttr, GivesTheOneValue) {
    givenValues(enumeration(1));
    EXPECT_EQ(1, read<Enum>());
    givenValues(uint8(255));
    EXPECT_EQ(255, read<unsigned char>());
    givenValues(strings({"a text"}));
    EXPECT_EQ("a text", read<std::string>());
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetAttr, GivesNegativeEnumerationValues) {
    givenValues(enumeration(-2));
    const int widened = read<Enum>();
    EXPECT_EQ(-2, widened);
}

TEST_F(GetAttr, ReadsTheNamedAttributeOfTheNamedMo) {
    givenValues(uint8(46));
    framework.givenMo("Mo=2", {{"attribute", uint8(47)}});
    EXPECT_EQ(46, read<unsigned char>());
    EXPECT_THAT(framework.callsOf("getAttribute"), ElementsAre("getAttribute 0 Mo=1 attribute"));
}

TEST_F(GetAttr, TracesWhatItReads) {
    givenValues(uint8(46));
    framework.logLevel = 8;
    read<unsigned char>();
    EXPECT_EQ(framework.records, source.trace("getAttr", readFormat, readText));
}

TEST_F(GetAttr, PassesOnTheExceptionOfAnAttributeThatCannotBeRead) {
    EXPECT_THROW(read<Enum>(), TulException);  // no such MO
    givenValues(enumeration(1));
    framework.results["getAttribute"] = BRY_UNKNOWN_CLASS;
    EXPECT_THROW(read<Enum>(), TulException);
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetAttr, LogsAndThrowsThatAnAttributeIsASequence) {
    givenValues({TUL_MO_TYPE_ENUMERATION_3, {0, 1}, {}});
    EXPECT_THAT([this] { read<Enum>(); },
                ThrowsMessage<TulException>(StrEq("Attribute is a sequence: Mo=1::attribute")));
    EXPECT_EQ(framework.records,
              source.error("getAttr", "Attribute is a sequence: %s::%s", "Attribute is a sequence: Mo=1::attribute"));
}

TEST_F(GetAttr, ThrowsBelowTheLevelOfErrorsWithoutLogging) {
    framework.logLevel = 2;
    givenValues({TUL_MO_TYPE_ENUMERATION_3, {0, 1}, {}});
    EXPECT_THROW(read<Enum>(), TulException);
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetAttr, ThrowsForAValueOfAnotherType) {
    givenValues(uint8(1));
    EXPECT_THROW(read<Enum>(), TulException);
    EXPECT_THROW(read<std::string>(), TulException);
    givenValues(enumeration(1));
    EXPECT_THROW(read<unsigned char>(), TulException);
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetAttr, LooksAtTheNumberOfValuesBeforeTheirType) {
    givenValues({TUL_MO_TYPE_UINT8_3, {0, 1}, {}});
    EXPECT_THAT([this] { read<Enum>(); },
                ThrowsMessage<TulException>(StrEq("Attribute is a sequence: Mo=1::attribute")));
}

TEST_F(GetSeqAttr, GivesAllValuesInTheOrderOfTheFramework) {
    givenValues(strings({"b", "a", "", "b"}));
    EXPECT_THAT(readAll(), ElementsAre("b", "a", "", "b"));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetSeqAttr, GivesOneElementForOneValue) {
    givenValues(strings({"only"}));
    EXPECT_THAT(readAll(), ElementsAre("only"));
}

TEST_F(GetSeqAttr, ReservesRoomForExactlyTheNumberOfValues) {
    givenValues(strings({"a", "b", "c", "d", "e"}));
    EXPECT_EQ(5u, readAll().capacity());
}

TEST_F(GetSeqAttr, TracesWithTheTextOfGetAttrUnderItsOwnName) {
    givenValues(strings({"a"}));
    framework.logLevel = 8;
    readAll();
    EXPECT_EQ(framework.records, source.trace("getSeqAttr", readFormat, readText));
}

TEST_F(GetSeqAttr, IsEmptyAndSilentWhenTheAttributeCannotBeRead) {
    EXPECT_THAT(readAll(), IsEmpty());  // no such MO
    givenValues(strings({"a"}));
    framework.results["getAttribute"] = BRY_TIMED_OUT;
    EXPECT_THAT(readAll(), IsEmpty());
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetSeqAttr, PassesOnOtherExceptionsThanThePlatforms) {
    givenValues(strings({"a"}));
    framework.spoilContainer = [](TulMoAttributeValueContainer_3&) { throw std::runtime_error("other"); };
    EXPECT_THAT([this] { readAll(); }, ThrowsMessage<std::runtime_error>(StrEq("other")));
}

TEST_F(GetSeqAttr, ThrowsForASequenceOfAnotherType) {
    givenValues({TUL_MO_TYPE_INT32_3, {1, 2}, {}});
    EXPECT_THROW(readAll(), TulException);
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_F(GetSeqAttr, PassesOnTheLengthErrorOfMoreValuesThanAVectorCanHold) {
    if (std::vector<std::string>().max_size() > UINT32_MAX) {
        GTEST_SKIP() << "a vector of this machine holds every number of values that a container can have";
    }
    givenValues(strings({"a"}));
    framework.spoilContainer = [](TulMoAttributeValueContainer_3& container) { container.nrOfValues = UINT32_MAX; };
    EXPECT_THAT([this] { readAll(); }, ThrowsMessage<std::length_error>(StrEq("vector::reserve")));
    EXPECT_EQ(1, framework.containersReleased);
}

TEST_F(MoReading, FindsTheFirstInstanceOfAClassPath) {
    framework.givenEmptyNode();
    std::string dn;
    Tul::MoAccessor(true, TUL_LOCK_POLICY_SHARED, 60).getFirstMoInstance("ManagedElement,SystemFunctions,SysM", dn);
    EXPECT_EQ(sysMDn, dn);
}

TEST_F(MoReading, ThrowsThePlatformsExceptionWhenThereIsNoInstance) {
    framework.givenEmptyNode();
    Tul::MoAccessor accessor(true, TUL_LOCK_POLICY_SHARED, 60);
    std::string dn;
    EXPECT_THROW(accessor.getFirstMoInstance("ManagedElement,SystemFunctions,SecM,Ssh", dn), TulException);
}

struct Absence {
    const char* name;
    bool hasContainer;
    void (*spoil)(TulMoAttributeValueContainer_3& container);
};

void PrintTo(const Absence& absence, std::ostream* stream) {
    *stream << absence.name;
}

class MoReadingWithout : public MoReading, public testing::WithParamInterface<Absence> {
protected:
    MoReadingWithout() {
        if (GetParam().hasContainer) {
            givenValues(strings({"a"}));
            framework.spoilContainer = GetParam().spoil;
        } else {
            givenNoValue();
        }
    }
};

TEST_P(MoReadingWithout, AValueThrowsForASingleValueAndLogsNothing) {
    EXPECT_THAT([this] { read<std::string>(); },
                ThrowsMessage<TulException>(StrEq("Attribute has no value set: Mo=1::attribute")));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST_P(MoReadingWithout, AValueIsAnEmptySequence) {
    EXPECT_THAT(readAll(), IsEmpty());
    EXPECT_THAT(framework.records, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    EveryWay, MoReadingWithout,
    testing::Values(Absence{"NullContainer", false, nullptr},
                    Absence{"ZeroValues", true, [](TulMoAttributeValueContainer_3& it) { it.nrOfValues = 0; }},
                    Absence{"NullValues", true, [](TulMoAttributeValueContainer_3& it) { it.values = nullptr; }}),
    [](const auto& test) { return std::string(test.param.name); });

struct Way {
    const char* name;
    AttributeValues values;
    void (*spoil)(TulMoAttributeValueContainer_3& container) = nullptr;
};

void PrintTo(const Way& way, std::ostream* stream) {
    *stream << way.name;
}

/** Every way out of both templates with a container in hand. */
class MoReadingRelease : public MoReading, public testing::WithParamInterface<Way> {
protected:
    MoReadingRelease() {
        givenValues(GetParam().values);
        framework.spoilContainer = GetParam().spoil;
    }

    void readBothWays() {
        try {
            read<std::string>();
        } catch (const TulException&) {
            ++failures;
        }
        try {
            readAll();
        } catch (const TulException&) {
            ++failures;
        }
    }

    int failures = 0;
};

TEST_P(MoReadingRelease, HappensOnceForEachContainer) {
    readBothWays();
    EXPECT_EQ(2, framework.containersFetched);
    EXPECT_EQ(2, framework.containersReleased);
}

TEST_P(MoReadingRelease, DoesNotHappenWithoutAReleaseFunction) {
    framework.releasesContainers = false;
    readBothWays();
    EXPECT_EQ(2, framework.containersFetched);
    EXPECT_EQ(0, framework.containersReleased);
}

INSTANTIATE_TEST_SUITE_P(EveryWayOut, MoReadingRelease,
                         testing::Values(Way{"OneValue", strings({"a"})}, Way{"TwoValues", strings({"a", "b"})},
                                         Way{"OtherType", uint8(1)}, Way{"NoValue", strings({})},
                                         Way{"NullValues", strings({"a"}),
                                             [](TulMoAttributeValueContainer_3& it) { it.values = nullptr; }}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(MoReading, DoesNotReleaseANullContainer) {
    givenNoValue();
    EXPECT_THROW(read<std::string>(), TulException);
    EXPECT_THAT(readAll(), IsEmpty());
    EXPECT_EQ(0, framework.containersReleased);
}

int releases = 0;
void countRelease(TulMoAttributeValueContainer_3* /*container*/) {
    ++releases;
}

TEST(MoAttributeValueResult, IsEmptyAtFirst) {
    const Tul::MoAccessor::MoAttributeValueResult result;
    EXPECT_EQ(nullptr, result.release);
    EXPECT_EQ(nullptr, result.container);
}

TEST(MoAttributeValueResult, ReleasesWhenItHoldsBothAContainerAndARelease) {
    TulMoAttributeValueContainer_3 container{TUL_MO_TYPE_STRING_3, 0, nullptr};
    releases = 0;
    for (auto* const release : {countRelease, static_cast<decltype(&countRelease)>(nullptr)}) {
        for (auto* const held : {&container, static_cast<TulMoAttributeValueContainer_3*>(nullptr)}) {
            Tul::MoAccessor::MoAttributeValueResult result;
            result.release = release;
            result.container = held;
        }
    }
    EXPECT_EQ(1, releases);
}

}  // namespace
