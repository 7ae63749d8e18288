#ifndef TUL_WALK_WALKER_H
#define TUL_WALK_WALKER_H

#include <optional>
#include <string>
#include <vector>

#include "Figures.h"

namespace TulTest {

/** What the command line asks for. */
struct Options {
    Journey journey;
    std::vector<std::string> scenarios;
    std::vector<Mode> modes;
    std::string point;
    bool isAll = false;
    double seconds = 0;  ///< 0: everything, in order, as with isAll
    int jobs = 1;
    std::size_t oneIn = 10;
    bool expectsViolation = false;
};

/** Rehearses the scenarios, visits their points, and tells of it. */
class Walker {
public:
    Walker(const Options& options, const std::filesystem::path& folder) : _options(options), _folder(folder) {}

    /** 0: all as promised, or when a violation is expected, one was found. 1: the contrary. */
    int walk();

private:
    void rehearseAll();
    void rehearse(std::size_t scenario);
    void plan(std::size_t scenario, const std::vector<RecordedCall>& calls);
    void visitAll();
    bool take(const Point& point, const Report& report);
    void tell(Report::Outcome outcome, std::size_t scenario, const std::string& point, const std::string& text);
    void showProgress(std::size_t scenario);
    bool isEnough() const { return _options.expectsViolation && _hasViolation; }

    const Options& _options;
    const std::filesystem::path _folder;
    std::vector<std::vector<Point>> _lists;
    std::vector<Point> _points;
    Figures _figures;
    bool _hasViolation = false;
    Moment _shown;
    std::optional<std::size_t> _scenario;
};

}  // namespace TulTest

#endif
