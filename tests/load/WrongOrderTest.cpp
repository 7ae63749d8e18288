#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <utility>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"

namespace {

using namespace TulTest;

const BryMgmtSpiPortalAccessor noPortals{[](const char*) -> void* { return nullptr; }};

enum class Entry { INIT, INIT_WITHOUT_CONFIGURATION, INIT_WITHOUT_ACCESSOR, START, STOP, TERMINATE };

const Entry entries[] = {
    Entry::INIT,     Entry::INIT_WITHOUT_CONFIGURATION, Entry::INIT_WITHOUT_ACCESSOR, Entry::START, Entry::STOP,
    Entry::TERMINATE};

/** What the entries owe their caller, whatever came before. */
class Model {
public:
    int call(Entry entry) {
        switch (entry) {
            case Entry::INIT:
                return std::exchange(_initialized, true) ? -1 : 0;
            case Entry::INIT_WITHOUT_CONFIGURATION:
                return _initialized ? -1 : -8;
            case Entry::INIT_WITHOUT_ACCESSOR:
                return -1;
            case Entry::START:
                _started = _started || _initialized;
                return _started ? 0 : -1;
            case Entry::STOP:
                _started = false;
                return 0;
            case Entry::TERMINATE:
                _initialized = false;
                return 0;
        }
        return 0;
    }

private:
    bool _initialized = false;
    bool _started = false;
};

/** The library, and the record that it was once registered with: a caller may have kept it. */
class Subject {
public:
    explicit Subject(RecordingFramework& framework) : _framework(framework), _library(framework) {}

    bool canBeCalled(Entry entry) const {
        return (entry != Entry::START && entry != Entry::STOP) || _record.has_value();
    }

    int call(Entry entry) {
        switch (entry) {
            case Entry::INIT:
                return kept(_library.init(configuration(true)));
            case Entry::INIT_WITHOUT_CONFIGURATION:
                return kept(_library.init(nullptr));
            case Entry::INIT_WITHOUT_ACCESSOR:
                return _library.init(nullptr, configuration(true).c_str());
            case Entry::START:
                return _record->start(BRY_REASON_NORMAL);
            case Entry::STOP:
                return _record->stop(BRY_REASON_NORMAL);
            case Entry::TERMINATE:
                _library.terminate();
                return 0;
        }
        return 0;
    }

private:
    int kept(int result) {
        _record = *_framework.component;
        return result;
    }

    RecordingFramework& _framework;
    ComponentLibrary _library;
    std::optional<BryMgmtSpiComponent_2> _record;
};

void expectCodes(const std::vector<Entry>& sequence) {
    RecordingFramework framework;
    framework.givenEmptyNode();
    Subject subject(framework);
    Model model;
    std::string soFar;
    for (const Entry entry : sequence) {
        if (subject.canBeCalled(entry)) {
            soFar += " " + std::to_string(static_cast<int>(entry));
            EXPECT_EQ(model.call(entry), subject.call(entry)) << "after the entries" << soFar;
        }
    }
}

struct Beginning {
    const char* name;
    std::vector<Entry> entries;

    friend std::ostream& operator<<(std::ostream& stream, const Beginning& row) { return stream << row.name; }
};

class WrongOrder : public testing::TestWithParam<Beginning> {};

/** Every two entries after the beginning, each of them twice, and then a stop. */
TEST_P(WrongOrder, GivesTheCodesThatAreLaidDownAndNeverCrashes) {
    for (const Entry first : entries) {
        for (const Entry second : entries) {
            std::vector<Entry> sequence = GetParam().entries;
            sequence.insert(sequence.end(), {first, first, second, second, Entry::STOP, Entry::TERMINATE});
            expectCodes(sequence);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(After, WrongOrder,
                         testing::Values(Beginning{"Loading", {}}, Beginning{"Init", {Entry::INIT}},
                                         Beginning{"Start", {Entry::INIT, Entry::START}},
                                         Beginning{"Stop", {Entry::INIT, Entry::START, Entry::STOP}},
                                         Beginning{"TerminateWhileRunning",
                                                   {Entry::INIT, Entry::START, Entry::TERMINATE}},
                                         Beginning{"Terminate", {Entry::INIT, Entry::TERMINATE}}),
                         [](const auto& row) { return row.param.name; });

TEST(PortalAccessor, WithoutPortalsIsRefused) {
    RecordingFramework framework;
    framework.givenEmptyNode();
    ComponentLibrary library(framework);
    EXPECT_EQ(-1, library.init(&noPortals, configuration(true).c_str()));
    library.terminate();
    EXPECT_EQ(BRY_OK, library.init(configuration(true)));
}

}  // namespace
