#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExpectedRecords.h"
#include "InstalledLocales.h"
#include "VormaSpiVersion.h"

namespace {

using namespace TulTest;
using testing::IsEmpty;
using Tul::VormaSpiVersion;

const RecordSource source{"Common", "src/common/inc/VormaSpiVersion"};

std::string textOf(const VormaSpiVersion& version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." + std::to_string(version.patch);
}

struct Revision {
    const char* name;
    std::string text;
    const char* version; /**< null: it cannot be read */
};

void PrintTo(const Revision& revision, std::ostream* stream) {
    *stream << revision.name;
}

const Revision revisions[] = {
    {"Plain", "1.7.0", "1.7.0"},
    {"LineEnd", "1.7.0\n", "1.7.0"},
    {"Suffix", "2.0.0-rc1", "2.0.0"},
    {"FourthNumber", "1.7.0.3", "1.7.0"},
    {"TextOnTheNextLine", "1.8.2\nmore", "1.8.2"},
    {"LettersAtTheEnd", "1.7.0x", "1.7.0"},
    {"Blanks", " 1 . 7 . 0", "1.7.0"},
    {"LineEndsAndTabs", "\n1\t.\r\n7 .\v0", "1.7.0"},
    {"TwoDigits", "10.0.0", "10.0.0"},
    {"LeadingZeros", "01.08.09", "1.8.9"},
    {"Zeros", "0.0.0", "0.0.0"},
    {"PlusSigns", "+1.+7.+0", "1.7.0"},
    {"Negative", "-1.-1.-1", "-1.-1.-1"},
    {"Largest", "2147483647.2147483647.2147483647", "2147483647.2147483647.2147483647"},
    {"Smallest", "-2147483648.0.0", "-2147483648.0.0"},

    {"Empty", "", nullptr},
    {"JustALineEnd", "\n", nullptr},
    {"TwoNumbers", "1.8", nullptr},
    {"TwoNumbersAndLineEnd", "1.8\n", nullptr},
    {"TwoNumbersAndDot", "1.8.", nullptr},
    {"OneNumber", "1", nullptr},
    {"Commas", "1,7,0", nullptr},
    {"FirstIsAComma", "1,7.0", nullptr},
    {"SecondIsAComma", "1.7,0", nullptr},
    {"JustBlanksBetween", "1 7 0", nullptr},
    {"MissingMiddle", "1..0", nullptr},
    {"LeadingDot", ".1.7.0", nullptr},
    {"LeadingLetter", "v1.7.0", nullptr},
    {"LetterAsNumber", "1.x.0", nullptr},
    {"Hexadecimal", "0x1.0x7.0x0", nullptr},
    {"Words", "vorma 1.7.0", nullptr},
    {"MajorTooLarge", "2147483648.0.0", nullptr},
    {"MinorTooLarge", "1.99999999999999999999.0", nullptr},
    {"PatchTooLarge", "1.7.4294967296", nullptr},
    {"PatchTooSmall", "1.7.-2147483649", nullptr},
    {"ByteOrderMark",
     "\xEF\xBB\xBF"
     "1.7.0",
     nullptr},
    {"WideDigits", "\xEF\xBC\x91.7.0", nullptr},
};

class VormaSpiVersionOf : public testing::TestWithParam<Revision> {
protected:
    /** What was read and what was told about it. */
    void expectReading() {
        VormaSpiVersion version{5, 6, 7};
        framework.records.clear();
        EXPECT_EQ(GetParam().version != nullptr, version.fromString(GetParam().text));
        EXPECT_EQ(GetParam().version == nullptr ? "0.0.0" : GetParam().version, textOf(version));
        const Records warning = source.warning("fromString", "Failed to parse vorma spi-revision: '%s'",
                                               "Failed to parse vorma spi-revision: '" + GetParam().text + "'");
        EXPECT_EQ(framework.records, GetParam().version == nullptr ? warning : Records{});
    }

    RecordingFramework framework;
};

TEST_P(VormaSpiVersionOf, ATextIsReadByTheRules) {
    expectReading();
}

TEST_P(VormaSpiVersionOf, ATextIsReadTheSameUnderEveryInstalledLocale) {
    for (const std::string& name : installedLocales()) {
        SCOPED_TRACE(name);
        const LocaleInForce locale(name);
        expectReading();
    }
}

/** As some languages write numbers: dots between the thousands. */
struct DotsBetweenThousands : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_P(VormaSpiVersionOf, ATextIsReadTheSameWhereNumbersAreGroupedWithDots) {
    const LocaleInForce locale(std::locale(std::locale::classic(), new DotsBetweenThousands));
    expectReading();
}

INSTANTIATE_TEST_SUITE_P(Texts, VormaSpiVersionOf, testing::ValuesIn(revisions),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(VormaSpiVersionReading, IsUpsetByGroupingWhenItFollowsTheHostsLocale) {
    const LocaleInForce locale(std::locale(std::locale::classic(), new DotsBetweenThousands));
    std::istringstream naive("1.700.0");
    int major = 0;
    naive >> major;
    EXPECT_NE(1, major) << "the tests above prove nothing";
}

TEST(VormaSpiVersionReading, DoesNotWarnBelowTheLevelOfWarnings) {
    RecordingFramework framework;
    framework.logLevel = 3;
    VormaSpiVersion version;
    EXPECT_FALSE(version.fromString("1.8"));
    EXPECT_THAT(framework.records, IsEmpty());
}

TEST(VormaSpiVersionOrder, StartsAtZero) {
    EXPECT_EQ("0.0.0", textOf(VormaSpiVersion{}));
}

/** Each is smaller than all that follow. */
const VormaSpiVersion ascending[] = {{INT32_MIN, 9, 9}, {-1, -1, -1},        {-1, 0, 0},       {0, 0, -1}, {0, 0, 0},
                                     {0, 0, 1},         {0, 9, 0},           {1, 0, 0},        {1, 6, 9},  {1, 7, 0},
                                     {1, 7, 1},         {1, 7, 10},          {1, 8, 0},        {1, 10, 0}, {2, 0, 0},
                                     {10, 0, 0},        {INT32_MAX, -1, -1}, {INT32_MAX, 0, 0}};

TEST(VormaSpiVersionOrder, ComparesNumberByNumberFromTheLeft) {
    for (const VormaSpiVersion& one : ascending) {
        for (const VormaSpiVersion& other : ascending) {
            EXPECT_EQ(&one < &other, one < other) << textOf(one) << " and " << textOf(other);
        }
    }
}

}  // namespace
