#include "RecordingFramework.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "TulCommon_1.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulTest {

namespace {

RecordingFramework* current = nullptr;
std::mutex guard;
unsigned long lastHandle = 0;

std::string textOf(const char* text) {
    return text == nullptr ? "(null)" : text;
}

/** Notes the call and gives the code that the test wants for it. */
template <class... Words>
BryReturnT note(const std::string& operation, const Words&... words) {
    std::ostringstream line;
    line << operation;
    ((line << ' ' << words), ...);
    std::function<void()> interference;
    {
        const std::lock_guard lock(guard);
        current->calls.push_back(line.str());
        const auto found = current->during.find(operation);
        if (found != current->during.end()) {
            interference = found->second;
        }
    }
    if (interference) {
        interference();
    }
    const std::lock_guard lock(guard);
    const auto result = current->results.find(operation);
    return result == current->results.end() ? BRY_OK : result->second;
}

// Log and trace

std::int32_t getLevel() {
    return current->logLevel;
}

void keep(const Record& record) {
    {
        const std::lock_guard lock(guard);
        current->records.push_back(record);
    }
    if (current->onRecord) {
        current->onRecord(record);
    }
}

void log(const char* function, std::int32_t severity, std::int32_t category, const char* format, const char* text) {
    if (category != 1) {
        throw std::logic_error("a component logs with category 1");
    }
    keep({"log", "", "", function, severity, format, text});
}

void trace(const char* sourceFile, const char* function, std::int32_t line, std::int32_t kind, const char* format,
           const char* text) {
    if (line <= 0) {
        throw std::logic_error("a record has a source line");
    }
    keep({"trace", "", sourceFile, function, kind, format, text});
}

void traceV2(const char* subsystem, std::int32_t level, const char* sourceFile, const char* function,
             std::int32_t line, const char* format, const char* text) {
    if (line <= 0) {
        throw std::logic_error("a record has a source line");
    }
    keep({"traceV2", subsystem, sourceFile, function, level, format, text});
}

// Managed objects

std::string classPathOf(const std::string& dn) {
    std::istringstream parts(dn);
    std::string part;
    std::string path;
    while (std::getline(parts, part, ',')) {
        path += (path.empty() ? "" : ",") + part.substr(0, part.find('='));
    }
    return path;
}

/** A container that owns its values, the way a framework would hand one out. */
struct OwnedContainer : TulMoAttributeValueContainer_3 {
    std::vector<std::string> texts;
    std::vector<TulMoAttributeValue_3> storage;
};

void release(TulMoAttributeValueContainer_3* container) {
    ++current->containersReleased;
    delete static_cast<OwnedContainer*>(container);
}

OwnedContainer* containerOf(const AttributeValues& values) {
    auto* const container = new OwnedContainer;
    container->texts = values.texts;
    for (const std::string& text : container->texts) {
        container->storage.push_back(TulMoAttributeValue_3{.asString = text.c_str()});
    }
    for (const std::int64_t number : values.numbers) {
        container->storage.push_back(TulMoAttributeValue_3{.asInt64 = number});
    }
    container->type = values.type;
    container->nrOfValues = static_cast<std::uint32_t>(container->storage.size());
    container->values = container->storage.data();
    return container;
}

std::vector<OwnedContainer*> unreleasable;

BryReturnT getAttribute(TulOamSpiTransactionHandleT transaction, const char* dn, const char* attributeName,
                        TulMoAttributeValueResult_3* result) {
    const BryReturnT wanted = note("getAttribute", transaction, dn, attributeName);
    if (wanted != BRY_OK) {
        return wanted;
    }
    const auto mo = current->model.find(dn);
    if (mo == current->model.end()) {
        return BRY_NOT_FOUND;
    }
    const auto attribute = mo->second.find(attributeName);
    if (attribute == mo->second.end()) {
        return BRY_OK;  // it has no value: the container stays null
    }
    std::unique_ptr<OwnedContainer> container(containerOf(attribute->second));
    if (current->spoilContainer) {
        current->spoilContainer(*container);
    }
    if (!current->releasesContainers) {
        unreleasable.push_back(container.get());
    }
    *result = {current->releasesContainers ? release : nullptr, container.release()};
    ++current->containersFetched;
    return BRY_OK;
}

BryReturnT findInstances(TulOamSpiTransactionHandleT transaction, const char* classPath, TulOamSpiMoVisitor_3 visitor,
                         void* context) {
    const BryReturnT wanted = note("findInstances", transaction, classPath);
    if (wanted != BRY_OK) {
        return wanted;
    }
    for (const auto& [dn, attributes] : current->model) {
        if (classPathOf(dn) == classPath && !visitor(context, dn.c_str())) {
            break;
        }
    }
    return BRY_OK;
}

std::string textOf(TulMoNamedAttribute_3** attributes) {
    std::ostringstream text;
    for (; *attributes != nullptr; ++attributes) {
        const TulMoNamedAttribute_3& attribute = **attributes;
        text << attribute.name << ':' << attribute.value.type;
        for (std::uint32_t i = 0; i < attribute.value.nrOfValues; ++i) {
            text << '=' << attribute.value.values[i].asInt64;
        }
        text << ';';
    }
    return text.str();
}

BryReturnT setAttributes(TulOamSpiTransactionHandleT transaction, const char* dn,
                         TulMoNamedAttribute_3** attributes) {
    return note("setAttributes", transaction, dn, textOf(attributes));
}

BryReturnT createMo(TulOamSpiTransactionHandleT transaction, const char* parentDn, const char* className,
                    const char* keyName, const char* keyValue, TulMoNamedAttribute_3** attributes) {
    return note("createMo", transaction, parentDn, className, keyName, keyValue, textOf(attributes));
}

BryReturnT deleteMo(TulOamSpiTransactionHandleT transaction, const char* dn) {
    return note("deleteMo", transaction, dn);
}

BryReturnT newTransaction(TulLockPolicyT lockPolicy, unsigned int timeout, TulOamSpiTransactionHandleT* transaction) {
    *transaction = ++lastHandle;
    return note("newTransaction", lockPolicy, timeout);
}

BryReturnT commit(TulOamSpiTransactionHandleT transaction) {
    return note("commit", transaction);
}
BryReturnT abortTransaction(TulOamSpiTransactionHandleT transaction) {
    return note("abort", transaction);
}

// Event router

std::vector<RegisteredConsumer>::iterator consumerWith(BryOamSpiEventConsumerHandleT handle) {
    return std::find_if(current->consumers.begin(), current->consumers.end(),
                        [handle](const RegisteredConsumer& consumer) { return consumer.handle == handle; });
}

BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* record, BryOamSpiEventConsumerHandleT* handle) {
    const BryReturnT wanted = note("registerConsumer");
    if (wanted == BRY_OK) {
        *handle = ++lastHandle;
        current->consumers.push_back({*handle, record, "", nullptr, {}});
    }
    return wanted;
}

BryReturnT addSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter) {
    std::vector<std::string> patterns;
    std::string words;
    for (BryNameValuePairT** pair = filter; *pair != nullptr; ++pair) {
        patterns.push_back(std::string((*pair)->name) + "=" + (*pair)->value);
        words += " " + patterns.back();
    }
    const BryReturnT wanted = note("addSubscription", std::string(eventType) + words);
    const auto consumer = consumerWith(handle);
    if (wanted == BRY_OK && consumer != current->consumers.end()) {
        consumer->eventType = eventType;
        consumer->filter = filter;
        consumer->patterns = patterns;
    }
    return wanted;
}

BryReturnT removeSubscription(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                              BryNameValuePairT** filter) {
    const auto consumer = consumerWith(handle);
    const bool known = consumer != current->consumers.end() && consumer->filter == filter;
    std::string words;
    for (std::size_t i = 0; known && i < consumer->patterns.size(); ++i) {
        words += " " + consumer->patterns[i];
    }
    const BryReturnT wanted = note("removeSubscription", std::string(eventType) + (known ? words : " unknown"));
    if (wanted == BRY_OK && known) {
        consumer->filter = nullptr;
    }
    return wanted;
}

BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT handle, BryOamSpiEventConsumerRecord* record) {
    const auto consumer = consumerWith(handle);
    const bool known = consumer != current->consumers.end() && consumer->record == record;
    const BryReturnT wanted = note("unregisterConsumer", known ? "known" : "unknown");
    if (wanted == BRY_OK && known) {
        current->consumers.erase(consumer);
    }
    return wanted;
}

// Portals

TulMwSpiLog_1 logTable{{"TulMwLogService", TUL_MW_SPI_LOG_NAME, "1"}, getLevel, log};
BryMwSpiTrace traceTable{{"BryMwTraceService", BRY_MW_SPI_TRACE_NAME, "2"}, trace, traceV2};
TulOamSpiManagedObject_3 managedObjectTable{{TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, "3"},
                                            getAttribute,
                                            findInstances,
                                            setAttributes,
                                            nullptr,
                                            nullptr,
                                            createMo,
                                            deleteMo};
TulOamSpiTransactionMaster_1 transactionMasterTable{
    {TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1"},
    newTransaction,
    commit,
    abortTransaction};
TulOamSpiEventRouter_1 eventRouterTable{{TUL_OAM_SPI_EVENT_SERVICE, TUL_OAM_SPI_EVENT_ROUTER_NAME, "1"},
                                        nullptr,
                                        registerConsumer,
                                        addSubscription,
                                        removeSubscription,
                                        unregisterConsumer};

BryReturnT getInterface(const char* componentName, const char* interfaceName, const char* interfaceVersion,
                        void** interfaceRecord) {
    static const std::map<std::string, void*> tables{{TUL_MW_SPI_LOG_NAME, &logTable},
                                                     {BRY_MW_SPI_TRACE_NAME, &traceTable},
                                                     {TUL_OAM_SPI_MANAGED_OBJECT_NAME, &managedObjectTable},
                                                     {TUL_OAM_SPI_TRANSACTION_MASTER_NAME, &transactionMasterTable},
                                                     {TUL_OAM_SPI_EVENT_ROUTER_NAME, &eventRouterTable}};
    note("getInterface", textOf(componentName), interfaceName, textOf(interfaceVersion));
    const auto wanted = current->results.find("getInterface " + std::string(interfaceName));
    if (wanted != current->results.end()) {
        return wanted->second;
    }
    const auto table = tables.find(interfaceName);
    if (table == tables.end()) {
        return BRY_NOT_FOUND;
    }
    *interfaceRecord = current->nullInterfaces.contains(interfaceName) ? nullptr : table->second;
    return BRY_OK;
}

BryReturnT registerComponent(BryMgmtSpiComponent_2* component) {
    const BryReturnT wanted = note("registerComponent", component->componentName);
    if (wanted == BRY_OK) {
        current->component = component;
    }
    return wanted;
}

BryReturnT unregisterComponent(BryMgmtSpiComponent_2* component) {
    note("unregisterComponent", component->componentName);
    current->component = nullptr;
    return BRY_OK;
}

BryMgmtSpiPortal_1 portal1{{"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "1"}, getInterface};
BryMgmtSpiPortal_3 portal3{
    {"TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"}, nullptr, nullptr, registerComponent, unregisterComponent};

void* getPortal(const char* interfaceVersion) {
    note("getPortal", interfaceVersion);
    if (std::string(interfaceVersion) == "1") {
        return current->hasPortal1 ? &portal1 : nullptr;
    }
    return std::string(interfaceVersion) == "3" && current->hasPortal3 ? &portal3 : nullptr;
}

const BryMgmtSpiPortalAccessor portalAccessor{getPortal};

void scriptRan(const TulCommonScriptRun_1* run) {
    std::string words;
    for (const char* const* word = run->arguments; *word != nullptr; ++word) {
        words += (words.empty() ? "" : " ") + std::string(*word);
    }
    note("script", words);
    if (current->onScriptRan) {
        current->onScriptRan(*run);
    }
}

/** libtul_common finds its interfaces whatever portals the component is offered. */
void* getPlatformPortal(const char* interfaceVersion) {
    return std::string(interfaceVersion) == "1" ? static_cast<void*>(&portal1) : &portal3;
}

const BryMgmtSpiPortalAccessor platformAccessor{getPlatformPortal};

}  // namespace

RecordingFramework::RecordingFramework() {
    if (current != nullptr) {
        throw std::logic_error("one framework at a time");
    }
    current = this;
    givenAdapterRevision("1.8.0");
    _directory.writeScript("vorma", "cd '" + _directory.path().string() +
                                        "'\n"
                                        "{ for word; do printf '%s\\001' \"$word\"; done; echo; } >> runs\n"
                                        ". ./behaviour");
    const std::string scripts = _directory.path().string();
    const TulCommonSettings_1 settings{&platformAccessor, scripts.c_str(), scriptRan};
    if (tulCommonAttach(&settings) != BRY_OK) {
        throw std::logic_error("libtul_common is attached already");
    }
}

RecordingFramework::~RecordingFramework() {
    tulCommonDetach();
    for (OwnedContainer* container : unreleasable) {
        delete container;
    }
    unreleasable.clear();
    current = nullptr;
}

const BryMgmtSpiPortalAccessor* RecordingFramework::accessor() const {
    return &portalAccessor;
}

void RecordingFramework::givenEmptyNode() {
    model.clear();
    for (const char* dn : {"ManagedElement=1", "ManagedElement=1,SystemFunctions=1", sysMDn,
                           "ManagedElement=1,SystemFunctions=1,SecM=1", "ManagedElement=1,Transport=1"}) {
        givenMo(dn);
    }
}

void RecordingFramework::givenMo(const std::string& dn, std::map<std::string, AttributeValues> attributes) {
    model[dn] = std::move(attributes);
}

void RecordingFramework::givenAdapter(const std::string& shellText) {
    std::ofstream(_directory.path() / "behaviour") << shellText << "\n";
}

void RecordingFramework::givenAdapterRevision(const std::string& revision) {
    givenAdapter("[ \"$1\" != spi-revision ] || printf '%s\\n' '" + revision + "'");
}

BryReturnT RecordingFramework::notify(const std::string& pattern, CmNotification& notification) {
    const std::string wanted = std::string(BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1) + "=" + pattern;
    for (const RegisteredConsumer& consumer : consumers) {
        if (consumer.patterns == std::vector<std::string>{wanted}) {
            return consumer.record->notify(consumer.handle, consumer.eventType.c_str(), consumer.filter,
                                           notification.record());
        }
    }
    throw std::logic_error("no consumer is subscribed with " + pattern);
}

std::vector<std::vector<std::string>> RecordingFramework::runWords() const {
    std::vector<std::vector<std::string>> runs;
    std::ifstream file(_directory.path() / "runs");
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string word;
        runs.emplace_back();
        while (std::getline(words, word, '\001')) {
            runs.back().push_back(word);
        }
    }
    return runs;
}

std::vector<std::string> RecordingFramework::takeRuns() {
    std::vector<std::string> lines;
    for (const std::vector<std::string>& words : runWords()) {
        std::string line;
        for (const std::string& word : words) {
            line += (line.empty() ? "" : " ") + word;
        }
        lines.push_back(line);
    }
    std::filesystem::remove(_directory.path() / "runs");
    return lines;
}

std::vector<std::string> RecordingFramework::logs(int upToSeverity) const {
    std::vector<std::string> lines;
    for (const Record& record : records) {
        if (record.call == "log" && record.level <= upToSeverity) {
            lines.push_back(std::to_string(record.level) + " " + record.function + ": " + record.text);
        }
    }
    return lines;
}

std::vector<std::string> RecordingFramework::traces(const std::string& function) const {
    std::vector<std::string> lines;
    for (const Record& record : records) {
        if (record.call == "traceV2" && record.level == BRY_TRACE_LEVEL_TRACE && record.function == function) {
            lines.push_back(record.text);
        }
    }
    return lines;
}

std::vector<std::string> RecordingFramework::callsOf(const std::string& beginning) const {
    std::vector<std::string> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&beginning](const std::string& call) { return call.starts_with(beginning); });
    return found;
}

AttributeValues enumeration(std::int64_t value) {
    return {TUL_MO_TYPE_ENUMERATION_3, {value}, {}};
}
AttributeValues uint8(std::int64_t value) {
    return {TUL_MO_TYPE_UINT8_3, {value}, {}};
}
AttributeValues strings(const std::vector<std::string>& values) {
    return {TUL_MO_TYPE_STRING_3, {}, values};
}

std::string configuration(bool managed, unsigned int cliPort, unsigned int netconfPort,
                          unsigned int renegotiationTime) {
    std::ostringstream text;
    text << "<TulConfiguration><TulSshdManager><sshdManagement>" << (managed ? "true" : "false")
         << "</sshdManagement><cliPort>" << cliPort << "</cliPort><netconfPort>" << netconfPort
         << "</netconfPort><renegotiationTime>" << renegotiationTime
         << "</renegotiationTime></TulSshdManager></TulConfiguration>";
    return text.str();
}

}  // namespace TulTest
