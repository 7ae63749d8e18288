#ifndef TUL_EVENT_CONSUMER_H
#define TUL_EVENT_CONSUMER_H

#ifdef NDEBUG
#error "NDEBUG must not be defined: the assertions below stop a release build, too"
#endif

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "AutoMemory.h"
#include "Logging.h"
#include "NameValuePair.h"
#include "Portal.h"
#include "TulOamSpiEventRouter_1.h"

namespace Tul {

/**
 * Connects a subscriber to the framework's event router.
 *
 * The router's callback is a plain function without user data. Therefore each instantiation has a callback and
 * an object slot of its own, and at most one object of an instantiation may live at a time: `instanceNumber`
 * makes the instantiations distinct. SubscriberT derives from this class and befriends it.
 *
 * start() and stop() are called by one thread at a time. The subscriber is called on the router's threads, does
 * its own locking and outlives the time between start and stop. A consumer is stopped before it is destroyed:
 * the destructor does not unregister.
 */
template <class SubscriberT, int instanceNumber>
class EventConsumer {
public:
    using CallbackT = void (SubscriberT::*)(const char* eventType, void* value);

    // The slot is claimed while the subscriber is still being built, which the check of casts objects to.
    __attribute__((no_sanitize("vptr"))) EventConsumer() : _portal(Portal::instance()) {
        assert(_instance == NULL);  // NOLINT(modernize-use-nullptr): the text is what operators know
        _instance = static_cast<SubscriberT*>(this);
    }

    virtual ~EventConsumer() { _instance = nullptr; }

    /**
     * Registers and subscribes. The filter is copied.
     *
     * Ends the process with abort() when the consumer is started already, or cannot register or subscribe:
     * a component that is deaf to changes must not look alive.
     */
    void start(const std::vector<NameValuePair>& filter, CallbackT callback, SubscriberT& subscriber,
               const char* eventType);

    /** Unsubscribes and unregisters; failures are traced and do not matter. Nothing happens when not started. */
    void stop();

    /** What the router calls. Always 0; no exception leaves it. */
    static BryReturnT notifyCallback(BryOamSpiEventConsumerHandleT handle, const char* eventType,
                                     BryNameValuePairT** filter, void* value);

    EventConsumer(const EventConsumer&) = delete;
    EventConsumer& operator=(const EventConsumer&) = delete;

private:
    BryNameValuePairT** copyOf(const std::vector<NameValuePair>& filter);

    static SubscriberT* _instance;

    AutoMemory _autoMemory;
    std::string _eventType;
    BryOamSpiEventConsumerHandleT _handle = 0;
    BryOamSpiEventConsumerRecord _consumerRecord{nullptr};
    bool _started = false;
    SubscriberT* _subscriber = nullptr;
    CallbackT _callback = nullptr;
    BryNameValuePairT** _filter = nullptr;
    Portal& _portal;
};

template <class SubscriberT, int instanceNumber>
SubscriberT* EventConsumer<SubscriberT, instanceNumber>::_instance = nullptr;

template <class SubscriberT, int instanceNumber>
void EventConsumer<SubscriberT, instanceNumber>::start(const std::vector<NameValuePair>& filter, CallbackT callback,
                                                       SubscriberT& subscriber, const char* eventType) {
    TUL_TRACE_ENTRY(Trace::Common, " >> ");
    if (_started) {
        std::abort();  // wanted without a message: a second start is a defect of the program, never a state
    }
    _eventType = eventType;
    _callback = callback;
    _subscriber = &subscriber;
    _consumerRecord.notify = notifyCallback;

    // No null test: the platform promises the router to everybody who depends on it.
    TulOamSpiEventRouter_1* const router = _portal.getEventRouter();
    if (router->registerConsumer(&_consumerRecord, &_handle) != BRY_OK) {
        TUL_ERROR(Trace::Common, "Could not register consumer");
        std::abort();
    }
    _filter = copyOf(filter);
    if (_filter == nullptr || router->addSubscription(_handle, _eventType.c_str(), _filter) != BRY_OK) {
        TUL_ERROR(Trace::Common, "Could not add subscription");
        std::abort();
    }
    _started = true;
    TUL_TRACE_EXIT(Trace::Common, " << ");
}

/** A null-terminated array of owned pairs; null when there is no memory for it. */
template <class SubscriberT, int instanceNumber>
BryNameValuePairT** EventConsumer<SubscriberT, instanceNumber>::copyOf(const std::vector<NameValuePair>& filter) {
    auto* const array = _autoMemory.malloc<BryNameValuePair*>(static_cast<unsigned int>(filter.size() + 1));
    for (std::size_t i = 0; array != nullptr && i < filter.size(); ++i) {
        auto* const pair = _autoMemory.newObj<NameValuePair>();
        *pair = filter[i];
        array[i] = pair;
    }
    return array;
}

template <class SubscriberT, int instanceNumber>
void EventConsumer<SubscriberT, instanceNumber>::stop() {
    TUL_TRACE_ENTRY(Trace::Common, " >> ");
    if (!_started) {
        TUL_TRACE_EXIT(Trace::Common, " << ");
        return;
    }
    TulOamSpiEventRouter_1* const router = _portal.getEventRouter();
    // Traces, not errors, on purpose: a router that is going down must not fill the log.
    if (router == nullptr || router->removeSubscription(_handle, _eventType.c_str(), _filter) != BRY_OK) {
        TUL_TRACE(Trace::Common, "Could not unregister event subscription, eventType %s", _eventType.c_str());
    }
    if (router == nullptr || router->unregisterConsumer(_handle, &_consumerRecord) != BRY_OK) {
        TUL_TRACE(Trace::Common, "Could not unregister event consumer, eventType %s", _eventType.c_str());
    }
    _started = false;
    _autoMemory.free();
    _filter = nullptr;
    TUL_TRACE_EXIT(Trace::Common, " << ");
}

template <class SubscriberT, int instanceNumber>
BryReturnT EventConsumer<SubscriberT, instanceNumber>::notifyCallback(BryOamSpiEventConsumerHandleT /*handle*/,
                                                                      const char* eventType,
                                                                      BryNameValuePairT** /*filter*/, void* value) {
    TUL_TRACE_ENTRY(Trace::Common, " >> ");
    assert(_instance);
    // Named first: in one expression g++ 12 with -fsanitize=undefined calls through an address that it never set.
    SubscriberT& subscriber = *_instance->_subscriber;
    const CallbackT callback = _instance->_callback;
    try {
        (subscriber.*callback)(eventType, value);
    } catch (const std::exception& exception) {
        TUL_WARNING(Trace::Common, "Exception thrown from event consumer :%s", exception.what());
    } catch (...) {
        TUL_WARNING(Trace::Common, "Unknown exception thrown from event consumer");
    }
    TUL_TRACE_EXIT(Trace::Common, " << ");
    return BRY_OK;
}

}  // namespace Tul

#endif
