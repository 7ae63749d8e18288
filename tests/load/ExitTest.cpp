#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ostream>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"

namespace {

using namespace TulTest;

struct Stage {
    const char* name;
    std::function<void(ComponentLibrary&)> reach;

    friend std::ostream& operator<<(std::ostream& stream, const Stage& row) { return stream << row.name; }
};

class ExitDeathTest : public testing::TestWithParam<Stage> {
public:
    ExitDeathTest() { framework.givenEmptyNode(); }

    RecordingFramework framework;
    ComponentLibrary library{framework};
};

TEST_P(ExitDeathTest, TheProcessEndsInOrderWithTheLibraryLoaded) {
    EXPECT_EXIT((GetParam().reach(library), std::exit(7)), testing::ExitedWithCode(7), "^$");
}

void init(ComponentLibrary& library) {
    library.init(configuration(true));
}
void start(ComponentLibrary& library) {
    init(library);
    library.start();
}
void stop(ComponentLibrary& library) {
    start(library);
    library.stop();
}
void terminate(ComponentLibrary& library) {
    stop(library);
    library.terminate();
}
void terminateWhileRunning(ComponentLibrary& library) {
    start(library);
    library.terminate();
}

INSTANTIATE_TEST_SUITE_P(After, ExitDeathTest,
                         testing::Values(Stage{"Loading", [](ComponentLibrary&) {}}, Stage{"Init", init},
                                         Stage{"Start", start}, Stage{"Stop", stop}, Stage{"Terminate", terminate},
                                         Stage{"TerminateWhileRunning", terminateWhileRunning}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
