#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <ostream>
#include <vector>

#include "ComponentLibrary.h"
#include "RecordingFramework.h"
#include "ScriptedRunner.h"

namespace {

using namespace TulTest;

using Lines = std::vector<std::string>;

enum Entry { INIT_ON, INIT_OFF, INIT_NULL, INIT_BAD, START, STOP, TERMINATE, ENTRIES };

constexpr std::array<const char*, ENTRIES> names = {"init(on)", "init(off)", "init(null)", "init(bad)",
                                                    "start",    "stop",      "terminate"};

/** What a caller sees of the component after an entry. */
struct View {
    int code = 0;
    Lines runs;
    std::size_t consumers = 0;
    bool isRegistered = false;

    bool operator==(const View&) const = default;

    friend std::ostream& operator<<(std::ostream& stream, const View& view) {
        return stream << "code " << view.code << ", " << view.consumers << " consumers, "
                      << (view.isRegistered ? "" : "not ") << "registered, runs "
                      << testing::PrintToString(view.runs);
    }
};

/** The entries as they are laid down, in as few words as possible. */
class Model {
public:
    View call(Entry entry) {
        _view.runs.clear();
        _view.code = codeOf(entry);
        return _view;
    }

private:
    int codeOf(Entry entry) {
        switch (entry) {
            case START:
                return start();
            case STOP:
                return stop();
            case TERMINATE:
                _initialized = _view.isRegistered = false;
                return 0;
            default:
                _view.isRegistered = true;
                return init(entry);
        }
    }

    int init(Entry entry) {
        if (_initialized || entry == INIT_BAD) {
            return -1;
        }
        if (entry == INIT_NULL) {
            return -8;
        }
        _initialized = true;
        _managed = entry == INIT_ON;
        return 0;
    }

    int start() {
        if (_started || !_initialized) {
            return _started ? 0 : -1;
        }
        if (!_managed) {
            _view.runs = {"clissh lock", "netconfssh lock"};
            return 0;
        }
        _started = true;
        _view.consumers = 4;
        _view.runs = {"clissh unlock port 2022", "netconfssh unlock port 2830"};
        if (!_isRevisionKnown) {
            _view.runs.emplace_back("spi-revision");
        }
        _isRevisionKnown = true;
        _view.runs.emplace_back("ssh --removeIpQoS --renegotiationTime 3600");
        return 0;
    }

    int stop() {
        if (_started && _managed) {
            _view.runs = {"clissh lock", "netconfssh lock"};
            _view.consumers = 0;
        }
        _started = false;
        return 0;
    }

    View _view;
    bool _initialized = false;
    bool _managed = false;
    bool _started = false;
    bool _isRevisionKnown = false;
};

/** The built library, freshly loaded. */
class Subject {
public:
    Subject() { _framework.givenEmptyNode(); }

    /** A caller has the record from the first init on, and may keep it. */
    bool hasRecord() const { return _record.has_value(); }

    View call(Entry entry) {
        _runs.clear();
        const int code = codeOf(entry);
        if (_framework.component != nullptr) {
            _record = *_framework.component;
        }
        return {code, _runs, _framework.consumers.size(), _framework.component != nullptr};
    }

private:
    int codeOf(Entry entry) {
        switch (entry) {
            case START:
                return _record->start(BRY_REASON_NORMAL);
            case STOP:
                return _record->stop(BRY_REASON_NORMAL);
            case TERMINATE:
                _library.terminate();
                return 0;
            case INIT_NULL:
                return _library.init(nullptr);
            case INIT_BAD:
                return _library.init("<TulConfiguration>");
            default:
                return _library.init(configuration(entry == INIT_ON));
        }
    }

    std::string answer(const AdapterRun& run) {
        std::string line;
        for (const std::string& word : run.words) {
            line += (line.empty() ? "" : " ") + word;
        }
        _runs.push_back(line);
        return line == "spi-revision" ? "1.8.0\n" : "";
    }

    RecordingFramework _framework;
    Lines _runs;
    ScriptedRunner _runner{[this](const AdapterRun& run) { return answer(run); }};
    std::optional<BryMgmtSpiComponent_2> _record;
    ComponentLibrary _library{_framework};
};

/** False when the entries cannot be called in this order, because nobody has the record yet. */
bool expectAsLaidDown(const std::vector<Entry>& sequence) {
    Subject subject;
    Model model;
    std::string soFar;
    for (const Entry entry : sequence) {
        if ((entry == START || entry == STOP) && !subject.hasRecord()) {
            return false;
        }
        soFar += std::string(" ") + names[entry];
        EXPECT_EQ(model.call(entry), subject.call(entry)) << "after" << soFar;
    }
    return true;
}

/** Every sequence of four entries that begins with the same one. */
class EntrySequences : public testing::TestWithParam<int> {};

TEST_P(EntrySequences, OfFourGiveCodesRunsAndConsumersAsLaidDown) {
    int possible = 0;
    for (int number = 0; number < ENTRIES * ENTRIES * ENTRIES; ++number) {
        const std::vector<Entry> sequence{static_cast<Entry>(GetParam()), static_cast<Entry>(number / 49),
                                          static_cast<Entry>(number / 7 % 7), static_cast<Entry>(number % 7)};
        possible += expectAsLaidDown(sequence) ? 1 : 0;
        ASSERT_FALSE(HasFailure());
    }
    RecordProperty("sequences", possible);
    EXPECT_EQ(GetParam() < START ? 343 : GetParam() == TERMINATE ? 229 : 0, possible);
}

INSTANTIATE_TEST_SUITE_P(FirstEntry, EntrySequences, testing::Range(0, static_cast<int>(ENTRIES)),
                         [](const auto& row) { return std::to_string(row.param); });

// Longer ways on which the flags of one life meet the configuration of the next

struct LongWay {
    const char* name;
    std::vector<Entry> entries;

    friend std::ostream& operator<<(std::ostream& stream, const LongWay& row) { return stream << row.name; }
};

const LongWay longWays[] = {
    {"InitializedAgainWhileRunning", {INIT_ON, START, TERMINATE, INIT_ON, START, STOP, START, STOP, TERMINATE}},
    {"SwitchedOffWhileRunning", {INIT_ON, START, TERMINATE, INIT_OFF, START, STOP, STOP, START, TERMINATE}},
    {"SwitchedOnLater", {INIT_OFF, START, START, TERMINATE, INIT_ON, START, STOP, TERMINATE, START}},
    {"ConfiguredAtTheThirdTry", {INIT_BAD, START, INIT_NULL, START, INIT_ON, INIT_OFF, START, START, STOP}},
};

class LongWays : public testing::TestWithParam<LongWay> {};

TEST_P(LongWays, AreAsLaidDown) {
    EXPECT_TRUE(expectAsLaidDown(GetParam().entries));
}

INSTANTIATE_TEST_SUITE_P(Each, LongWays, testing::ValuesIn(longWays), [](const auto& row) { return row.param.name; });

TEST(EntrySequencesDeathTest, AConsumerThatIsStillSubscribedIsNotStartedAgain) {
    Subject subject;
    const auto startTwice = [&subject] {
        for (const Entry entry : {INIT_ON, START, TERMINATE, INIT_OFF, STOP, TERMINATE, INIT_ON, START}) {
            subject.call(entry);
        }
    };
    EXPECT_EXIT(startTwice(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
