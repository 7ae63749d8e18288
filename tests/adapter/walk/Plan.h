#ifndef TUL_WALK_PLAN_H
#define TUL_WALK_PLAN_H

#include <string>
#include <vector>

#include "Fault.h"
#include "Scenario.h"

namespace TulTest {

/** A fault in a scenario. */
struct Point {
    std::size_t scenario = 0;  ///< index in scenarios()
    Fault fault;
    bool hasEffect = false;
};

/**
 * What is to be visited of a scenario in a mode: all calls that have an effect, and of the others one in so many;
 * each with every error number, where calls fail.
 */
std::vector<Point> pointsOf(std::size_t scenario, const std::vector<RecordedCall>& calls, Mode mode,
                            std::size_t oneIn);

/** One point of each list in turn; within a list by chance, those that have an effect first. */
std::vector<Point> spread(std::vector<std::vector<Point>> lists, unsigned seed);

/** One list after the other. */
std::vector<Point> inOrder(const std::vector<std::vector<Point>>& lists);

}  // namespace TulTest

#endif
