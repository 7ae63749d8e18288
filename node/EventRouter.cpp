#include "EventRouter.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

std::string nameOf(EventRouter::Handle handle) {
    return "consumer " + std::to_string(handle);
}

}  // namespace

EventRouter::~EventRouter() {
    removeAll();
}

EventRouter::Handle EventRouter::registerConsumer(BryOamSpiEventConsumerRecord* consumer) {
    if (consumer == nullptr || consumer->notify == nullptr) {
        throw Refusal(BRY_INVALID_ARGUMENT, "the consumer or its notify function is a null pointer");
    }
    const Lock lock(_mutex);
    joinFinished();
    for (const auto& [handle, other] : _consumers) {
        if (other->record == consumer) {
            _journal.accuse("registers a consumer record twice");
            throw Refusal(BRY_ALREADY_EXISTS, "the record is registered already, as " + nameOf(handle));
        }
    }
    auto added = std::make_unique<Consumer>(consumer, _lastHandle + 1);
    try {
        added->worker = std::thread([this, &one = *added] { work(one); });
    } catch (const std::system_error& e) {
        throw Refusal(BRY_NO_RESOURCES, std::string("no thread for another consumer: ") + e.what());
    }
    _consumers.emplace(++_lastHandle, std::move(added));
    return _lastHandle;
}

EventRouter::Consumer& EventRouter::find(Handle handle) {
    const auto found = _consumers.find(handle);
    if (found == _consumers.end()) {
        throw Refusal(BRY_INVALID_HANDLE, nameOf(handle) + " is not registered");
    }
    return *found->second;
}

void EventRouter::addSubscription(Handle handle, const char* eventType, BryNameValuePairT** filter) {
    const std::string type = eventType == nullptr ? "" : eventType;
    if (type != BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1) {
        throw Refusal(BRY_INVALID_ARGUMENT, "there is no event type \"" + escape(type) +
                                                "\"; allowed: " BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1);
    }
    auto subscription = std::make_shared<Subscription>(filter);
    const Lock lock(_mutex);
    subscription->after = _published;
    find(handle).subscriptions.push_back(std::move(subscription));
}

void EventRouter::removeSubscription(Handle handle, const char* eventType, BryNameValuePairT** filter) {
    const std::string type = eventType == nullptr ? "" : eventType;
    const Lock lock(_mutex);
    auto& subscriptions = find(handle).subscriptions;
    const auto found = std::find_if(subscriptions.begin(), subscriptions.end(),
                                    [filter](const auto& one) { return one->given == filter; });
    if (found == subscriptions.end() || type != BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1) {
        throw Refusal(BRY_NOT_FOUND, nameOf(handle) + " has no subscription with that event type and filter");
    }
    subscriptions.erase(found);
}

void EventRouter::unregisterConsumer(Handle handle, BryOamSpiEventConsumerRecord* consumer) {
    Lock lock(_mutex);
    const auto found = _consumers.find(handle);
    if (found == _consumers.end() || found->second->record != consumer) {
        throw Refusal(BRY_INVALID_HANDLE, nameOf(handle) + " is not registered with that record");
    }
    remove(lock, found);
}

void EventRouter::remove(Lock& lock, Consumers::iterator position) {
    std::unique_ptr<Consumer> leaving = std::move(position->second);
    _consumers.erase(position);
    leaving->registered = false;
    leaving->queue.clear();
    leaving->mayWork.notify_one();
    _changed.notify_all();
    if (leaving->worker.get_id() == std::this_thread::get_id()) {
        _leaving.push_back(std::move(leaving));
        return;
    }
    ++_joining;
    lock.unlock();
    leaving->worker.join();
    lock.lock();
    --_joining;
    _changed.notify_all();
}

/** Asked once more when it is delivered: subscriptions may be gone by then. */
bool EventRouter::Consumer::wants(const std::vector<MoChange>& changes) const {
    const auto isWanted = [this](const MoChange& change) {
        return std::any_of(subscriptions.begin(), subscriptions.end(),
                           [&change](const auto& one) { return one->filter.matches(change.dn); });
    };
    return std::any_of(changes.begin(), changes.end(), isWanted);
}

void EventRouter::publish(Commit commit) {
    const Lock lock(_mutex);
    ++_published;
    for (const auto& [handle, consumer] : _consumers) {
        if (!consumer->wants(*commit)) {
            continue;
        }
        consumer->queue.push_back({_published, commit});
        consumer->mayWork.notify_one();
        if (consumer->queue.size() == manyWaiting) {
            _journal.log(Warning, "publish", nameOf(handle) + " is slow: many notifications wait for it");
        }
    }
}

void EventRouter::hold(bool held) {
    const Lock lock(_mutex);
    _held = held;
    for (const auto& [handle, consumer] : _consumers) {
        consumer->mayWork.notify_one();
    }
    _changed.notify_all();
}

void EventRouter::work(Consumer& consumer) {
    Lock lock(_mutex);
    for (;;) {
        consumer.mayWork.wait(lock, [&] { return !consumer.registered || (!_held && !consumer.queue.empty()); });
        if (!consumer.registered) {
            break;
        }
        const Waiting waiting = std::move(consumer.queue.front());
        consumer.queue.pop_front();
        consumer.busy = true;
        deliver(lock, consumer, waiting);
        consumer.busy = false;
        _changed.notify_all();
    }
    consumer.finished = true;
    _changed.notify_all();
}

void EventRouter::deliver(Lock& lock, Consumer& consumer, const Waiting& waiting) {
    // A copy, because each call may add and remove subscriptions, or unregister the consumer.
    const auto subscriptions = consumer.subscriptions;
    for (const auto& subscription : subscriptions) {
        const auto& current = consumer.subscriptions;
        const bool isCurrent = std::find(current.begin(), current.end(), subscription) != current.end();
        if (!consumer.registered || !isCurrent || waiting.number <= subscription->after) {
            continue;
        }
        lock.unlock();
        call(consumer, *subscription, *waiting.commit);
        lock.lock();
    }
}

void EventRouter::call(const Consumer& consumer, Subscription& subscription, const std::vector<MoChange>& changes) {
    try {
        Notification notification(changes, subscription.filter);
        if (!notification.isEmpty()) {
            notify(consumer, subscription, notification);
        }
    } catch (const std::bad_alloc&) {
        _journal.log(Error, "notify", "out of memory: " + nameOf(consumer.handle) + " loses a notification");
    }
}

void EventRouter::notify(const Consumer& consumer, Subscription& subscription, Notification& notification) {
    const std::string name = nameOf(consumer.handle);
    try {
        const BryReturnT result = consumer.record->notify(consumer.handle, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1,
                                                          subscription.filter.pairs(), notification.record());
        if (result != BRY_OK) {
            _journal.log(Warning, "notify", name + " answered a notification with " + codeText(result));
        }
    } catch (const std::exception& e) {
        _journal.accuse("throws from the callback of " + name + ": " + e.what());
    } catch (...) {
        _journal.accuse("throws from the callback of " + name);
    }
}

bool EventRouter::isIdle() const {
    return _joining == 0 &&
           std::all_of(
               _consumers.begin(), _consumers.end(),
               [this](const auto& one) { return !one.second->busy && (_held || one.second->queue.empty()); }) &&
           std::all_of(_leaving.begin(), _leaving.end(), [](const auto& one) { return one->finished; });
}

bool EventRouter::waitUntilIdle(std::chrono::milliseconds most) {
    Lock lock(_mutex);
    return _changed.wait_for(lock, most, [this] { return isIdle(); });
}

void EventRouter::joinFinished() {
    for (const auto& leaving : _leaving) {
        if (leaving->finished) {
            leaving->worker.join();
        }
    }
    std::erase_if(_leaving, [](const auto& leaving) { return leaving->finished; });
}

std::vector<std::string> EventRouter::removeAll() {
    std::vector<std::string> lines;
    Lock lock(_mutex);
    while (!_consumers.empty()) {
        const auto& [handle, consumer] = *_consumers.begin();
        lines.push_back(nameOf(handle) + " with " + std::to_string(consumer->subscriptions.size()) +
                        " subscriptions");
        remove(lock, _consumers.begin());
    }
    _changed.wait(lock, [this] { return isIdle(); });
    joinFinished();
    return lines;
}

}  // namespace TulNode
