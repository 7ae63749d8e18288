#include "ComponentDriver.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "BryMgmtSpiPortal_1.h"
#include "TulException.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace Sequences {

namespace {

/** Between the lines that a child writes, as a line may contain others. */
constexpr char lineEnd = '\001';

TulTest::CmNotification recordOf(const Notify& notification) {
    TulTest::CmNotification record;
    for (const Event& event : notification.events) {
        record.event(event.dn ? event.dn->c_str() : nullptr, CmEventType{event.type});
        for (const EventAttribute& attribute : event.attributes) {
            std::vector<std::int64_t> values;
            if (attribute.hasValues) {
                values.assign(std::max(attribute.count, 1U), attribute.value + 1);
                values.front() = attribute.value;
            }
            record.attribute(attribute.name ? attribute.name->c_str() : nullptr,
                             TulOamSpiMoAttributeType_3{attribute.type}, attribute.count, values);
        }
        if (!event.hasAttributes) {
            record.withoutAttributeArray();
        }
    }
    if (!notification.hasEvents) {
        record.withoutEventArray();
    }
    return record;
}

/** The platform looks up its log and trace services when it first needs them; that is not the component's doing. */
bool isOfThePlatform(const std::string& line) {
    return line.starts_with("getInterface (null) ");
}

std::string everythingFrom(int descriptor) {
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(descriptor, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    close(descriptor);
    return text;
}

void writeTo(int descriptor, const std::string& text) {
    if (write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        _exit(2);
    }
}

}  // namespace

ComponentDriver::ComponentDriver() : _runner([this](const TulTest::AdapterRun& run) { return runAdapter(run); }) {
    _framework.onRecord = [this](const TulTest::Record& record) {
        if (record.call == "log") {
            _framework.calls.push_back("log " + std::to_string(record.level) + " " + record.function + ": " +
                                       record.text);
            passOn();
        }
    };
    _framework.model = _surroundings.mos;
    answerAsToldTo();
    _firstHandle = newestHandle();
    _framework.calls.clear();
}

void ComponentDriver::answerAsToldTo() {
    for (const char* operation :
         {"registerComponent", "findInstances", "getAttribute", "newTransaction", "createMo", "deleteMo", "commit",
          "registerConsumer", "addSubscription", "removeSubscription", "unregisterConsumer"}) {
        _framework.during[operation] = [this, operation] {
            _framework.results[operation] = _surroundings.failureOf(operation).value_or(BRY_OK);
            passOn();
        };
    }
    _framework.during["getInterface"] = [this] { answerGetInterface(); };
}

void ComponentDriver::answerGetInterface() {
    std::istringstream words(_framework.calls.back());
    std::string name;
    words >> name >> name >> name;
    passOn();
    const std::string operation = "getInterface " + name;
    const auto failure = _surroundings.failureOf(operation);
    _framework.results.erase(operation);
    _framework.nullInterfaces.erase(name);
    if (failure == BRY_OK) {
        _framework.nullInterfaces.insert(name);
    } else if (failure) {
        _framework.results[operation] = *failure;
    }
}

std::string ComponentDriver::runAdapter(const TulTest::AdapterRun& run) {
    std::string line = "run " + std::to_string(run.timeout);
    for (const std::string& word : run.words) {
        line += " [" + word + "]";
    }
    _framework.calls.push_back(line);
    passOn();
    const AdapterDoes& adapter = _surroundings.adapter(run.words.at(0));
    switch (adapter.ending) {
        case Ending::TUL_EXCEPTION:
            throw Tul::TulException("%s", adapter.text.c_str());
        case Ending::STANDARD_EXCEPTION:
            throw std::runtime_error(adapter.text);
        case Ending::INTEGER:
            throw 7;
        default:
            return adapter.text;
    }
}

/** The framework counts on from one sequence to the next. */
unsigned long ComponentDriver::newestHandle() {
    const auto* portal = static_cast<const BryMgmtSpiPortal_1*>(_framework.accessor()->getPortal("1"));
    void* master = nullptr;
    portal->getInterface(TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1", &master);
    TulOamSpiTransactionHandleT handle = 0;
    static_cast<const TulOamSpiTransactionMaster_1*>(master)->newTransaction(1, 0, &handle);
    return handle;
}

Outcome ComponentDriver::perform(const Command& command) {
    Outcome outcome;
    try {
        outcome.result = std::visit([this](const auto& what) { return carryOut(what); }, command.what);
    } catch (const Tul::TulException& thrown) {
        outcome.result = std::string("threw TulException ") + thrown.what();
    } catch (const std::exception& thrown) {
        outcome.result = std::string("threw std::exception ") + thrown.what();
    } catch (int thrown) {
        outcome.result = "threw " + std::to_string(thrown);
    }
    outcome.journal = takeJournal();
    if (_framework.containersFetched != _framework.containersReleased) {
        outcome.journal.emplace_back("a container was not given back");
    }
    return outcome;
}

Outcome ComponentDriver::performInChild(const Command& command) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        _parent = pipeEnds[1];
        beTheChild(command);
    }
    close(pipeEnds[1]);
    std::istringstream lines(everythingFrom(pipeEnds[0]));
    int status = 0;
    waitpid(child, &status, 0);
    Outcome outcome;
    for (std::string line; std::getline(lines, line, lineEnd);) {
        outcome.journal.push_back(line);
    }
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) {
        outcome.result = "abort";
    } else {
        outcome.journal.resize(std::max<std::size_t>(outcome.journal.size(), 1));
        outcome.result = std::exchange(outcome.journal.back(), "");
        outcome.journal.pop_back();
    }
    return outcome;
}

void ComponentDriver::beTheChild(const Command& command) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    std::signal(SIGABRT, SIG_DFL);
    const Outcome outcome = perform(command);
    for (const std::string& line : outcome.journal) {
        writeTo(_parent, line + lineEnd);
    }
    writeTo(_parent, outcome.result + lineEnd);
    _exit(0);
}

/** In a child: tells the parent at once, as the next step may be the last. */
void ComponentDriver::passOn() {
    if (_parent >= 0) {
        for (const std::string& line : takeJournal()) {
            writeTo(_parent, line + lineEnd);
        }
    }
}

std::vector<std::string> ComponentDriver::takeJournal() {
    std::vector<std::string> journal;
    for (const std::string& line : _framework.calls) {
        if (!isOfThePlatform(line)) {
            journal.push_back(withCountedHandle(line));
        }
    }
    _framework.calls.clear();
    _framework.records.clear();
    return journal;
}

/** Handles as this sequence counts them. */
std::string ComponentDriver::withCountedHandle(const std::string& line) const {
    const std::size_t blank = line.find(' ');
    const std::string operation = line.substr(0, blank);
    if (operation != "createMo" && operation != "deleteMo" && operation != "commit") {
        return line;
    }
    std::size_t length = 0;
    const unsigned long handle = std::stoul(line.substr(blank + 1), &length);
    return operation + " " + std::to_string(handle - _firstHandle) + line.substr(blank + 1 + length);
}

template <class ChangeT>
std::string ComponentDriver::carryOut(const ChangeT& change) {
    _surroundings.change(change);
    _framework.model = _surroundings.mos;
    _framework.logLevel = _surroundings.logLevel;
    return "done";
}

std::string ComponentDriver::carryOut(const Init& init) {
    _framework.hasPortal3 = init.hasPortal3;
    const bool isNull = init.document.form == Form::NULL_POINTER;
    const std::string text = textOf(init.document);
    const BryReturnT result = _library.init(isNull ? nullptr : text.c_str());
    _record = _framework.component == nullptr ? _record : _framework.component;
    return std::to_string(result);
}

std::string ComponentDriver::carryOut(const Start&) {
    return _record == nullptr ? "nobody is there" : std::to_string(_record->start(BRY_REASON_NORMAL));
}

std::string ComponentDriver::carryOut(const Stop&) {
    return _record == nullptr ? "nobody is there" : std::to_string(_record->stop(BRY_REASON_NORMAL));
}

std::string ComponentDriver::carryOut(const Terminate&) {
    _library.terminate();
    return "done";
}

std::string ComponentDriver::carryOut(const Notify& notification) {
    static const char* const patterns[] = {TulTest::cliSshPattern, TulTest::netconfSshPattern,
                                           TulTest::serviceCategoryPattern, TulTest::sshPattern};
    const char* const pattern = patterns[notification.consumer];
    const auto& consumers = _framework.consumers;
    const auto isSubscribed = [pattern](const TulTest::RegisteredConsumer& consumer) {
        return consumer.patterns.size() == 1 && consumer.patterns.front().ends_with(pattern);
    };
    if (std::none_of(consumers.begin(), consumers.end(), isSubscribed)) {
        return "nobody is there";
    }
    TulTest::CmNotification record = recordOf(notification);
    return std::to_string(_framework.notify(pattern, record));
}

}  // namespace Sequences
