#include "Crew.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <iterator>
#include <new>
#include <system_error>

namespace TulTest {

static_assert(sizeof(Report) <= PIPE_BUF, "a report must not be torn");

PortSupply portsOf(int job) {
    constexpr int first = 10000;  // up to 19999, where no other test goes
    constexpr int perWalker = 2000;
    constexpr int perJob = 100;
    return {first + getpgrp() % 5 * perWalker + job % (perWalker / perJob) * perJob, perJob};
}

Crew::Crew(const Journey& journey, const std::filesystem::path& folder, const std::vector<Point>& points, int jobs,
           Moment end)
    : _journey(journey), _folder(folder), _points(points), _end(end) {
    int ends[2];
    void* shared = mmap(nullptr, sizeof(*_next), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED || pipe2(ends, O_CLOEXEC) == -1) {
        throw std::system_error(errno, std::generic_category(), "no pipe");
    }
    _next = new (shared) std::atomic<std::size_t>(0);
    _reports = ends[0];
    _pipe = ends[1];
    for (int job = 1; job <= jobs; ++job) {
        if (fork() == 0) {
            workAs(job);
        }
    }
    close(_pipe);
}

void Crew::work(const std::function<bool(const Report&)>& take) const {
    Report report;
    while (read(_reports, &report, sizeof(report)) == static_cast<ssize_t>(sizeof(report)) && take(report)) {
    }
}

void Crew::workAs(int job) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    _ports = std::make_unique<PortSupply>(portsOf(job));
    for (std::size_t index = (*_next)++; index < _points.size() && Clock::now() < _end; index = (*_next)++) {
        const Report report = visit(job, index);
        if (write(_pipe, &report, sizeof(report)) != static_cast<ssize_t>(sizeof(report))) {
            break;
        }
    }
    _stages.clear();
    _exit(0);
}

Report Crew::visit(int job, std::size_t index) {
    const Point& point = _points[index];
    Report report;
    report.point = index;
    try {
        const Stage::Visit visit =
            stage(job, point.scenario).visit(point.fault, _journey.seed + static_cast<unsigned>(index));
        report.call = visit.call;
        visit.lost.copy(report.text, sizeof(report.text) - 1);
        report.outcome = !visit.lost.empty() ? Report::Lost : visit.call == 0 ? Report::Missed : Report::InOrder;
    } catch (const std::exception& error) {
        report.outcome = dynamic_cast<const Violation*>(&error) != nullptr ? Report::Broken : Report::Trouble;
        std::string(error.what()).copy(report.text, sizeof(report.text) - 1);
        _stages.erase(point.scenario);
    }
    return report;
}

Stage& Crew::stage(int job, std::size_t scenario) {
    std::unique_ptr<Stage>& stage = _stages[scenario];
    if (!stage) {
        const Scenario& played = scenarios()[scenario];
        stage =
            std::make_unique<Stage>(_journey, played, _folder / ("job" + std::to_string(job)) / played.name, *_ports);
    }
    return *stage;
}

}  // namespace TulTest
