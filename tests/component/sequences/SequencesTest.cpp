/*
 * Random sequences of everything that a framework, a node and an adapter may do, carried out on the built library and
 * on a model of the rules. Whatever the library asks, runs, logs and answers must be what the model says. Of the
 * records the log records are compared; traces have tests of their own.
 *
 * By hand, from the folder of the programs:
 *
 *     component_sequence_tests --gtest_filter=ComponentSequences.BehaveAsTheModelSays
 *     RC_PARAMS='max_success=1000000' …     as many sequences as one likes
 *     RC_PARAMS='seed=17' …                 the sequences of another run; each run prints its seed
 *     RC_PARAMS='reproduce=…' …             only the one that failed, already shrunk; printed after a failure
 *     TUL_TEST_COMPONENT_LIBRARY=FILE …     another build of the library
 *
 * A failure shows the shortest sequence that still fails, and its last command as expected and as it happened.
 */
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "Agreement.h"
#include "Sanitizers.h"

namespace {

using namespace Sequences;

/** Sequences in an ordinary run. A sanitizer makes each of them several times as long. */
constexpr int ordinaryCount = TulTest::hasSanitizer ? 1500 : 10000;

/** The parameters of this run; RC_PARAMS decides about what it names. They are printed. */
rc::detail::TestParams paramsOfThisRun() {
    auto params = rc::detail::configuration().testParams;
    const char* const wanted = std::getenv("RC_PARAMS");
    if (wanted == nullptr || std::string(wanted).find("max_success") == std::string::npos) {
        params.maxSuccess = ordinaryCount;
    }
    std::cout << "RC_PARAMS='seed=" << params.seed << " max_success=" << params.maxSuccess << "'" << std::endl;
    return params;
}

TEST(ComponentSequences, BehaveAsTheModelSays) {
    const auto result = rc::detail::checkTestable(
        agreementWith(Bend::NONE), rc::detail::TestMetadata{"sequences", "sequences"}, paramsOfThisRun());
    EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << textOf(result);
}

}  // namespace
