#include "Walker.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace TulTest {

int Walker::walk() {
    rehearseAll();
    if (!isEnough()) {
        visitAll();
    }
    if (!_options.expectsViolation) {
        _figures.print(std::cout);
    } else if (!_hasViolation) {
        std::cout << "none found in " << _figures.visited() << " points\n";
    }
    return _hasViolation == _options.expectsViolation ? 0 : 1;
}

void Walker::rehearseAll() {
    const auto& wanted = _options.scenarios;
    for (std::size_t scenario = 0; scenario < scenarios().size() && !isEnough(); ++scenario) {
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), scenarios()[scenario].name) != wanted.end()) {
            rehearse(scenario);
        }
    }
    _points = _options.seconds > 0 ? spread(_lists, _options.journey.seed) : inOrder(_lists);
}

void Walker::rehearse(std::size_t scenario) {
    PortSupply ports = portsOf(0);
    std::string flaw;
    try {
        const Stage stage(_options.journey, scenarios()[scenario], _folder / "rehearsal" / scenarios()[scenario].name,
                          ports);
        flaw = stage.flaw();
        plan(scenario, stage.calls());
    } catch (const Violation& violation) {
        flaw = violation.what();
    }
    if (!flaw.empty()) {
        tell(Report::Broken, scenario, "undisturbed", ": " + flaw);
    }
    _figures.countRehearsal(!flaw.empty());
}

void Walker::plan(std::size_t scenario, const std::vector<RecordedCall>& calls) {
    for (const Mode mode : _options.modes) {
        std::vector<Point> points = pointsOf(scenario, calls, mode, _options.oneIn);
        if (!_options.point.empty()) {
            points = {{scenario, readFault(_options.point), true}};
            points.front().fault.mode = mode;
        }
        _figures.expect(scenario, mode, calls.size(), points.size());
        _lists.push_back(std::move(points));
    }
}

void Walker::visitAll() {
    const auto time = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(_options.seconds));
    const Moment end = _options.seconds > 0 ? Clock::now() + time : Moment::max();
    const Crew crew(_options.journey, _folder, _points, _options.jobs, end);
    crew.work([this](const Report& report) { return take(_points[report.point], report); });
}

bool Walker::take(const Point& point, const Report& report) {
    _figures.count(point, report);
    if (report.outcome != Report::InOrder && report.outcome != Report::Missed) {
        const std::string what = std::string("--mode ") + modes[static_cast<std::size_t>(point.fault.mode)] +
                                 " --point " + point.fault.text();
        const std::string number = report.call == 0 ? "" : " (call " + std::to_string(report.call) + ")";
        tell(report.outcome, point.scenario, what, number + ": " + report.text);
    }
    showProgress(point.scenario);
    return !isEnough();
}

namespace {

/** In one line, and not all of a long file. */
std::string abridged(std::string text) {
    constexpr std::size_t mostOfText = 500;
    std::replace(text.begin(), text.end(), '\n', '|');
    return text.substr(0, mostOfText);
}

}  // namespace

void Walker::tell(Report::Outcome outcome, std::size_t scenario, const std::string& point, const std::string& text) {
    const bool isLost = outcome == Report::Lost;  // allowed, but worth a look
    _hasViolation = _hasViolation || !isLost;
    std::cout << (isLost                      ? "lost: "
                  : _options.expectsViolation ? "found: "
                                              : "violation: ")
              << "--scenario " << scenarios()[scenario].name << " " << point << " --seed " << _options.journey.seed
              << abridged(text) << std::endl;
}

void Walker::showProgress(std::size_t scenario) {
    const bool isSeen = isatty(2) == 1;
    if (isSeen ? Clock::now() < _shown + std::chrono::seconds(3) : _options.seconds > 0 || _scenario == scenario) {
        return;
    }
    _shown = Clock::now();
    _scenario = scenario;
    std::cerr << scenarios()[scenario].name << ": " << _figures.visited() << " of " << _points.size()
              << " points visited" << (isSeen ? "\r" : "\n") << std::flush;
}

}  // namespace TulTest
