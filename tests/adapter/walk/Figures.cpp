#include "Figures.h"

#include <iomanip>

namespace TulTest {

void Figures::expect(std::size_t scenario, Mode mode, std::size_t calls, std::size_t points) {
    Row& row = _rows[{scenario, mode}];
    row.calls = calls;
    row.points = points;
}

void Figures::countRehearsal(bool isBroken) {
    ++_rehearsals;
    _brokenRehearsals += isBroken ? 1 : 0;
}

void Figures::count(const Point& point, const Report& report) {
    Row& row = _rows[{point.scenario, point.fault.mode}];
    const bool isMissed = report.outcome == Report::Missed;
    row.visited += isMissed ? 0 : 1;
    row.missed += isMissed ? 1 : 0;
    row.broken += report.outcome == Report::Broken || report.outcome == Report::Trouble ? 1 : 0;
    row.lost += report.outcome == Report::Lost ? 1 : 0;
    row.struck[static_cast<std::size_t>(point.fault.address.maker)] += isMissed ? 0 : 1;
}

void Figures::Row::operator+=(const Row& other) {
    calls += other.calls;
    points += other.points;
    visited += other.visited;
    missed += other.missed;
    broken += other.broken;
    lost += other.lost;
    for (std::size_t i = 0; i < std::size(struck); ++i) {
        struck[i] += other.struck[i];
    }
}

Figures::Row Figures::total() const {
    Row sum;
    for (const auto& [key, row] : _rows) {
        sum += row;
    }
    return sum;
}

void Figures::print(std::ostream& stream, const std::string& scenario, const std::string& mode, const Row& row) {
    stream << std::left << std::setw(20) << scenario << std::setw(11) << mode << std::right;
    for (const std::size_t number : {row.calls, row.points, row.visited, row.struck[0], row.struck[1], row.struck[2],
                                     row.missed, row.broken, row.lost}) {
        stream << std::setw(10) << number;
    }
    stream << "\n";
}

void Figures::print(std::ostream& stream) const {
    stream << std::left << std::setw(20) << "scenario" << std::setw(11) << "mode" << std::right;
    for (const char* title :
         {"calls", "points", "visited", "adapter", "helper", "listener", "missed", "violated", "code 9"}) {
        stream << std::setw(10) << title;
    }
    stream << "\n";
    for (const auto& [key, row] : _rows) {
        print(stream, scenarios()[key.first].name, modes[static_cast<std::size_t>(key.second)], row);
    }
    print(stream, "total", "", total());
    stream << _rehearsals << " undisturbed runs, " << _brokenRehearsals << " of them with a violation\n";
}

}  // namespace TulTest
