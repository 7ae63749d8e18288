#ifndef TUL_TEST_REFUSED_H
#define TUL_TEST_REFUSED_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Refusal.h"

namespace TulTest {

/** Calls it and expects that it refuses with the code, in words that match. */
template <class CallT>
void expectRefusal(Vorma::Exit code, const testing::Matcher<const std::string&>& words, CallT call) {
    try {
        call();
        ADD_FAILURE() << "nothing was refused";
    } catch (const Vorma::Refusal& refusal) {
        EXPECT_EQ(code, refusal.code());
        EXPECT_THAT(std::string(refusal.what()), words);
    }
}

}  // namespace TulTest

#endif
