#ifndef TUL_TEST_RECORDED_NODE_H
#define TUL_TEST_RECORDED_NODE_H

#include <functional>
#include <optional>
#include <string>

#include "CmEventConsumer.h"
#include "ComponentLibrary.h"
#include "Listener.h"
#include "Recorder.h"
#include "RecordingFramework.h"
#include "ScriptedRunner.h"
#include "SshComponent.h"
#include "Station.h"

namespace TulTest {

/** Everything that writes records, fresh, in a framework with an empty node and an adapter that is scripted. */
class RecordedNode {
public:
    RecordedNode() { framework.givenEmptyNode(); }

    RecordingFramework framework;
    std::string revision = "1.8.0\n";                 /**< what the adapter answers when it is asked */
    std::function<void(const AdapterRun&)> duringRun; /**< may throw */

    Recorder recorder;
    TulSshdManagement::TulSshdManagementComponent component;
    TulSshdManagement::SshdVormaWrapper wrapper;
    TulSshdManagement::SshdConfigHandler reader;
    std::optional<Station> station{std::in_place}; /**< a path may destroy it */
    Listener listener;
    Tul::CmEventConsumer<Listener, 1> cmConsumer;
    ComponentLibrary library{framework}; /**< the built library, for what only its entry points reach */

private:
    std::string answer(const AdapterRun& run) const {
        if (duringRun) {
            duringRun(run);
        }
        return run.words.front() == "spi-revision" ? revision : "printed\n";
    }

    ScriptedRunner _runner{[this](const AdapterRun& run) { return answer(run); }};
};

}  // namespace TulTest

#endif
