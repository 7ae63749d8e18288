#ifndef TUL_TEST_LIGHT_FRAMEWORK_H
#define TUL_TEST_LIGHT_FRAMEWORK_H

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <shared_mutex>
#include <string>

#include "BryMgmtSpiComponent_2.h"
#include "BryOamSpiCmEvent_Notification_1.h"
#include "TulOamSpiEventRouter_1.h"

namespace TulTest {

/** The consumers in the order in which the component registers them. */
enum ConsumerNumber : std::size_t { CLI_SSH, NETCONF_SSH, SERVICE_CATEGORY, SSH, CONSUMERS };

/**
 * A framework that adds next to no order between threads, so that it hides no race of the component from the thread
 * sanitizer: its interfaces take no lock and count with relaxed atomics.
 *
 * The router has the locks that its contract asks for and no others: a callback holds its consumer's lock shared,
 * and whoever changes the consumer holds it alone. So nothing is delivered once unregisterConsumer has returned,
 * and callbacks, also several of one consumer, are not ordered among each other.
 *
 * Attaches libtul_common for as long as it lives; one may live at a time.
 */
class LightFramework {
public:
    LightFramework();
    ~LightFramework();

    static const BryMgmtSpiPortalAccessor* accessor();

    /**
     * Hands a notification to a consumer. False: it is not subscribed, held back, or about to be changed.
     * Any thread, several at once.
     */
    bool deliver(std::size_t consumer, BryOamSpiCmEvent_Notification_1T* notification);

    /** Holds notifications of the last two consumers back: their handlers use what start still works with. */
    void hold(bool held);

    /** Written by bryLCMinit's thread. */
    BryMgmtSpiComponent_2* component = nullptr;

    std::atomic<unsigned> complaints{0}; /**< log records with the severity of a warning or worse */

    // Set before any thread is there; called on the thread that it happens on, without a lock of ours held.
    std::function<void(const std::string& text)> onLog;
    std::function<void(std::size_t consumer)> onSubscribed;

    LightFramework(const LightFramework&) = delete;
    LightFramework& operator=(const LightFramework&) = delete;

    // What the router's table does.
    BryReturnT registerConsumer(BryOamSpiEventConsumerRecord* record, BryOamSpiEventConsumerHandleT* handle);
    BryReturnT subscribe(BryOamSpiEventConsumerHandleT handle, const char* eventType, BryNameValuePairT** filter);
    BryReturnT unsubscribe(BryOamSpiEventConsumerHandleT handle);
    BryReturnT unregisterConsumer(BryOamSpiEventConsumerHandleT handle);

private:
    struct Slot {
        std::shared_mutex mutex;
        std::atomic<bool> isWanted{false}; /**< deliverers keep away, or a writer would wait for ever */
        BryOamSpiEventConsumerRecord* record = nullptr;
        std::string eventType;
        BryNameValuePairT** filter = nullptr; /**< null while not subscribed */
        bool held = false;
    };

    /** Changes a slot alone; BRY_INVALID_HANDLE for a number without one. */
    BryReturnT change(std::size_t number, const std::function<void(Slot&)>& what);

    std::array<Slot, CONSUMERS> _slots;
};

}  // namespace TulTest

#endif
