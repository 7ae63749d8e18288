#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "ComponentModel.h"
#include "SequenceGenerator.h"

namespace {

using namespace Sequences;

constexpr int sequenceCount = 500;

/** Something that a command leads to, and in how many of the sequences it must be seen at least. */
struct Branch {
    const char* name;
    int atLeast;
    std::function<bool(const Command&, const Outcome&)> isSeen;
};

bool hasLine(const Outcome& outcome, const std::string& beginning) {
    return std::any_of(outcome.journal.begin(), outcome.journal.end(),
                       [&beginning](const std::string& line) { return line.starts_with(beginning); });
}

auto line(const std::string& beginning) {
    return [beginning](const Command&, const Outcome& outcome) { return hasLine(outcome, beginning); };
}

auto result(const std::string& beginning) {
    return [beginning](const Command&, const Outcome& outcome) { return outcome.result.starts_with(beginning); };
}

auto abortAfter(const std::string& lastLine) {
    return [lastLine](const Command&, const Outcome& outcome) {
        return outcome.result == "abort" && outcome.journal.back().starts_with(lastLine);
    };
}

template <class CommandT>
auto answer(const std::string& wanted, const std::string& beginning = "") {
    return [=](const Command& command, const Outcome& outcome) {
        return std::holds_alternative<CommandT>(command.what) && outcome.result == wanted &&
               (beginning.empty() || hasLine(outcome, beginning));
    };
}

/** A notification that consumer 1 to 4 takes. */
auto notified(std::size_t consumer) {
    return [consumer](const Command& command, const Outcome& outcome) {
        const auto* const notification = std::get_if<Notify>(&command.what);
        return notification != nullptr && notification->consumer + 1 == consumer && outcome.result == "0";
    };
}

auto batchWith(const std::string& words) {
    return [words](const Command&, const Outcome& outcome) {
        const auto& journal = outcome.journal;
        return std::any_of(journal.begin(), journal.end(), [&words](const std::string& line) {
            return line.starts_with("run 30000 [ssh]") && line.find(words) != std::string::npos;
        });
    };
}

/** The first stop ended after the consumers and before the component counted as stopped. */
bool stopsAgain(const Command& command, const Outcome& outcome) {
    return std::holds_alternative<Stop>(command.what) && !outcome.journal.empty() &&
           outcome.journal.front() == "run 30000 [clissh] [lock]";
}

bool runsNothing(const Command& command, const Outcome& outcome) {
    return notified(3)(command, outcome) && outcome.journal.empty();
}

const Branch branches[] = {
    {"InitSucceeds", 300, answer<Init>("0")},
    {"InitFails", 100, answer<Init>("-1", "registerComponent")},
    {"InitWithNull", 10, answer<Init>("-8")},
    {"InitTwice", 100, line("log 3 initialize: Component already")},
    {"InitWithoutAPortal", 10,
     [](const Command& command, const Outcome& outcome) {
         return answer<Init>("-1")(command, outcome) && !hasLine(outcome, "registerComponent");
     }},
    {"DocumentBroken", 5, line("log 3 readComponentConfiguration: Failed")},
    {"DocumentWithoutASection", 5, line("log 3 readComponentConfiguration: No")},
    {"DocumentWithTwoSections", 5, line("log 3 readComponentConfiguration: Multiple")},
    {"ElementDuplicated", 30, line("log 3 getElementValue")},
    {"ElementMissing", 30, line("log 3 getUintValueFromCfg: 'renegotiationTime' tag does")},
    {"NumberMalformed", 20, line("log 3 getUintValueFromCfg: Problem in conversion")},

    {"StartSucceeds", 200, answer<Start>("0", "addSubscription")},
    {"StartWithManagementOff", 10, answer<Start>("0", "run 30000 [netconfssh] [lock]")},
    {"StartWhileStarted", 80, line("log 4 start: TulSshdManager already running")},
    {"StartWhileNotInitialized", 50, line("log 3 start: Component not initialized!")},
    {"StartWithoutManagedObjects", 5, line("log 3 start: Failed to getInterface (TulOamSpiManagedObject")},
    {"StartWithoutTransactions", 5, line("log 3 start: Failed to getInterface (TulOamSpiTransactionMaster")},
    {"StopSucceeds", 60, answer<Stop>("0", "removeSubscription")},
    {"StopWhileStopped", 80, line("log 4 stop: TulSshdManager is already stopped")},
    {"StopAfterAFailedStop", 1, stopsAgain},
    {"TerminateUnregisters", 50, answer<Terminate>("done", "unregisterComponent")},

    {"AbortForTheConsumer", 3, abortAfter("log 3 start: Could not register")},
    {"AbortForTheSubscription", 3, abortAfter("log 3 start: Could not add")},
    {"AnIntegerLeaves", 5, result("threw 7")},
    {"AnExceptionLeaves", 1, result("threw std::exception")},

    {"SysMMissing", 10, line("log 4 createMo: SysM Instance could not be found")},
    {"TransactionRefused", 5, line("log 3 createMo: New Transaction")},
    {"CreationRefused", 5, line("log 3 createMo: CliSsh Mo Creation")},
    {"CommitRefused", 2, line("log 3 createMo: Transaction commit")},
    {"MoDeleted", 5, line("deleteMo")},
    {"StateUnreadable", 20, line("log 4 getAdministrativeState")},
    {"SingleValueIsMany", 3, line("log 3 getAttr: Attribute is a sequence")},
    {"ListUnreadable", 3, line("log 4 fetchCipherConfiguration")},

    {"Notification1", 40, notified(1)},
    {"Notification2", 40, notified(2)},
    {"Notification3", 40, notified(3)},
    {"Notification4", 40, notified(4)},
    {"EventLocks", 15, answer<Notify>("0", "run 30000 [clissh] [lock]")},
    {"EventUnlocks", 4, answer<Notify>("0", "run 30000 [clissh] [unlock]")},
    {"EventWithNullDn", 10, line("log 3 onServiceCategoryMoChangeNotification: CM Event type, 3 received with NULL")},
    {"EventWithAWrongDn", 10,
     line("log 3 onServiceCategoryMoChangeNotification: CM Event type, 3 received with incorrect")},
    {"DscpAppliedByAnEvent", 10, line("log 6 onServiceCategoryMoChangeNotification: dscp value")},
    {"SshDeleted", 10, line("log 3 onSshMoCipherChangeNotification")},
    {"NothingToRun", 10, runsNothing},
    {"HandlerThrowsAnException", 1, line("log 4 notifyCallback: Exception")},
    {"HandlerThrowsAnInteger", 1, line("log 4 notifyCallback: Unknown exception")},

    {"BatchRuns", 150, line("run 30000 [ssh]")},
    {"BatchOfAlgorithms", 10, batchWith("[--ciphers] ")},
    {"BatchFails", 5, line("log 3 invokeVorma")},
    {"PortCallFails", 20, line("log 3 enablePorts")},
    {"QueryFails", 4, line("log 4 getVormaSpiRevision")},
    {"RevisionUnreadable", 10, line("log 4 fromString")},
    {"DscpRefused", 20, line("log 4 setDscp")},
    {"RenegotiationRefused", 30, line("log 4 setRenegotiationtime")},
    {"AlgorithmsRefused", 5, line("log 4 setCiphers")},
};

/** Every step of the same 500 sequences; the model alone is enough to tell what they come to. */
using Steps = std::vector<std::pair<Command, Outcome>>;

Steps stepsOf(const Sequence& sequence) {
    Steps steps;
    ComponentModel model;
    for (const Command& command : sequence.commands) {
        steps.emplace_back(command, model.perform(command));
        if (steps.back().second.result == "abort") {
            break;
        }
    }
    return steps;
}

std::vector<Steps> allSteps() {
    std::vector<Steps> all;
    rc::Random random(1);
    while (all.size() < sequenceCount) {
        all.push_back(stepsOf(sequences()(random.split()).value()));
    }
    return all;
}

/** In how many of the sequences a branch is seen. */
long countOf(const Branch& branch, const std::vector<Steps>& all) {
    const auto isSeenIn = [&branch](const Steps& steps) {
        return std::any_of(steps.begin(), steps.end(),
                           [&branch](const auto& step) { return branch.isSeen(step.first, step.second); });
    };
    return std::count_if(all.begin(), all.end(), isSeenIn);
}

/** One test for all rows: each program would make the same sequences again. */
TEST(Distribution, ComesToEveryBranch) {
    const std::vector<Steps> all = allSteps();
    for (const Branch& branch : branches) {
        const long seen = countOf(branch, all);
        RecordProperty(branch.name, static_cast<int>(seen));
        EXPECT_LE(branch.atLeast, seen) << branch.name;
    }
}

TEST(Distribution, IsOfTenToThirtyCommands) {
    std::size_t commands = 0;
    for (const Steps& steps : allSteps()) {
        commands += steps.size();
    }
    const std::size_t mean = commands / sequenceCount;
    EXPECT_LE(10U, mean);
    EXPECT_GE(30U, mean);
}

}  // namespace
