#ifndef TUL_NODE_EVENT_ROUTER_H
#define TUL_NODE_EVENT_ROUTER_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Journal.h"
#include "Notification.h"
#include "TransactionMaster.h"
#include "TulOamSpiEventRouter_1.h"

namespace TulNode {

/**
 * Takes commits to the consumers, each on a thread of its own.
 *
 * A consumer gets the commits in their order, and for each of its subscriptions that matches one call with the
 * matching changes; a subscription sees what is published after it was added. No lock is held during a call. What
 * waits is shared between the consumers, so a slow one costs a pointer per commit that concerns it, and holds up
 * nobody. Whom a commit concerns is found out within publish(): what patterns take is the publisher's time.
 *
 * Any thread, also from inside a callback; the exceptions are named. Refusals carry the codes of
 * TulOamSpiEventRouter_1.h.
 */
class EventRouter {
public:
    using Handle = BryOamSpiEventConsumerHandleT;

    static constexpr std::size_t manyWaiting = 10'000; /**< commits; a queue this long is warned of */

    explicit EventRouter(Journal& journal) : _journal(journal) {}

    /** Removes all consumers and waits for the callbacks under way. */
    ~EventRouter();

    Handle registerConsumer(BryOamSpiEventConsumerRecord* consumer);
    void addSubscription(Handle handle, const char* eventType, BryNameValuePairT** filter);
    void removeSubscription(Handle handle, const char* eventType, BryNameValuePairT** filter);

    /** Two consumers that unregister each other from inside their callbacks wait for each other. */
    void unregisterConsumer(Handle handle, BryOamSpiEventConsumerRecord* consumer);

    void publish(Commit commit);

    /** While held, commits wait in the queues and no callback begins. A router begins held. */
    void hold(bool held);

    /**
     * Waits until no callback is under way and, unless held, nothing waits. False: the time is over.
     * Not from inside a callback.
     */
    bool waitUntilIdle(std::chrono::milliseconds most);

    /** Removes all consumers; a line about each. Returns when no callback is under way. Not from a callback. */
    std::vector<std::string> removeAll();

    EventRouter(const EventRouter&) = delete;
    EventRouter& operator=(const EventRouter&) = delete;

private:
    struct Subscription {
        explicit Subscription(BryNameValuePairT** pairs) : given(pairs), filter(pairs) {}

        BryNameValuePairT** given; /**< identifies it; the consumer's, never read again */
        Filter filter;
        std::uint64_t after = 0; /**< the last commit that it does not see */
    };
    struct Waiting {
        std::uint64_t number;
        Commit commit;
    };
    struct Consumer {
        Consumer(BryOamSpiEventConsumerRecord* theRecord, Handle itsHandle) : record(theRecord), handle(itsHandle) {}

        bool wants(const std::vector<MoChange>& changes) const;

        BryOamSpiEventConsumerRecord* const record;
        const Handle handle;
        std::vector<std::shared_ptr<Subscription>> subscriptions;
        std::deque<Waiting> queue;
        bool registered = true;
        bool busy = false;
        bool finished = false;           /**< its thread is about to end */
        std::condition_variable mayWork; /**< its own: a commit wakes nobody whom it does not concern */
        std::thread worker;
    };
    using Lock = std::unique_lock<std::mutex>;
    using Consumers = std::map<Handle, std::unique_ptr<Consumer>>;

    Consumer& find(Handle handle);
    void remove(Lock& lock, Consumers::iterator position);
    void work(Consumer& consumer);
    void deliver(Lock& lock, Consumer& consumer, const Waiting& waiting);
    void call(const Consumer& consumer, Subscription& subscription, const std::vector<MoChange>& changes);
    void notify(const Consumer& consumer, Subscription& subscription, Notification& notification);
    void joinFinished();
    bool isIdle() const;

    Journal& _journal;
    std::mutex _mutex;
    std::condition_variable _changed; /**< for those who wait for consumers */
    Consumers _consumers;
    std::vector<std::unique_ptr<Consumer>> _leaving; /**< unregistered from inside their own callbacks */
    std::size_t _joining = 0;                        /**< threads that wait for the end of a consumer's */
    Handle _lastHandle = 0;
    std::uint64_t _published = 0;
    bool _held = true;
};

}  // namespace TulNode

#endif
