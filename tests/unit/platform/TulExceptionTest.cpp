#include <gtest/gtest.h>

#include "TulException.h"

namespace TulTest {
namespace {

TEST(TulException, HasTheCodeMinusOneUnlessOneIsGiven) {
    EXPECT_EQ(-1, Tul::TulException("text").errorCode());
    EXPECT_EQ(-8, Tul::TulException(-8, "text").errorCode());
    EXPECT_EQ(0, Tul::TulException(0, "text").errorCode());
}

TEST(TulException, FormatsItsText) {
    EXPECT_STREQ("port 22 of clissh", Tul::TulException("port %d of %s", 22, "clissh").what());
    EXPECT_STREQ("code -5: x", Tul::TulException(-5, "code %d: %s", -5, "x").what());
    EXPECT_STREQ("", Tul::TulException("%s", "").what());
}

TEST(TulException, TakesATextOfAnyLength) {
    const std::string text(1000000, 'x');
    EXPECT_EQ(text + "!", Tul::TulException("%s!", text.c_str()).what());
}

TEST(TulException, IsAStandardException) {
    EXPECT_THROW(throw Tul::TulException("text"), std::exception);
}

}  // namespace
}  // namespace TulTest
