#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "Life.h"
#include "TulException.h"

namespace {

using namespace TulTest;
using testing::Contains;
using testing::IsEmpty;

// The runs of each call

const Lines runsOfStart{"clissh unlock port 2022", "netconfssh unlock port 2830", "spi-revision"};
const std::string renegotiation = " --renegotiationTime 3600";
const std::string lists = " --ciphers aes128-ctr,aes256-ctr --kexAlgorithms curve25519-sha256 --macs hmac-sha2-256";

Lines startWith(const std::string& batch) {
    Lines runs = runsOfStart;
    runs.push_back(batch);
    return runs;
}

const std::map<std::string, Lines> runsOf{{"Init", {}},
                                          {"StartOnAnEmptyNode", startWith("ssh --removeIpQoS" + renegotiation)},
                                          {"StartOnAFullNode", startWith("ssh --ipQos 46" + renegotiation + lists)},
                                          {"StartWithManagementOff", {"clissh lock", "netconfssh lock"}},
                                          {"CliSshChanged", {"clissh lock"}},
                                          {"NetconfSshChanged", {"netconfssh lock"}},
                                          {"CategoryCreated", {"ssh --ipQos 46"}},
                                          {"CategoryChanged", {"ssh --ipQos 46"}},
                                          {"CategoryDeleted", {"ssh --removeIpQoS"}},
                                          {"SshChanged", {"ssh" + lists}},
                                          {"Stop", {"clissh lock", "netconfssh lock"}},
                                          {"Terminate", {}}};

class ScriptRuns : public testing::TestWithParam<Scenario> {};

TEST_P(ScriptRuns, AreThoseOfTheTable) {
    Life life(GetParam());
    EXPECT_EQ(Outcome(), life.act());
    EXPECT_EQ(runsOf.at(GetParam().name), life.runs());
}

INSTANTIATE_TEST_SUITE_P(Component, ScriptRuns, testing::ValuesIn(scenarios()),
                         [](const auto& row) { return row.param.name; });

// The ways in which a run ends

enum class Kind { PLATFORM_EXCEPTION, OTHER_EXCEPTION, NO_EXCEPTION, OUTPUT };

struct Failure {
    const char* name;
    Kind kind;
    std::string text; /**< of the exception, or the output */

    std::string end() const {
        switch (kind) {
            case Kind::PLATFORM_EXCEPTION:
                throw Tul::TulException("%s", text.c_str());
            case Kind::OTHER_EXCEPTION:
                throw std::runtime_error(text);
            case Kind::NO_EXCEPTION:
                throw 7;
            default:
                return text;
        }
    }

    /** An answer to the revision query that stands for 0.0.0; every answer but an exception of its own is kept. */
    bool losesRevision() const {
        return kind == Kind::PLATFORM_EXCEPTION || (kind == Kind::OUTPUT && !text.starts_with("1.8.0"));
    }

    friend std::ostream& operator<<(std::ostream& stream, const Failure& row) { return stream << row.name; }
};

const std::string mebibyte(1024 * 1024, 'x');

const Failure failures[] = {
    {"NotRun", Kind::PLATFORM_EXCEPTION, "Script /x/vorma cannot be run: No such file or directory"},
    {"ExitCode", Kind::PLATFORM_EXCEPTION, "Script /x/vorma exited with 3: broken %s%n"},
    {"Signal", Kind::PLATFORM_EXCEPTION, "Script /x/vorma was ended by signal 9"},
    {"TimeOut", Kind::PLATFORM_EXCEPTION, "Script /x/vorma was still running after 30000 ms"},
    {"OtherException", Kind::OTHER_EXCEPTION, "oh"},
    {"Integer", Kind::NO_EXCEPTION, ""},
    {"EmptyOutput", Kind::OUTPUT, ""},
    {"HugeOutput", Kind::OUTPUT, mebibyte},
    {"HugeOutputAfterTheRevision", Kind::OUTPUT, "1.8.0\n" + mebibyte},
};

// What is laid down for them

struct Prediction {
    Lines journal{};
    std::string thrown{};
    bool revisionLost = false;
};

const char* const tooOldForDscp =
    "4 setDscp: IPQoS configuration is not applied on TUL SSHD. vorma spi-revision must be >= 1.7.0.";
const char* const tooOldForTime =
    "4 setRenegotiationtime: Renegotiation configuration is not applied. Vorma spi-revision must be >= 1.8.0.";
const char* const tooOldForCiphers =
    "4 setCiphers: Cipher suite configuration is not applied. vorma spi-revision must be >= 1.7.0.";

/** The operation that makes a run, and catches all that is a std::exception; the revision query only the platform's.
 */
std::string operationOf(const std::string& run) {
    if (run.starts_with("run: ssh ")) {
        return "invokeVorma";
    }
    return run.ends_with(" lock") ? "disablePorts" : "enablePorts";
}

/** The journal of an undisturbed call, changed by the failure of its n-th run, or of all from there on. */
class Predictor {
public:
    Predictor(const Scenario& scenario, const Failure& failure) : _scenario(scenario), _failure(failure) {}

    Prediction predict(const Lines& undisturbed, unsigned int first, Persistence persistence) {
        unsigned int run = 0;
        for (const std::string& line : undisturbed) {
            if (_prediction.revisionLost && line.starts_with("run: ssh ")) {
                addIf(_scenario.full, tooOldForCiphers);
                continue;  // nothing could be queued
            }
            _prediction.journal.push_back(line);
            const bool failing = line.starts_with("run: ") && isHit(++run, first, persistence);
            if (failing && !goesOnAfter(line)) {
                break;
            }
        }
        return _prediction;
    }

private:
    void addIf(bool condition, const std::string& line) {
        if (condition) {
            _prediction.journal.push_back(line);
        }
    }

    bool goesOnAfter(const std::string& run) {
        const bool isQuery = run == "run: spi-revision";
        if (_failure.kind == Kind::NO_EXCEPTION || (isQuery && _failure.kind == Kind::OTHER_EXCEPTION)) {
            const bool warns = _scenario.call == Call::NOTIFY;
            addIf(warns, "4 notifyCallback: Unknown exception thrown from event consumer");
            _prediction.thrown = warns ? "" : _failure.kind == Kind::NO_EXCEPTION ? "integer" : _failure.text;
            return false;
        }
        if (isQuery) {
            answerQuery();
        } else {
            addIf(_failure.kind != Kind::OUTPUT, "3 " + operationOf(run) + ": " + _failure.text);
        }
        return true;
    }

    void answerQuery() {
        if (!_failure.losesRevision()) {
            return;
        }
        _prediction.revisionLost = true;
        const bool isText = _failure.kind == Kind::OUTPUT && !_failure.text.empty();
        addIf(_failure.kind == Kind::PLATFORM_EXCEPTION, "4 getVormaSpiRevision: " + _failure.text);
        addIf(isText, "4 fromString: Failed to parse vorma spi-revision: '" + _failure.text + "'");
        addIf(true, tooOldForDscp);
        addIf(true, tooOldForTime);
    }

    const Scenario& _scenario;
    const Failure& _failure;
    Prediction _prediction;
};

class ScriptFaults : public testing::TestWithParam<std::tuple<Scenario, Failure, Persistence>> {
public:
    const Scenario& call = std::get<0>(GetParam());
    const Failure& failure = std::get<1>(GetParam());
    const Persistence persistence = std::get<2>(GetParam());

    Lines undisturbed() const {
        Life life(call);
        life.act();
        return life.journal;
    }

    void failRun(unsigned int n, const Lines& before) {
        Life life(call);
        const Prediction predicted = Predictor(call, failure).predict(before, n, persistence);
        life.adapter.fail(n, persistence, [this] { return failure.end(); });
        EXPECT_EQ(predicted.thrown.empty() ? Outcome() : Outcome::ofThrown(predicted.thrown), life.act());
        EXPECT_EQ(predicted.journal, life.journal);
        expectFlags(life, predicted, n);
        if (predicted.revisionLost) {
            expectRefusalsFromNowOn(life);
        } else {
            expectRecovery(life);
        }
    }

    /** Started is set before the batch, and cleared last. */
    void expectFlags(const Life& life, const Prediction& predicted, unsigned int n) const {
        const bool complete = predicted.thrown.empty();
        const bool isLastRun = n == runsOf.at(call.name).size();
        const bool runsOn = call.call == Call::STOP ? !complete : call.managed && (complete || isLastRun);
        EXPECT_EQ(runsOn, life.component.isStarted());
        EXPECT_EQ(runsOn && call.call != Call::STOP ? 4u : 0u, life.subscribed());
    }

    /** The answer is kept: the adapter is not asked again, and refuses every setting as long as the component lives.
     */
    static void expectRefusalsFromNowOn(Life& life) {
        life.adapter.heal();
        life.journal.clear();
        CmNotification change;
        change.changed(oamCmDn);
        EXPECT_EQ(BRY_OK, life.framework.notify(serviceCategoryPattern, change));
        EXPECT_THAT(life.runs(), IsEmpty());
        EXPECT_THAT(life.journal, Contains(tooOldForDscp));
        EXPECT_EQ(BRY_OK, life.component.stop(BRY_REASON_NORMAL));
        EXPECT_EQ(Lines({"clissh lock", "netconfssh lock"}), life.runs());
        life.component.lcmTerminate();
        EXPECT_THAT(life.framework.consumers, IsEmpty());
    }

    void expectRecovery(Life& life) const {
        if (call.call == Call::NOTIFY) {
            life.adapter.heal();
            expectSameAgain(life);
            life.expectNextNotification();
        }
        life.expectUsable();
    }

    /** A port's state is known already, whatever became of the run; a batch that failed is dropped, not repeated. */
    void expectSameAgain(Life& life) const {
        life.journal.clear();
        EXPECT_EQ(Outcome(), life.act());
        const bool isPort = runsOf.at(call.name).front().ends_with(" lock");
        EXPECT_EQ(isPort ? Lines() : runsOf.at(call.name), life.runs());
    }
};

TEST_P(ScriptFaults, LeadToTheRecordsAndLeaveTheComponentUsable) {
    const Lines before = undisturbed();
    const std::size_t count = runsOf.at(call.name).size();
    for (unsigned int n = 1; n <= count; ++n) {
        SCOPED_TRACE("run " + std::to_string(n));
        failRun(n, before);
    }
}

std::vector<Scenario> scenariosWithRuns() {
    std::vector<Scenario> rows = scenarios();
    std::erase_if(rows, [](const Scenario& row) { return runsOf.at(row.name).empty(); });
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Component, ScriptFaults,
                         testing::Combine(testing::ValuesIn(scenariosWithRuns()), testing::ValuesIn(failures),
                                          testing::Values(Persistence::ONCE, Persistence::FOR_EVER)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + std::get<1>(row.param).name +
                                    nameOf(std::get<2>(row.param));
                         });

}  // namespace
