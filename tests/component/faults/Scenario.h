#ifndef TUL_TEST_SCENARIO_H
#define TUL_TEST_SCENARIO_H

#include <ostream>
#include <string>
#include <vector>

#include "CmNotification.h"

namespace TulTest {

/** What the framework asks of the component. */
enum class Call { INIT, START, NOTIFY, STOP, TERMINATE };

/** One call, and the node that it comes to. Before NOTIFY and STOP the component was started. */
struct Scenario {
    const char* name;
    Call call;
    bool managed;
    bool full; /**< everything that the component looks at exists, both ports unlocked; else it is an empty node */
    const char* pattern = nullptr;                /**< NOTIFY: of the consumer */
    void (*build)(CmNotification&) = nullptr;     /**< NOTIFY */
    void (*buildNext)(CmNotification&) = nullptr; /**< NOTIFY: the notification that is delivered afterwards */
    const char* nextRun = nullptr;                /**< NOTIFY: how the only run that it leads to ends */

    friend std::ostream& operator<<(std::ostream& stream, const Scenario& row) { return stream << row.name; }
};

/** All of them. */
const std::vector<Scenario>& scenarios();

/** The one with that name. */
const Scenario& scenario(const std::string& name);

}  // namespace TulTest

#endif
