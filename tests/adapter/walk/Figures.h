#ifndef TUL_WALK_FIGURES_H
#define TUL_WALK_FIGURES_H

#include <map>
#include <ostream>
#include <utility>

#include "Crew.h"

namespace TulTest {

/** What was visited, and what came of it. */
class Figures {
public:
    /** A scenario's undisturbed run makes so many calls; so many points of it are to be visited in a mode. */
    void expect(std::size_t scenario, Mode mode, std::size_t calls, std::size_t points);

    void count(const Point& point, const Report& report);
    void countRehearsal(bool isBroken);

    std::size_t visited() const { return total().visited; }
    bool isBroken() const { return _brokenRehearsals + total().broken > 0; }

    void print(std::ostream& stream) const;

private:
    struct Row {
        std::size_t calls = 0, points = 0, visited = 0, missed = 0, broken = 0, lost = 0;
        std::size_t struck[3] = {};  // of the adapter, of its helpers, of listeners
        void operator+=(const Row& other);
    };

    Row total() const;
    static void print(std::ostream& stream, const std::string& scenario, const std::string& mode, const Row& row);

    std::map<std::pair<std::size_t, Mode>, Row> _rows;
    std::size_t _rehearsals = 0;
    std::size_t _brokenRehearsals = 0;
};

}  // namespace TulTest

#endif
