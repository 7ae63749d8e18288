#ifndef TUL_TEST_RECORDING_SUBSCRIBER_H
#define TUL_TEST_RECORDING_SUBSCRIBER_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "EventConsumer.h"

namespace TulTest {

/** An event consumer that remembers what it is told and then does what the test wants. */
template <int instanceNumber>
class RecordingSubscriber : public Tul::EventConsumer<RecordingSubscriber<instanceNumber>, instanceNumber> {
public:
    using Filter = std::vector<Tul::NameValuePair>;

    /** Subscribes to "EventType". */
    void subscribe(const Filter& filter = {}) { this->start(filter, &RecordingSubscriber::take, *this, "EventType"); }

    void take(const char* eventType, void* value) {
        events.emplace_back(eventType, value);
        if (reaction) {
            reaction();
        }
    }

    std::function<void()> reaction;
    std::vector<std::pair<std::string, void*>> events;
};

}  // namespace TulTest

#endif
