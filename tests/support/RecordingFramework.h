#ifndef TUL_TEST_RECORDING_FRAMEWORK_H
#define TUL_TEST_RECORDING_FRAMEWORK_H

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "BryMgmtSpiComponent_2.h"
#include "BryMgmtSpiPortalAccessor.h"
#include "CmNotification.h"
#include "TemporaryDirectory.h"
#include "TulCommon_1.h"
#include "TulMoAttributeValue_3.h"
#include "TulOamSpiEventRouter_1.h"

namespace TulTest {

/** One log or trace record as it reached the framework. */
struct Record {
    std::string call;       /**< "log", "trace" or "traceV2" */
    std::string subsystem;  /**< traceV2 only */
    std::string sourceFile; /**< trace and traceV2 only */
    std::string function;
    int level = 0; /**< log: severity; trace: kind; traceV2: level */
    std::string format;
    std::string text;

    bool operator==(const Record&) const = default;
};

/** The values of one attribute in the framework's model. */
struct AttributeValues {
    TulOamSpiMoAttributeType_3 type;
    std::vector<std::int64_t> numbers;
    std::vector<std::string> texts; /**< used in place of the numbers by the type STRING */
};

/** A consumer as the router knows it. */
struct RegisteredConsumer {
    BryOamSpiEventConsumerHandleT handle = 0;
    BryOamSpiEventConsumerRecord* record = nullptr;
    std::string eventType;
    BryNameValuePairT** filter = nullptr; /**< null while not subscribed */
    std::vector<std::string> patterns;    /**< "name=value" of each pair, copied at subscription */
};

/**
 * A framework that does what it is told and remembers what it was asked: tables of the SPI, a small model, and a
 * recording adapter script. It attaches libtul_common for as long as it lives; one may live at a time.
 *
 * Set the public members first, then drive the component, then look at what was recorded.
 */
class RecordingFramework {
public:
    RecordingFramework();
    ~RecordingFramework();

    const BryMgmtSpiPortalAccessor* accessor() const;

    /** A model with SysM, SecM and Transport, and nothing of ours in it. */
    void givenEmptyNode();

    /** Adds an MO; its class path follows from its DN. */
    void givenMo(const std::string& dn, std::map<std::string, AttributeValues> attributes = {});

    /** Shell text that decides what the adapter script does after it has noted its arguments in "$@". */
    void givenAdapter(const std::string& shellText);

    /** The adapter prints this as its revision, and does nothing else. The default is "1.8.0". */
    void givenAdapterRevision(const std::string& revision);

    /** Delivers a notification to the consumer whose only pattern is this one; the callback's result. */
    BryReturnT notify(const std::string& pattern, CmNotification& notification);

    /** Every adapter run so far, its words joined by blanks, in order. Then forgets them. */
    std::vector<std::string> takeRuns();

    /** Every adapter run so far, word by word. */
    std::vector<std::vector<std::string>> runWords() const;

    /** Log records up to a severity, as "3 function: text", in order. */
    std::vector<std::string> logs(int upToSeverity = 6) const;

    /** The texts of all traces (level 14) of an operation, in order. */
    std::vector<std::string> traces(const std::string& function) const;

    /** Calls of the SPI that begin with a text, in order: operation, then its arguments. */
    std::vector<std::string> callsOf(const std::string& beginning) const;

    // What the framework offers.
    bool hasPortal1 = true;
    bool hasPortal3 = true;
    int logLevel = 6;
    std::map<std::string, BryReturnT> results; /**< operation (or "getInterface NAME") to the code it gives */
    std::set<std::string> nullInterfaces;      /**< found with code 0, but as a null pointer */
    std::map<std::string, std::map<std::string, AttributeValues>> model; /**< by DN */
    bool releasesContainers = true; /**< false: containers come with a null release function */

    /**
     * Operation to what happens when it is called, before its result is looked up; it may throw, and then the
     * operation does. "script" is the end of an adapter run: a throw stands for a runner that fails in a way of
     * its own.
     */
    std::map<std::string, std::function<void()>> during;
    std::function<void(TulMoAttributeValueContainer_3&)> spoilContainer; /**< before it is handed out */
    std::function<void(const TulCommonScriptRun_1&)> onScriptRan;        /**< on the thread of the run; may throw */
    std::function<void(const Record&)> onRecord;                         /**< after it was kept, on its thread */

    // What it has seen.
    std::vector<std::string> calls; /**< operation and arguments; adapter runs too, as "script" and their words */
    std::vector<Record> records;
    BryMgmtSpiComponent_2* component = nullptr; /**< null while none is registered */
    std::vector<RegisteredConsumer> consumers;
    int containersFetched = 0;
    int containersReleased = 0;

    RecordingFramework(const RecordingFramework&) = delete;
    RecordingFramework& operator=(const RecordingFramework&) = delete;

private:
    TemporaryDirectory _directory;
};

/** "ManagedElement=1,…": the DNs that tests use. */
inline const char* const sysMDn = "ManagedElement=1,SystemFunctions=1,SysM=1";
inline const char* const cliSshDn = "ManagedElement=1,SystemFunctions=1,SysM=1,CliSsh=1";
inline const char* const netconfSshDn = "ManagedElement=1,SystemFunctions=1,SysM=1,NetconfSsh=1";
inline const char* const sshDn = "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1";
inline const char* const oamCmDn = "ManagedElement=1,Transport=1,DiffServCategory=OamCM";

inline const char* const cliSshPattern = "^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$";
inline const char* const netconfSshPattern = "^ManagedElement=.*,SystemFunctions=.*,SysM=.*,NetconfSsh=.*$";
inline const char* const serviceCategoryPattern = "^ManagedElement=.*,Transport=.*,DiffServCategory=OamCM$";
inline const char* const sshPattern = "^ManagedElement=.*,SystemFunctions=.*,SecM=.*,Ssh=.*$";

AttributeValues enumeration(std::int64_t value);
AttributeValues uint8(std::int64_t value);
AttributeValues strings(const std::vector<std::string>& values);

/** A component configuration with management on or off. */
std::string configuration(bool managed, unsigned int cliPort = 2022, unsigned int netconfPort = 2830,
                          unsigned int renegotiationTime = 3600);

}  // namespace TulTest

#endif
