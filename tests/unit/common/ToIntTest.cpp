#include <gtest/gtest.h>

#include <type_traits>

#include "InstalledLocales.h"
#include "StringConversion.h"

namespace {

using namespace TulTest;

const char* const invalid = "Invalid string exception";
const char* const notUnsigned = "UnsignedInt Expected Exception";
const char* const outOfRange = "Value range exception";
const unsigned int untouched = 777;

static_assert(std::is_base_of_v<std::exception, Tul::InvalidStringException>);
static_assert(std::is_base_of_v<std::exception, Tul::UnsignedIntExpectedException>);
static_assert(std::is_base_of_v<std::exception, Tul::ValueRangeException>);

struct Conversion {
    const char* name;
    std::string text;
    const char* failure; /**< null: it succeeds */
    unsigned int value;  /**< also what a failure leaves */
};

void PrintTo(const Conversion& conversion, std::ostream* stream) {
    *stream << conversion.name;
}

const Conversion conversions[] = {
    {"Zero", "0", nullptr, 0},
    {"Port", "22", nullptr, 22},
    {"Plus", "+22", nullptr, 22},
    {"LeadingZeros", "00022", nullptr, 22},
    {"Largest", "4294967295", nullptr, 4294967295U},
    {"LargestWithZeros", "0000000000000000000000004294967295", nullptr, 4294967295U},

    {"Empty", "", invalid, untouched},
    {"LeadingBlank", " 22", invalid, untouched},
    {"LeadingTab", "\t22", invalid, untouched},
    {"LeadingLineEnd", "\n22", invalid, untouched},
    {"LeadingVerticalTab", "\v22", invalid, untouched},
    {"JustABlank", " ", invalid, untouched},

    {"TrailingBlank", "22 ", invalid, 22},
    {"TrailingLineEnd", "22\n", invalid, 22},
    {"TrailingLetters", "22abc", invalid, 22},
    {"InnerBlank", "2 2", invalid, 2},
    {"Hexadecimal", "0x16", invalid, 0},
    {"Fraction", "22.5", invalid, 22},
    {"Exponent", "1e3", invalid, 1},
    {"Grouped", "4,294", invalid, 4},
    {"InnerNul",
     std::string("22\0"
                 "2",
                 4),
     invalid, 22},
    {"TrailingNul", std::string("22\0", 3), invalid, 22},
    {"Letters", "abc", invalid, 0},
    {"JustAPlus", "+", invalid, 0},
    {"PlusMinus", "+-22", invalid, 0},
    {"PlusBlank", "+ 22", invalid, 0},
    {"WideDigits", "\xEF\xBC\x92", invalid, 0},
    {"NoBreakSpace",
     "\xC2\xA0"
     "22",
     invalid, 0},

    {"Minus", "-22", notUnsigned, untouched},
    {"MinusZero", "-0", notUnsigned, untouched},
    {"JustAMinus", "-", notUnsigned, untouched},

    {"OneTooMany", "4294967296", outOfRange, untouched},
    {"TooManyWithPlus", "+4294967296", outOfRange, untouched},
    {"TooManyAndLetters", "4294967296abc", outOfRange, untouched},
    {"Largest64", "18446744073709551615", outOfRange, untouched},
    {"Beyond64", "18446744073709551616", outOfRange, untouched},
    {"Endless", std::string(10000, '9'), outOfRange, untouched},
};

/** The text of what was thrown by a type that the reader knows; null for none. */
const char* thrownBy(const std::string& text, unsigned int& value) {
    try {
        EXPECT_TRUE(Tul::toInt<unsigned int>(text, value));
    } catch (const Tul::InvalidStringException& thrown) {
        return thrown.what();
    } catch (const Tul::UnsignedIntExpectedException& thrown) {
        return thrown.what();
    } catch (const Tul::ValueRangeException& thrown) {
        return thrown.what();
    }
    return nullptr;
}

class ToIntOf : public testing::TestWithParam<Conversion> {
protected:
    void expectConversion() {
        unsigned int value = untouched;
        EXPECT_STREQ(GetParam().failure, thrownBy(GetParam().text, value));
        EXPECT_EQ(GetParam().value, value);
    }
};

TEST_P(ToIntOf, ATextFollowsTheRules) {
    expectConversion();
}

TEST_P(ToIntOf, ATextFollowsTheRulesUnderEveryInstalledLocale) {
    for (const std::string& name : installedLocales()) {
        SCOPED_TRACE(name);
        const LocaleInForce locale(name);
        expectConversion();
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, ToIntOf, testing::ValuesIn(conversions),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ToInt, IsNotMisledByAnEarlierRangeError) {
    unsigned int value = 0;
    errno = ERANGE;
    EXPECT_TRUE(Tul::toInt<unsigned int>("22", value));
    EXPECT_EQ(22u, value);
}

TEST(ToInt, ClearsTheErrorNumberFirst) {
    unsigned int value = 0;
    errno = ERANGE;
    EXPECT_THROW(Tul::toInt<unsigned int>("", value), Tul::InvalidStringException);
    EXPECT_EQ(0, errno);
}

}  // namespace
