#ifndef TUL_CM_EVENT_CONSUMER_H
#define TUL_CM_EVENT_CONSUMER_H

#include <list>
#include <string>
#include <vector>

#include "BryOamSpiCmEvent_Notification_1.h"
#include "EventConsumer.h"

namespace Tul {

/**
 * An event consumer for configuration changes: hands each notification, typed, to a member function of C.
 *
 * N tells the consumers of one subscriber class apart, see EventConsumer. C outlives the started period.
 */
template <class C, int N>
class CmEventConsumer : private EventConsumer<CmEventConsumer<C, N>, N> {
    using BaseT = EventConsumer<CmEventConsumer<C, N>, N>;
    friend BaseT;

public:
    using HandlerT = void (C::*)(const BryOamSpiCmEvent_Notification_1T& notification);

    /**
     * Subscribes to the changes of all MOs whose DN one of the regular expressions is found in. The framework
     * does the matching. An empty list subscribes to every change. Ends the process on failure.
     */
    void start(const std::list<std::string>& dnRegExps, HandlerT handler, C& subscriber);
    void start(const std::string& dnRegExp, HandlerT handler, C& subscriber);

    void stop();

    /** What the base calls. `value` is a notification: the subscription lets nothing else through. */
    void notifyCb(const char* eventType, void* value);

private:
    C* _cmSubscriber = nullptr;
    HandlerT _cmHandler = nullptr;
};

template <class C, int N>
void CmEventConsumer<C, N>::start(const std::list<std::string>& dnRegExps, HandlerT handler, C& subscriber) {
    TUL_TRACE_ENTRY(Trace::Common, " >> ");
    _cmHandler = handler;
    _cmSubscriber = &subscriber;
    std::vector<NameValuePair> filter;
    for (const std::string& dnRegExp : dnRegExps) {
        filter.emplace_back(BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1, dnRegExp);
    }
    BaseT::start(filter, &CmEventConsumer::notifyCb, *this, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1);
    TUL_TRACE_EXIT(Trace::Common, " << ");
}

template <class C, int N>
void CmEventConsumer<C, N>::start(const std::string& dnRegExp, HandlerT handler, C& subscriber) {
    start(std::list<std::string>{dnRegExp}, handler, subscriber);
}

template <class C, int N>
void CmEventConsumer<C, N>::stop() {
    TUL_TRACE_ENTRY(Trace::Common, " >> ");
    BaseT::stop();
    TUL_TRACE_EXIT(Trace::Common, " << ");
}

template <class C, int N>
void CmEventConsumer<C, N>::notifyCb(const char* /*eventType*/, void* value) {
    TUL_TRACE_ENTRY(Trace::Common, " >> ");
    (_cmSubscriber->*_cmHandler)(*static_cast<const BryOamSpiCmEvent_Notification_1T*>(value));
    TUL_TRACE_EXIT(Trace::Common, " << ");
}

}  // namespace Tul

#endif
