#ifndef TUL_TEST_SEQUENCES_COMPONENT_DRIVER_H
#define TUL_TEST_SEQUENCES_COMPONENT_DRIVER_H

#include <string>

#include "Commands.h"
#include "ComponentLibrary.h"
#include "Outcome.h"
#include "RecordingFramework.h"
#include "ScriptedRunner.h"
#include "Surroundings.h"

namespace Sequences {

/** Carries commands out on the built library, freshly loaded, and notes what they lead to. One at a time. */
class ComponentDriver {
public:
    ComponentDriver();

    Outcome perform(const Command& command);

    /** The same in a forked child, for a command that ends the process. The driver is of no use afterwards. */
    Outcome performInChild(const Command& command);

private:
    void answerAsToldTo();
    void answerGetInterface();
    std::string runAdapter(const TulTest::AdapterRun& run);
    unsigned long newestHandle();
    [[noreturn]] void beTheChild(const Command& command);
    void passOn();
    std::vector<std::string> takeJournal();
    std::string withCountedHandle(const std::string& line) const;

    std::string carryOut(const Init& init);
    std::string carryOut(const Start&);
    std::string carryOut(const Stop&);
    std::string carryOut(const Terminate&);
    std::string carryOut(const Notify& notification);
    template <class ChangeT>
    std::string carryOut(const ChangeT& change);

    TulTest::RecordingFramework _framework; /**< its list of calls is the journal: runs and records go there too */
    Surroundings _surroundings;
    TulTest::ScriptedRunner _runner;
    TulTest::ComponentLibrary _library{_framework};
    BryMgmtSpiComponent_2* _record = nullptr; /**< valid until the library is unloaded, registered or not */
    unsigned long _firstHandle;
    int _parent = -1; /**< in a child: where its journal goes */
};

}  // namespace Sequences

#endif
