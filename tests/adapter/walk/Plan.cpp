#include "Plan.h"

#include <algorithm>
#include <random>

namespace TulTest {

std::vector<Point> pointsOf(std::size_t scenario, const std::vector<RecordedCall>& calls, Mode mode,
                            std::size_t oneIn) {
    std::vector<Point> points;
    std::size_t others = 0;
    for (const RecordedCall& call : calls) {
        const std::vector<int> errors = mode == Mode::Fail ? call.failures : std::vector<int>{0};
        if (errors.empty() || (!call.hasEffect && others++ % oneIn != 0)) {
            continue;
        }
        for (const int error : errors) {
            points.push_back({scenario, {mode, call.address, error}, call.hasEffect});
        }
    }
    return points;
}

std::vector<Point> spread(std::vector<std::vector<Point>> lists, unsigned seed) {
    std::mt19937 random(seed);
    std::size_t longest = 0;
    for (std::vector<Point>& list : lists) {
        std::shuffle(list.begin(), list.end(), random);
        std::stable_partition(list.begin(), list.end(), [](const Point& point) { return point.hasEffect; });
        longest = std::max(longest, list.size());
    }
    std::vector<Point> points;
    for (std::size_t i = 0; i < longest; ++i) {
        for (const std::vector<Point>& list : lists) {
            if (i < list.size()) {
                points.push_back(list[i]);
            }
        }
    }
    return points;
}

std::vector<Point> inOrder(const std::vector<std::vector<Point>>& lists) {
    std::vector<Point> points;
    for (const std::vector<Point>& list : lists) {
        points.insert(points.end(), list.begin(), list.end());
    }
    return points;
}

}  // namespace TulTest
