#ifndef TUL_WALK_CREW_H
#define TUL_WALK_CREW_H

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Plan.h"
#include "Stage.h"

namespace TulTest {

/** What has become of a point, as it goes through a pipe: small enough to be written in one piece. */
struct Report {
    enum Outcome { InOrder, Missed, Lost, Broken, Trouble } outcome = InOrder;
    std::size_t point = 0;
    int call = 0;
    char text[3000] = "";
};

/** Ports for a job; job 0 is the one that rehearses. */
PortSupply portsOf(int job);

/** Processes that walk points side by side, since a tracer is one thread. They die with their maker. */
class Crew {
public:
    /** The job's places are made below the folder. Throws std::system_error when it cannot be made. */
    Crew(const Journey& journey, const std::filesystem::path& folder, const std::vector<Point>& points, int jobs,
         Moment end);

    /** Hands over each report as it comes; ends when all points were visited, time is up, or the taker returns false.
     */
    void work(const std::function<bool(const Report&)>& take) const;

private:
    [[noreturn]] void workAs(int job);
    Report visit(int job, std::size_t index);
    Stage& stage(int job, std::size_t scenario);

    const Journey& _journey;
    const std::filesystem::path _folder;
    const std::vector<Point>& _points;
    const Moment _end;
    std::atomic<std::size_t>* _next;  // shared by all processes
    int _reports = -1;
    int _pipe = -1;
    std::map<std::size_t, std::unique_ptr<Stage>> _stages;
    std::unique_ptr<PortSupply> _ports;
};

}  // namespace TulTest

#endif
